"""Fixtures for all of the end-to-end tests."""

import sys
from contextlib import ExitStack
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parent))

import pytest  # noqa: E402

from desk import ROOT, Desk  # noqa: E402
from failures import open_desk, pytest_runtest_makereport  # noqa: E402, F401


def factory(request):
    """Makes desks."""
    with ExitStack() as stack:
        yield lambda **options: stack.enter_context(open_desk(Desk, request, **options))


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
