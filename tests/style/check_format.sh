#!/usr/bin/env bash
# Checks that every C++ file is formatted with clang-format.
set -euo pipefail
cd "$(dirname "$0")/../.."
mapfile -t files < <(git ls-files -- 'src/**.cpp' 'src/**.h' 'lab/**.cpp' 'lab/**.h' 'tests/**.cpp' 'tests/**.h' | grep -v '^src/res/')
[ "${#files[@]}" -gt 50 ] || { echo "only ${#files[@]} files found to check" >&2; exit 1; }
clang-format --dry-run -Werror "${files[@]}"
