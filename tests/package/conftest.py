"""Fixtures of the packages' tests."""

import sys
from pathlib import Path

sys.dont_write_bytecode = sys.pycache_prefix is None
HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), *(str(HERE.parents[1] / name) for name in ("tests/e2e", "lab", "packaging"))]

# After the path is set.
from failures import pytest_runtest_makereport  # noqa: E402, F401
