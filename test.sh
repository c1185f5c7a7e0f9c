#!/usr/bin/env bash
# Builds and runs every test:     ./test.sh
# Before a commit, no desktop:    ./test.sh --quick    (the program, unit tests, layout, documents, format)
# Runs those whose name matches:  ./test.sh NAME       (a test as `./test.sh --list` shows it, or part of the name of
#                                                       a single test in one)
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-packages.sh scripts/packages.txt lab/packages.txt packaging/packages.txt

say() { printf '\n== %s\n' "$*"; }

# build TARGET...: builds into build/release; only a failure is shown.
build() {
    local log=build/tests.log
    mkdir -p build
    if ! { cmake --preset tests && cmake --build --preset tests --target "$@"; } >"$log" 2>&1; then
        grep -v '^\[' "$log" | tail -n 60 >&2
        echo "The build failed; the whole of it is in $log." >&2
        exit 1
    fi
}

case "${1:-}" in
    "")
        # The rest is built by tests of its own, so that the end-to-end tests, which mostly wait, run meanwhile.
        say "Building the program and its lab (build/release)"
        build end_to_end
        say "Running every test"
        exec ctest --preset tests
        ;;
    --quick)
        say "Building the program and its unit tests (build/release)"
        build ambrel unit_tests
        say "Running the tests that need no desktop"
        exec ctest --preset quick
        ;;
    --list)
        build end_to_end
        exec ctest --preset tests -N
        ;;
    *)
        say "Building the program, its tests and its lab (build/release)"
        build end_to_end unit_tests
        say "Running what matches $1"
        if ctest --preset tests -N -R "$1" | grep -q '^Total Tests: [1-9]'; then
            exec ctest --preset tests -R "$1"
        fi
        GTEST_FILTER="*$1*" AMBREL_PYTEST_NAME="$1" exec ctest --preset tests -L 'unit|e2e|package'
        ;;
esac
