"""run-in-lab: runs a console program of the build, such as a unit test program, under Wine."""

import os
import shutil
import signal
import sys
import threading
from contextlib import contextmanager
from pathlib import Path

from .console import SIGNALLED, NoOutput, run_console
from .evidence import record_repetition, save_evidence
from .lab import Lab
from .paths import FAILURES, LabError

# Seconds within which a test program must print its first line.
START_TIMEOUT = 150.0
# Seconds after which a test program is treated as hung: some take 12 minutes on a very busy machine. Shorter than
# CTest's timeout, after which there is no evidence.
HANG_TIMEOUT = 1500.0


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


def run(words):
    """Runs a program in a new lab without tools. Returns its exit code."""
    with Lab(size=(1280, 720), tools=False) as lab:
        return run_console(lab.desktop, words[0], words[1:])


def run_test(words, evidence):
    """Runs a test program in a new lab without tools. Returns its exit code. Saves evidence of a failure."""
    lab = Lab(size=(1280, 720), tools=False, evidence=evidence)
    with evidence_of_a_hang(lab, evidence), lab:
        code = run_console(lab.desktop, words[0], words[1:] + selected_tests(), first_output=START_TIMEOUT)
        if code:
            save_evidence(lab, evidence)
            print(f"run-in-lab: exit code {code}; evidence: {evidence}", file=sys.stderr, flush=True)
        return code


def main(words):
    """run-in-lab [--test] EXE ARGUMENT...: runs EXE in a lab without tools, forwards its output and returns its exit
    code.

    --test is for a program that prints a line when it starts. Wine can hang when it starts a program: one that has
    printed nothing after START_TIMEOUT is ended and started once more, which is recorded in build/repetitions.log. A
    program that fails or hangs leaves evidence in build/failures/PROGRAM."""
    is_test = words[:1] == ["--test"]
    words = words[1:] if is_test else words
    if not words or words[0].startswith("--"):
        print("usage: run-in-lab [--test] EXE [ARGUMENT...]", file=sys.stderr)
        return 2
    end_on_signals()
    evidence = FAILURES / Path(words[0]).stem
    try:
        if not is_test:
            return run(words)
        try:
            return run_test(words, evidence)
        except NoOutput as error:
            report(error)
            record_repetition(f"{error}; started once more")
            return run_test(words, evidence)
    except LabError as error:
        report(error)
        return SIGNALLED - 1


def report(error):
    print("run-in-lab:", error, *getattr(error, "__notes__", []), file=sys.stderr, flush=True)
