#!/usr/bin/env bash
# Builds Ambrel and its packages in build/packages/: the installer, the portable zip, their checksums, manifests for
# winget and Scoop, and release notes. Two runs produce the same bytes.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-packages.sh scripts/packages.txt packaging/packages.txt

echo "Building build/release/ambrel.exe"
mkdir -p build
if ! { cmake --preset release && cmake --build --preset release --target ambrel; } >build/package.log 2>&1; then
    grep -v '^\[' build/package.log | tail -n 60 >&2
    echo "The build failed; the full output is in build/package.log." >&2
    exit 1
fi

/usr/bin/python3 packaging/make_packages.py build/release/ambrel.exe build/packages
echo "The packages are in build/packages."
