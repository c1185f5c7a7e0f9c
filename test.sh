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

# test_with OPTION...: runs CTest and then lists what was repeated because of Wine, and why tests were skipped.
test_with() {
    local status=0
    rm -f build/repetitions.log
    ctest --preset "$@" || status=$?
    [ ! -e build/repetitions.log ] || sed 's/^/Repeated: /' build/repetitions.log >&2
    grep '^SKIPPED' build/release/Testing/Temporary/LastTest.log >&2 || :
    return "$status"
}

case "${1:-}" in
    "")
        # Tests build the rest while the end-to-end tests, which mostly wait, run.
        say "Building the program and its lab (build/release)"
        build end_to_end
        say "Running every test"
        test_with tests
        ;;
    --quick)
        say "Building the program and its unit tests (build/release)"
        build ambrel unit_tests
        say "Running the tests that need no desktop"
        test_with quick
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
            test_with tests -R "$1"
            exit
        fi
        GTEST_FILTER="*$1*" AMBREL_PYTEST_NAME="$1" test_with tests -L '^(unit|e2e|package|program_file|style)$'
        # A program without such a test passes. The log contains the summaries of pytest and GoogleTest.
        if ! grep -Eq '^([1-9][0-9]* passed|\[  PASSED  \] [1-9])' build/release/Testing/Temporary/LastTest.log; then
            echo "No test is called $1: see ./test.sh --list." >&2
            exit 1
        fi
        ;;
esac
