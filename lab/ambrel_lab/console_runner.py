"""run-in-lab: runs a console program of the build, such as a unit test program, under Wine."""

import signal
import sys

from .console import SIGNALLED, run_console
from .lab import Lab
from .paths import LabError


def end_on_signals():
    """Turns SIGINT, SIGTERM and SIGHUP into SystemExit, so that the lab is closed before the process exits."""
    def stop(number, _frame):
        raise SystemExit(SIGNALLED + number)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, stop)


def main(words):
    """run-in-lab EXE ARGUMENT...: runs EXE in a lab without tools, forwards its output and returns its exit code."""
    if not words:
        print("usage: run-in-lab EXE [ARGUMENT...]", file=sys.stderr)
        return 2
    end_on_signals()
    try:
        with Lab(size=(1280, 720), tools=False) as lab:
            return run_console(lab.desktop, words[0], words[1:])
    except LabError as error:
        print(f"run-in-lab: {error}", file=sys.stderr)
        return SIGNALLED - 1
