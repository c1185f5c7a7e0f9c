#!/usr/bin/python3
"""Runs a console program in a lab with all of its doubles: in_lab.py BUILD EXE ARGUMENT..."""

import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "lab"))

from ambrel_lab import Lab  # noqa: E402
from ambrel_lab.console_runner import end_on_signals  # noqa: E402
from ambrel_lab.paths import FAILURES  # noqa: E402


def main():
    end_on_signals()
    with Lab(sys.argv[1], size=(1280, 720), evidence=FAILURES / "smoke") as lab:
        return lab.run_console_program(sys.argv[2], sys.argv[3:])


if __name__ == "__main__":
    sys.exit(main())
