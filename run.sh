#!/usr/bin/env bash
# Builds Ambrel and runs it.
#   ./run.sh             on the screen that DISPLAY names, until it is quit from its tray menu; without DISPLAY: --demo
#   ./run.sh --demo      on a virtual screen: clicks and drags, prints the calls to Windows, saves screenshots
#   ./run.sh --pictures  regenerates the screenshots, the sample support report and the accessibility walk in docs/
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
    echo "The build failed. The full log is in build/run.log." >&2
    exit 1
fi

case "$mode" in
    show)
        echo "Ambrel's icon appears at the bottom right of a Windows desktop. Quit it from its menu (right click)."
        exec /usr/bin/python3 lab/lab.py show
        ;;
    demo) exec /usr/bin/python3 lab/demo.py build/demo ;;
    pictures) exec /usr/bin/python3 lab/pictures.py ;;
esac
