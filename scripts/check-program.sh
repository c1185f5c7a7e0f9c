#!/usr/bin/env bash
# Starts a built program and ends it as an installer does, then runs built unit tests, if a folder of them is named:
#     scripts/check-program.sh PROGRAM [FOLDER]
# On Windows (Git's bash) all of it runs natively. On Linux it runs in the lab, whose doubles lie beside the program or in
# the build that AMBREL_BUILD_DIR names.
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
# Programs that the tests only start lie beside them.
mapfile -t tests < <(grep -l gtest_list_tests "$folder"/*.exe)
[ "${#tests[@]}" -gt 0 ] || { echo "no unit tests in $folder" >&2; exit 1; }
failed=()
for test in "${tests[@]}"; do
    echo "== $test"
    "${run_test[@]}" "$test" --gtest_brief=1 || failed+=("$test")
done
echo "${#tests[@]} unit test programs ran, ${#failed[@]} failed: ${failed[*]}"
[ "${#failed[@]}" -eq 0 ]
