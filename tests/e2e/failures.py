"""Saves evidence of failed tests. A conftest imports pytest_runtest_makereport from here, and its fixtures open desks
with open_desk."""

import re
import shutil
from contextlib import contextmanager
from pathlib import Path

import pytest

from ambrel_lab.evidence import save_evidence
from ambrel_lab.paths import FAILURES

OPEN_DESKS = []
MAX_NAME = 150
SHOWN = 2000  # characters of each file


@contextmanager
def open_desk(make, request, **options):
    """Context with the desk that make() returns. A desk saves its own evidence if its start or what a fixture does with
    it fails; the hook below handles a test's own failure."""
    with make(evidence=evidence_folder(request.node.nodeid), **options) as desk:
        OPEN_DESKS.append(desk)
        try:
            yield desk
        finally:
            OPEN_DESKS.remove(desk)


def evidence_folder(test):
    """The folder for the evidence of a failed test: build/failures/FILE/TEST."""
    file, _, name = test.partition("::")
    # A test's name contains its parameters, and a file's name has at most 255 characters.
    name = re.sub(r"[^A-Za-z0-9_.-]+", "-", name).strip("-")[:MAX_NAME]
    return FAILURES / Path(file).stem / (name or "start")


def state_in(evidence):
    """What the program showed and logged, from saved evidence. A wait that fails may name only what it waited for."""
    texts = [path.read_text(errors="replace") for name in ("windows.txt", "events.log", "missing.txt")
             if (path := evidence / name).exists()]
    return "\n".join(text[-SHOWN:] for text in texts)


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item):
    """Saves evidence from the open desks if a test or its set-up has failed."""
    report = (yield).get_result()
    if report.failed and OPEN_DESKS:
        folder = evidence_folder(item.nodeid)
        shutil.rmtree(folder, ignore_errors=True)
        for number, desk in enumerate(OPEN_DESKS):
            evidence = folder if len(OPEN_DESKS) == 1 else folder / f"desk-{number}"
            save_evidence(desk, evidence)
            report.sections.append(("Desk", state_in(evidence)))
        report.sections.append(("Evidence", str(folder)))
