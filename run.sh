#!/usr/bin/env bash
# Builds Ambrel and runs it.
#   ./run.sh             on the screen that DISPLAY names, until it is quit from its tray menu; without one: --demo
#   ./run.sh --demo      on a screen of its own: clicks and drags, shows what Windows was told, saves pictures
#   ./run.sh --pictures  makes anew what the documents in docs/ show of the program
set -euo pipefail
cd "$(dirname "$0")"

mode=show
case "${1:-}" in
    "") [ -n "${DISPLAY:-}" ] || mode=demo ;;
    --demo) mode=demo ;;
    --pictures) mode=pictures ;;
    *)
        sed -n '2,5s/^# \{0,1\}//p' "$0" >&2
        exit 2
        ;;
esac

scripts/install-packages.sh scripts/packages.txt lab/packages.txt

echo "Building build/release/ambrel.exe"
mkdir -p build
if ! { cmake --preset tests && cmake --build --preset tests --target ambrel lab cursor_sheet; } >build/run.log 2>&1; then
    grep -v '^\[' build/run.log | tail -n 60 >&2
    echo "The build failed; the whole of it is in build/run.log." >&2
    exit 1
fi

case "$mode" in
    show)
        echo "Ambrel comes up as an icon at the bottom right of a Windows desktop. Quit it from its menu (right button)."
        exec /usr/bin/python3 lab/lab.py show
        ;;
    demo) exec /usr/bin/python3 lab/demo.py build/demo ;;
    pictures) exec /usr/bin/python3 lab/pictures.py ;;
esac
