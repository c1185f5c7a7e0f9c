"""Fixtures for all of the end-to-end tests."""

import re
import shutil
import sys
from contextlib import ExitStack
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parent))

import pytest  # noqa: E402

from desk import ROOT, Desk  # noqa: E402
from ambrel_lab.evidence import save_evidence  # noqa: E402


FAILURES = ROOT / "build" / "failures"
OPEN_DESKS = []


def factory(request):
    """Makes desks. One that does not start leaves its evidence itself."""
    with ExitStack() as stack:
        def make(**options):
            desk = Desk(evidence=evidence_folder(request.node.nodeid), **options)
            stack.enter_context(desk)
            OPEN_DESKS.append(desk)
            stack.callback(OPEN_DESKS.remove, desk)
            return desk
        yield make


def evidence_folder(test):
    """Where a failed test leaves what it saw: build/failures/FILE/TEST."""
    file, _, name = test.partition("::")
    return FAILURES / Path(file).stem / (re.sub(r"[^A-Za-z0-9_.-]+", "-", name).strip("-") or "start")


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item):
    """Saves what the open desks show when a test, or the preparation for it, has failed."""
    report = (yield).get_result()
    if report.failed and OPEN_DESKS:
        folder = evidence_folder(item.nodeid)
        shutil.rmtree(folder, ignore_errors=True)
        for number, desk in enumerate(OPEN_DESKS):
            save_evidence(desk, folder if len(OPEN_DESKS) == 1 else folder / f"desk-{number}")
        report.sections.append(("Evidence", str(folder)))


# A screen of its own for one test: make_desk(magnification="missing", dpi=144, ...).
make_desk = pytest.fixture(factory, name="make_desk")
# A screen for all tests of a file.
make_file_desk = pytest.fixture(factory, scope="module", name="make_file_desk")


@pytest.fixture(scope="module", name="file_desk")
def file_desk_fixture(make_file_desk):
    desk = make_file_desk()
    # Here and not by the first program: when the desktop does not come, the file ends at once.
    desk.desktop.open()
    return desk


@pytest.fixture(name="desk")
def desk_fixture(file_desk):
    """The file's screen with a program just started that found no settings."""
    return file_desk.start_fresh()


@pytest.fixture(scope="session", name="pictures")
def pictures_fixture():
    folder = ROOT / "build" / "pictures"
    folder.mkdir(parents=True, exist_ok=True)
    return folder
