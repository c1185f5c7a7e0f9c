#!/usr/bin/env bash
# Runs one pytest file and says why tests were skipped; AMBREL_PYTEST_NAME selects tests by name. A run without any test
# fails, except with AMBREL_PYTEST_NAME, since the name may be that of a test in another file.
set -uo pipefail
name=${AMBREL_PYTEST_NAME:-}
root=$(cd "$(dirname "$0")/.." && pwd)
PYTHONPYCACHEPREFIX="$root/build/pycache" /usr/bin/python3 -m pytest -q -rfEs -p no:cacheprovider "$@" ${name:+-k "$name"}
code=$?
if [ "$code" -eq 5 ] && [ -n "$name" ]; then exit 0; fi
exit "$code"
