#!/usr/bin/env bash
# Installs the missing Debian packages of the given lists: scripts/install-packages.sh LIST...
# Prints nothing if no package is missing.
set -euo pipefail

mapfile -t wanted < <(sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$@" | sort -u)

missing=()
for package in "${wanted[@]}"; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ "${#missing[@]}" -gt 0 ] || exit 0

if [ "$(id -u)" -ne 0 ]; then
    echo "These packages are missing; install them as root: ${missing[*]}" >&2
    exit 1
fi
echo "Installing ${#missing[@]} packages: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
if ! { apt-get update && apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    tail -n 30 "$log" >&2
    echo "The packages could not be installed." >&2
    exit 1
fi
