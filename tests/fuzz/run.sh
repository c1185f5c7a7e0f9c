#!/usr/bin/env bash
# Builds the fuzzers and runs them. A failing input is kept, and the command that repeats it is printed.
#   tests/fuzz/run.sh --quick            100 inputs for each target, the same in each run
#   tests/fuzz/run.sh [SECONDS [TARGET]] SECONDS (60) for each target, or for one; SEED=S repeats a run
set -euo pipefail
cd "$(dirname "$0")/../.."

targets=(settings restore log_message log_tail registry report slider cursor)
# The time limit for one input is generous, since the machine may be busy.
limits=(-max_len=2048 -timeout=300 -rss_limit_mb=1024)

if [ "${1:-}" = --quick ]; then
    build=build/fuzz-quick type=Debug
    limits+=(-runs=100)
    seed=1
else
    build=build/fuzz type=Release
    limits+=(-max_total_time="${1:-60}")
    seed=${SEED:-$((RANDOM * 32768 + RANDOM + 1))}
    [ $# -lt 2 ] || targets=("$2")
    echo "SEED=$seed"
fi

mkdir -p "$build"
if ! { cmake -S tests/fuzz -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=$type &&
       cmake --build "$build"; } >"$build/build.log" 2>&1; then
    tail -n 40 "$build/build.log" >&2
    exit 1
fi

# The files that the fuzzed code writes.
TMPDIR=$(mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

failed=0
for target in "${targets[@]}"; do
    # New inputs go to the first folder; a quick run begins with the same ones each time.
    corpus=$build/corpus/$target
    [ "$type" = Release ] || rm -rf "$corpus"
    mkdir -p "$corpus" "$build/found"
    if nice "$build/fuzz" --target="$target" -seed="$seed" "${limits[@]}" -artifact_prefix="$build/found/$target-" \
        -print_final_stats=1 "$corpus" "tests/fuzz/corpus/$target" >"$build/$target.log" 2>&1; then
        printf '%-12s %s inputs, %s MB at most\n' "$target" \
            "$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/$target.log")" \
            "$(sed -n 's/^stat::peak_rss_mb: *//p' "$build/$target.log")"
        continue
    fi
    failed=1
    grep -E 'not so|runtime error|ERROR|SUMMARY|^    #[0-9]+ ' "$build/$target.log" | head -n 30 >&2
    file=$(sed -n 's/.*Test unit written to //p' "$build/$target.log")
    echo "$target FAILED. Repeat it with: $build/fuzz --target=$target $file" >&2
done
exit "$failed"
