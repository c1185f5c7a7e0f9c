#!/usr/bin/env bash
# Builds one preset incrementally, with a lower priority than the tests that run at the same time: build_preset.sh PRESET
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset "$1"
exec nice cmake --build --preset "$1" --parallel 2
