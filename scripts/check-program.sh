#!/usr/bin/env bash
# Starts a built program and ends it as an installer does, then runs built unit tests, if a folder of them is named:
#     scripts/check-program.sh PROGRAM [FOLDER]
# On Windows (Git's bash) all of it runs natively; on Linux it runs in the lab.
set -euo pipefail
cd "$(dirname "$0")/.."
program=$1
folder=${2:-}

launch=()
configure=()
if [ "$(uname -s)" = Linux ]; then
    launch=(lab/run-in-lab)
    configure=(-G Ninja -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" -DCMAKE_BUILD_TYPE=Release)
fi

cmake -S tests/smoke -B build/smoke "${configure[@]}"
cmake --build build/smoke --config Release
"${launch[@]}" build/smoke/smoke.exe "$program"

failed=()
if [ -n "$folder" ]; then
    tests=("$folder"/*.exe)
    for test in "${tests[@]}"; do
        echo "== $test"
        "${launch[@]}" "$test" --gtest_brief=1 || failed+=("$test")
    done
    echo "${#tests[@]} unit test programs, ${#failed[@]} of them failed: ${failed[*]}"
fi
[ "${#failed[@]}" -eq 0 ]
