"""Runs the program in a Wine desktop window on an existing display, such as the developer's own."""

import os
import time
from pathlib import Path

from .desktop import Desktop
from .magnification import Magnification
from .paths import DEFAULT_BUILD, LabError
from .prefix import Prefix
from .processes import processes_named
from .run import Run
from .console_runner import end_on_signals
from .x11 import Connection


def run_on_display(display=None, build_dir=DEFAULT_BUILD, size=(1280, 800), dpi=96):
    """Runs the built program on `display` ($DISPLAY by default) until it quits or its desktop is closed.
    The desktop has this size, or that of a smaller display.

    The display's gamma ramp is restored afterwards in every case, and the run's files are deleted: settings do not
    persist from one run to the next.
    """
    display = display or os.environ.get("DISPLAY")
    exe = Path(build_dir) / "ambrel.exe"
    if not display:
        raise LabError("DISPLAY is not set: there is no screen to show the desktop on")
    if not exe.exists():
        raise LabError(f"{exe} has not been built")
    end_on_signals()
    run = Run(size, borrowed_display=display)
    try:
        connection = Connection(run.display)
        if not connection.ramp_size():
            print("lab: this display has no gamma ramp, so the filter will not be visible")
        size = min(size[0], connection.width), min(size[1], connection.height)
        connection.close()
        prefix = Prefix(run.folder / "prefix")
        magnification = Magnification(prefix, Path(build_dir) / "lab")
        magnification.install("ok")
        magnification.show_as_ramp()
        access = {name: os.environ[name] for name in ("XAUTHORITY",) if name in os.environ}
        desktop = Desktop(prefix, run, size, dpi, Path(build_dir) / "lab" / "labtool.exe", "-all", access)
        prefix.put(exe, "C:\\Ambrel\\ambrel.exe")
        program = desktop.start(["C:\\Ambrel\\ambrel.exe"])
        # Closing the desktop's window ends the program too. A lost desktop window may leave it running.
        while program.poll() is None and processes_named(prefix.folder, "explorer.exe"):
            time.sleep(0.2)
        finished = program.poll()
        desktop.close()
        return finished or 0
    finally:
        run.close()
