"""run-in-lab: runs a console program of the build, such as a unit test program, under Wine."""

import os
import shutil
import signal
import sys
import threading
from contextlib import contextmanager
from pathlib import Path

from .console import SIGNALLED, run_console
from .evidence import save_evidence
from .lab import Lab
from .paths import FAILURES, LabError

# Seconds after which a program is treated as hung. Shorter than CTest's timeout, after which there is no evidence.
HANG_TIMEOUT = 400.0


def end_on_signals():
    """Turns SIGINT, SIGTERM and SIGHUP into SystemExit, so that the lab is closed before the process exits."""
    def stop(number, _frame):
        raise SystemExit(SIGNALLED + number)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, stop)


@contextmanager
def evidence_of_a_hang(lab, folder, timeout=HANG_TIMEOUT):
    """Context that saves evidence in `folder` if it lasts longer than `timeout` seconds. Nothing is interrupted."""
    def save():
        shutil.rmtree(folder, ignore_errors=True)
        save_evidence(lab, folder)
        print(f"run-in-lab: still running after {timeout:g} s; evidence: {folder}", file=sys.stderr, flush=True)
    timer = threading.Timer(timeout, save)
    timer.daemon = True
    timer.start()
    try:
        yield
    finally:
        timer.cancel()


def selected_tests():
    """GoogleTest's variable as an argument: a program in the lab does not receive this environment."""
    name = "GTEST_FILTER"
    return [f"--gtest_filter={os.environ[name]}"] if name in os.environ else []


def main(words):
    """run-in-lab EXE ARGUMENT...: runs EXE in a lab without tools, forwards its output and returns its exit code.
    Saves evidence in build/failures/unit-PROGRAM if the program hangs or the lab does not start."""
    if not words:
        print("usage: run-in-lab EXE [ARGUMENT...]", file=sys.stderr)
        return 2
    end_on_signals()
    evidence = FAILURES / f"unit-{Path(words[0]).stem}"
    lab = Lab(size=(1280, 720), tools=False, evidence=evidence)
    try:
        with evidence_of_a_hang(lab, evidence), lab:
            return run_console(lab.desktop, words[0], words[1:] + selected_tests())
    except LabError as error:
        print("run-in-lab:", error, *getattr(error, "__notes__", []), file=sys.stderr)
        return SIGNALLED - 1
