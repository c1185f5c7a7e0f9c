#!/usr/bin/env bash
# Builds Ambrel and runs the tests that attack it. `./test.sh` runs the short forms.
#   ./soak.sh               all of them
#   ./soak.sh faults        makes every function of Windows fail in turn, in every way, during a session
#   ./soak.sh accessibility makes 5,000 random calls of another process to the popup's accessible object
#   ./soak.sh input [PART]  random messages, mouse, frames, files, registry and clipboard; SEED=S repeats a run
#   ./soak.sh month         30 days of use on a simulated clock; prints objects, memory and the log by day
#   ./soak.sh messages [N]  sends N (100,000) random messages of another program; SEED=S repeats a run
#   ./soak.sh fuzz [SECONDS [TARGET]] fuzzes parsing and text natively, SECONDS (60) for each target; SEED=S repeats a run
#   ./soak.sh kills [N]     kills the program at N (500) random moments; SEED=S repeats a run
#   ./soak.sh traps         runs all unit tests and the short attacks in a build that traps undefined behaviour
set -euo pipefail
cd "$(dirname "$0")"

attacks=(faults input month messages accessibility fuzz kills traps)

usage() {
    sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2
    exit 2
}

# Continues after a case that crashes or hangs.
attack_faults() {
    local from=0 status failed=0 number
    while :; do
        status=0
        lab/run-in-lab build/release/unit/fault_matrix.exe --from "$from" >build/faults.log || status=$?
        cat build/faults.log
        [ "$status" -eq 3 ] || return $((status || failed))
        failed=1
        number=$(sed -nE 's/^(CRASH|HANG): ([0-9]+):.*/\2/p' build/faults.log)
        [ -n "$number" ] || return 1  # in a session without a fault
        from=$((number + 1))
    done
}

attack_accessibility() {
    AMBREL_RANDOM_CALLS=5000 AMBREL_BUILD_DIR=$PWD/build/release \
        tests/run_pytest.sh tests/e2e/test_accessibility.py -k random_calls
}

attack_fuzz() {
    tests/fuzz/run.sh "$@"
}

attack_input() {
    lab/run-in-lab build/release/unit/input_attack.exe ${1:+--only "$1"} ${SEED:+--seed "$SEED"}
}

attack_month() {
    lab/run-in-lab build/release/unit/month.exe
}

attack_messages() {
    AMBREL_RANDOM_MESSAGES="${1:-100000}" AMBREL_BUILD_DIR=$PWD/build/release \
        tests/run_pytest.sh tests/e2e/test_hostile_messages.py -s
}

attack_kills() {
    /usr/bin/python3 tests/soak/kill_anytime.py --kills "${1:-500}" ${SEED:+--seed "$SEED"} --build build/release
}

attack_traps() {
    cmake --preset debug >build/traps.log
    if ! cmake --build build/debug --target unit_tests >>build/traps.log 2>&1; then
        grep -v '^\[' build/traps.log | tail -n 60 >&2
        return 1
    fi
    ctest --test-dir build/debug --output-on-failure --no-tests=error -L '^(unit|attack)$' -FA '.*'
}

list_repetitions() {
    [ ! -e build/repetitions.log ] || sed 's/^/Repeated: /' build/repetitions.log >&2
}

chosen=${1:-}
if [ -n "$chosen" ]; then
    declare -F "attack_$chosen" >/dev/null || usage
    shift
fi

scripts/install-packages.sh scripts/packages.txt lab/packages.txt
mkdir -p build
if ! { cmake --preset tests && cmake --build --preset tests --target ambrel lab fault_matrix input_attack month; } >build/soak.log 2>&1; then
    grep -v '^\[' build/soak.log | tail -n 60 >&2
    echo "The build failed. The full log is in build/soak.log." >&2
    exit 1
fi

rm -f build/repetitions.log
trap list_repetitions EXIT
if [ -n "$chosen" ]; then
    "attack_$chosen" "$@"
    exit
fi
failed=0
for attack in "${attacks[@]}"; do
    printf '\n== %s\n' "$attack"
    "attack_$attack" || failed=1
done
exit "$failed"
