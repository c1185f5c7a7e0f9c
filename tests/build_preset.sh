#!/usr/bin/env bash
# Builds one preset with what has changed since; one job, other tests run beside it: build_preset.sh PRESET
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset "$1"
cmake --build --preset "$1" --parallel 1
