"""Fixtures of all end-to-end tests."""

import sys
from contextlib import ExitStack
from pathlib import Path

sys.dont_write_bytecode = sys.pycache_prefix is None
sys.path.insert(0, str(Path(__file__).parent))

import pytest  # noqa: E402

from desk import ROOT, Desk  # noqa: E402
from failures import open_desk, pytest_runtest_makereport  # noqa: E402, F401


def factory(request):
    """Creates desks."""
    with ExitStack() as stack:
        yield lambda **options: stack.enter_context(open_desk(Desk, request, **options))


# A separate desk for one test: make_desk(magnification="missing", dpi=144, ...).
make_desk = pytest.fixture(factory, name="make_desk")
# A desk for all tests of a file.
make_file_desk = pytest.fixture(factory, scope="module", name="make_file_desk")


@pytest.fixture(scope="module", name="file_desk")
def file_desk_fixture(make_file_desk):
    desk = make_file_desk()
    # Opened here, so that all tests of the file fail immediately if the desktop does not start.
    desk.desktop.open()
    return desk


@pytest.fixture(name="desk")
def desk_fixture(file_desk):
    """The file's desk with the program just started, without a settings file."""
    return file_desk.start_fresh()


@pytest.fixture(scope="session", name="pictures")
def pictures_fixture():
    folder = ROOT / "build" / "pictures"
    folder.mkdir(parents=True, exist_ok=True)
    return folder
