"""The program on an existing display, as ./run.sh shows it."""

import os
import subprocess
import sys
from pathlib import Path

import pytest

from ambrel_lab.processes import command_line_of
from ambrel_lab.run import Run
from ambrel_lab.x11 import Connection
from desk import BUILD, TIMEOUT, ROOT, wait_until
from failures import OPEN_DESKS

ICON = 20  # The taskbar's height and the icon's width, in pixels.


class ShownDesktop:
    """What a failure's evidence needs of the desktop that lab.py shows on a display."""

    def __init__(self, connection, display):
        self.connection, self.display = connection, display

    def screenshot(self, path):
        self.connection.picture().save(path)

    @property
    def folder(self):
        """The folder of the run, which its watchdog's command line names before the display."""
        for name in filter(str.isdigit, os.listdir("/proc")):
            words = [word.decode("utf-8", "replace") for word in command_line_of(name) if word]
            if words[-1:] == [self.display] and "watchdog" in " ".join(words):
                return Path(words[-2])
        raise LookupError(f"no run uses the display {self.display}")


@pytest.fixture(name="small_display")
def small_display_fixture():
    run = Run((800, 600))
    connection = Connection(run.display)
    shown = ShownDesktop(connection, run.display)
    OPEN_DESKS.append(shown)
    yield shown
    OPEN_DESKS.remove(shown)
    connection.close()
    run.close()


def test_the_desktop_fits_a_display_that_is_smaller_than_its_usual_size(small_display):
    connection, display = small_display.connection, small_display.display
    command = [sys.executable, ROOT / "lab" / "lab.py"]
    if BUILD:
        command += ["--build", BUILD["build_dir"]]
    shown = subprocess.Popen([*command, "show"], env=dict(os.environ, DISPLAY=display))
    try:
        corner = (connection.width - ICON, connection.height - ICON, ICON, ICON)
        # A desktop larger than the display would show only its background there.
        wait_until(lambda: connection.picture(*corner).colours() > 2, "the tray icon in the display's corner",
                   state=lambda: (connection.picture(*corner).colours(), shown.poll()))
        assert shown.poll() is None
    finally:
        shown.terminate()
        shown.wait(TIMEOUT)
