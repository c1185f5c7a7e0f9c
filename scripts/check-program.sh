#!/usr/bin/env bash
# Starts a built program and ends it as an installer does. Then runs the unit tests in FOLDER, if one is given:
#     scripts/check-program.sh PROGRAM [FOLDER]
# On Windows (Git's bash) everything runs natively. On Linux it runs in the lab, whose doubles are next to the program
# or in the build folder that AMBREL_BUILD_DIR names.
set -euo pipefail
cd "$(dirname "$0")/.."
program=$1
folder=${2:-}

if [ "$(uname -s)" = Linux ]; then
    configure=(-G Ninja -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" -DCMAKE_BUILD_TYPE=Release)
    run_program=(/usr/bin/python3 tests/smoke/in_lab.py "${AMBREL_BUILD_DIR:-$(dirname "$program")}")
    run_test=(lab/run-in-lab)
else
    configure=()
    run_program=()
    run_test=()
fi

cmake -S tests/smoke -B build/smoke "${configure[@]}"
cmake --build build/smoke --config Release
"${run_program[@]}" build/smoke/smoke.exe "$program"

[ -n "$folder" ] || exit 0
# The folder also contains programs that the tests start.
mapfile -t tests < <(grep -l gtest_list_tests "$folder"/*.exe)
[ "${#tests[@]}" -gt 0 ] || { echo "no unit tests in $folder" >&2; exit 1; }
failed=()
for test in "${tests[@]}"; do
    echo "== $test"
    "${run_test[@]}" "$test" --gtest_brief=1 || failed+=("$test")
done
echo "${#tests[@]} unit test programs ran, ${#failed[@]} failed: ${failed[*]}"
[ "${#failed[@]}" -eq 0 ]
