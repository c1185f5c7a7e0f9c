#!/usr/bin/env bash
# Measures time, memory, wake-ups and size of the program, each compared with a floor measured in the same run:
# ./bench.sh [--full] [--json FILE] [--compare FILE] [GROUP...]; ./bench.sh --document FILE
set -euo pipefail
folder=$PWD
cd "$(dirname "$0")"
# These measure nothing.
builds=yes
for word in "$@"; do
    case $word in --document | --document=* | --help | -h) builds=no ;; esac
done
if [ $builds = yes ]; then
    scripts/install-packages.sh scripts/packages.txt lab/packages.txt
    mkdir -p build
    if ! { cmake --preset tests && cmake --build --preset tests --target ambrel lab bench; } >build/bench.log 2>&1; then
        grep -v '^\[' build/bench.log | tail -n 60 >&2
        echo "The build failed. The full log is in build/bench.log." >&2
        exit 1
    fi
fi
# Names of files are relative to the caller's folder.
cd "$folder"
exec /usr/bin/python3 "$OLDPWD/tests/bench/bench.py" "$@"
