#!/usr/bin/env bash
# Builds one preset incrementally, with a slightly lower priority than the tests that run at the same time, yet enough to
# finish on a busy machine: build_preset.sh PRESET
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset "$1"
exec nice -n 3 cmake --build --preset "$1" --parallel 2
