#!/usr/bin/env bash
# Builds Ambrel and runs the long forms of the tests that attack it; `./test.sh` runs their quick forms.
#   ./soak.sh               all of them
#   ./soak.sh kills [N]     kills the program at N (500) random moments; SEED=S repeats a run
set -euo pipefail
cd "$(dirname "$0")"

attacks=(kills)

usage() {
    sed -n '2,4s/^# \{0,1\}//p' "$0" >&2
    exit 2
}

attack_kills() {
    /usr/bin/python3 tests/soak/kill_anytime.py --kills "${1:-500}" ${SEED:+--seed "$SEED"} --build build/release
}

chosen=${1:-}
if [ -n "$chosen" ]; then
    declare -F "attack_$chosen" >/dev/null || usage
    shift
fi

scripts/install-packages.sh scripts/packages.txt lab/packages.txt
mkdir -p build
if ! { cmake --preset tests && cmake --build --preset tests --target ambrel lab; } >build/soak.log 2>&1; then
    grep -v '^\[' build/soak.log | tail -n 60 >&2
    echo "The build failed. The full log is in build/soak.log." >&2
    exit 1
fi

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
