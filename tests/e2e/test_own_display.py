"""The program on an existing display, as ./run.sh shows it."""

import os
import subprocess
import sys

import pytest

from ambrel_lab.run import Run
from ambrel_lab.x11 import Connection
from desk import BUILD, LIMIT, ROOT, wait_until

ICON = 20  # The taskbar's height and the icon's width, in pixels.


@pytest.fixture(name="small_display")
def small_display_fixture():
    run = Run((800, 600))
    connection = Connection(run.display)
    yield connection, run.display
    connection.close()
    run.close()


def test_the_desktop_fits_a_display_that_is_smaller_than_its_usual_size(small_display):
    connection, display = small_display
    command = [sys.executable, ROOT / "lab" / "lab.py"]
    if BUILD:
        command += ["--build", BUILD["build_dir"]]
    shown = subprocess.Popen([*command, "show"], env=dict(os.environ, DISPLAY=display))
    try:
        corner = (connection.width - ICON, connection.height - ICON, ICON, ICON)
        # A desktop larger than the display would show only its background there.
        wait_until(lambda: connection.picture(*corner).colours() > 2, "the tray icon in the display's corner",
                   actual=lambda: (connection.picture(*corner).colours(), shown.poll()))
        assert shown.poll() is None
    finally:
        shown.terminate()
        shown.wait(LIMIT)
