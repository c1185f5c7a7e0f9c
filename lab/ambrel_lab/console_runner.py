"""run-in-lab: runs a console program of the build, such as a unit test program, under Wine."""

import os
import shutil
import signal
import sys
import threading
from contextlib import contextmanager
from pathlib import Path

from .console import SIGNALLED, NoOutput, run_console
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


def run(words, evidence, first_output):
    """Runs a program in a new lab without tools. Returns its exit code."""
    lab = Lab(size=(1280, 720), tools=False, evidence=evidence)
    with evidence_of_a_hang(lab, evidence), lab:
        return run_console(lab.desktop, words[0], words[1:] + selected_tests(), first_output=first_output)


def main(words):
    """run-in-lab [--first-output SECONDS] EXE ARGUMENT...: runs EXE in a lab without tools, forwards its output and
    returns its exit code. Saves evidence in build/failures/unit-PROGRAM if the program hangs or the lab fails.

    --first-output is for programs that print a line when they start. Wine can hang when it starts a program: one that
    has printed nothing after SECONDS is ended and started once more."""
    first_output = None
    if words[:1] == ["--first-output"] and len(words) > 2:
        first_output, words = float(words[1]), words[2:]
    if not words or words[0].startswith("--"):
        print("usage: run-in-lab [--first-output SECONDS] EXE [ARGUMENT...]", file=sys.stderr)
        return 2
    end_on_signals()
    evidence = FAILURES / f"unit-{Path(words[0]).stem}"
    try:
        try:
            return run(words, evidence, first_output)
        except NoOutput as error:
            report(error)
            return run(words, evidence, first_output)
    except LabError as error:
        report(error)
        return SIGNALLED - 1


def report(error):
    print("run-in-lab:", error, *getattr(error, "__notes__", []), file=sys.stderr, flush=True)
