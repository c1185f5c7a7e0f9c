#!/usr/bin/env bash
# Builds what has changed of one preset, with less priority than the tests that run beside it: build_preset.sh PRESET
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset "$1"
exec nice cmake --build --preset "$1" --parallel 2
