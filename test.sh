#!/usr/bin/env bash
# Builds and runs every test:     ./test.sh
# Runs the short tests:          ./test.sh --quick    (the program, unit tests, layout, documents, format)
# Runs the tests that match:      ./test.sh NAME       (a CTest name of `./test.sh --list`, or part of the name of a
#                                                       single test)
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-packages.sh scripts/packages.txt lab/packages.txt packaging/packages.txt

say() { printf '\n== %s\n' "$*"; }

# build TARGET...: builds into build/release and prints only failures.
build() {
    local log=build/tests.log
    mkdir -p build
    if ! { cmake --preset tests && cmake --build --preset tests --target "$@"; } >"$log" 2>&1; then
        grep -v '^\[' "$log" | tail -n 60 >&2
        echo "The build failed. The full log is in $log." >&2
        exit 1
    fi
}

case "${1:-}" in
    "")
        # Tests build the rest while the end-to-end tests, which mostly wait, run.
        say "Building the program and its lab (build/release)"
        build end_to_end
        say "Running every test"
        status=0
        ctest --preset tests || status=$?
        # Programs that Wine did not start, in tests that have passed too.
        grep -h 'has printed nothing' build/release/Testing/Temporary/LastTest.log >&2 || :
        exit "$status"
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
        say "Running the tests that match $1"
        if ctest --preset tests -N -R "$1" | grep -q '^Total Tests: [1-9]'; then
            exec ctest --preset tests -R "$1"
        fi
        GTEST_FILTER="*$1*" AMBREL_PYTEST_NAME="$1" ctest --preset tests -L '^(unit|e2e|package|program_file|style)$'
        # A program without such a test passes. The log contains the summaries of pytest and GoogleTest.
        if ! grep -Eq '^([1-9][0-9]* passed|\[  PASSED  \] [1-9])' build/release/Testing/Temporary/LastTest.log; then
            echo "No test is called $1: see ./test.sh --list." >&2
            exit 1
        fi
        ;;
esac
