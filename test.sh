#!/usr/bin/env bash
# Builds and runs every test: ./test.sh
# Runs those whose name matches:  ./test.sh NAME   (a test program as `./test.sh --list` shows it, or part of the
# name of a single test)
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-packages.sh scripts/packages.txt lab/packages.txt packaging/packages.txt

say() { printf '\n== %s\n' "$*"; }

build() {
    local preset=$1
    local log=build/$preset.log
    mkdir -p build
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
        grep -v '^\[' "$log" | tail -n 60 >&2
        echo "The $preset build failed; the whole of it is in $log." >&2
        exit 1
    fi
}

# More at a time than there are processors: the end-to-end tests mostly wait. A lab in which Wine itself has hung is
# started anew, once; a test that failed is not repeated.
run_ctest() {
    ctest --test-dir build/release --output-on-failure --parallel 4 --no-tests=error --repeat after-timeout:2 "$@"
}

say "Building the program, its tests and its lab (build/release)"
build release

case "${1:-}" in
    "") ;;
    --list) exec ctest --test-dir build/release -N ;;
    *)
        if ctest --test-dir build/release -N -R "$1" | grep -q '^Total Tests: [1-9]'; then
            run_ctest -R "$1"
        else
            GTEST_FILTER="*$1*" AMBREL_PYTEST_NAME="$1" run_ctest -L 'unit|e2e|package'
        fi
        exit
        ;;
esac

say "Building the same sources with a second compiler (build/clang)"
build clang

say "Running every test"
run_ctest
