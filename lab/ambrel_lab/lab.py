"""Lab: one virtual screen with one Windows desktop on it."""

from pathlib import Path

from .accessibility import AccessibilityActions
from .console import run_console
from .desktop import Desktop
from .displays import Displays
from .evidence import save_evidence
from .faults import Faults
from .hardware import Hardware
from .input import Input
from .magnification import Magnification
from .picture import as_seen
from .paths import DEFAULT_BUILD
from .popup import PopupActions
from .prefix import Prefix
from .program import ProgramActions
from .run import Run
from .waiting import TIMEOUT
from .windows import WindowsActions
from .x11 import Connection


class Lab(AccessibilityActions, PopupActions, ProgramActions, WindowsActions):
    """A screen, a desktop and a copy of the template prefix. Several labs may run at the same time.

    Use it with `with`. A watchdog process ends everything that the lab started when the lab closes or its process is
    killed.
    """

    def __init__(self, build_dir=DEFAULT_BUILD, dpi=96, size=(1920, 1080), magnification="ok", debug="-all",
                 keep=False, tools=True, evidence=None, one_processor=True):
        """`magnification` is a key of magnification.LIBRARIES. `debug` is WINEDEBUG, recorded in wine_log().
        `keep` keeps the run's folder afterwards. Without `tools` the lab consists of a screen and a prefix only: no
        build is required and the Magnification double is missing. A lab that fails to start, or whose `with` block
        raises an exception, saves its evidence in the folder `evidence`. `one_processor` is described at Run."""
        self.build_dir, self.dpi, self.size = Path(build_dir), dpi, size
        self.program, self.program_path = None, "C:\\Ambrel\\ambrel.exe"
        self.connection, self.desktop, self.evidence = None, None, evidence
        self._options = (magnification, debug, keep, tools, one_processor)

    def __enter__(self):
        magnification, debug, keep, tools, one_processor = self._options
        self.run = Run(self.size, kept=keep, one_processor=one_processor)
        try:
            doubles = self.build_dir / "lab"
            self.prefix = Prefix(self.run.folder / "prefix")
            self.magnification = Magnification(self.prefix, doubles)
            self.hardware = Hardware(self, doubles)
            self.displays = Displays(self, doubles)
            self.faults = Faults(self, doubles)
            if tools:
                self.magnification.install(magnification)
            self.connection = Connection(self.run.display)
            self.input = Input(self.connection)
            self.desktop = Desktop(self.prefix, self.run, self.size, self.dpi, tools and doubles / "labtool.exe", debug)
        except BaseException as error:
            self._save_evidence(error)
            self.close()
            raise
        return self

    def __exit__(self, _kind, error, _traceback):
        if isinstance(error, Exception):
            self._save_evidence(error)
        self.close()

    def _save_evidence(self, error):
        if self.evidence:
            save_evidence(self, self.evidence)
            error.add_note(f"evidence: {self.evidence}")

    def close(self):
        """Ends all processes of the lab. Does nothing if the lab is closed."""
        if self.connection:
            self.connection.close()
        if self.desktop:
            self.desktop.close()
        self.run.close()

    @property
    def folder(self):
        """The run's folder, which contains the prefix and the logs."""
        return self.run.folder

    @property
    def display(self):
        return self.run.display

    def wine_log(self, start=0):
        """The output of Wine and the programs' standard error, from the byte `start`."""
        if not self.desktop.log.exists():
            return ""
        with open(self.desktop.log, "rb") as log:
            log.seek(start)
            return log.read().decode(errors="replace")

    def wine_log_size(self):
        """The size of wine_log() in bytes."""
        return self.desktop.log.stat().st_size if self.desktop.log.exists() else 0

    def click(self, x, y, button=1):
        self.input.click(x, y, button)

    def press(self, x, y, button=1):
        self.input.press(x, y, button)

    def move(self, x, y):
        self.input.move(x, y)

    def release(self, button=1):
        self.input.release(button)

    def drag(self, x0, y0, x1, y1, steps=10, release=True):
        self.input.drag(x0, y0, x1, y1, steps=steps, release=release)

    def key(self, combination):
        self.input.key(combination)

    def screenshot(self, path=None):
        """The screen as a Picture without the gamma ramp, saved as PNG if a path is given."""
        picture = self.connection.picture()
        if path:
            picture.save(path)
        return picture

    def eye_picture(self, path=None):
        """The screen as the eye sees it: with the current colour matrix and gamma ramp applied."""
        picture = self.connection.picture().through(self.visible_levels())
        if path:
            picture.save(path)
        return picture

    def pixel(self, x, y):
        """(red, green, blue) of one pixel of the screen, without the gamma ramp."""
        return self.connection.picture(x, y, 1, 1).pixel(0, 0)

    def ramp(self):
        """The current gamma ramp: three lists (red, green, blue) of 256 numbers from 0 to 65535, 8 bits exact."""
        return self.connection.ramp()

    def visible_levels(self):
        """Each level as displayed, with colour matrix and gamma ramp applied: three lists as returned by ramp()."""
        return as_seen(self.magnification.applied_factors(), self.connection.ramp())

    def set_ramp(self, ramp):
        self.connection.set_ramp(ramp)

    def magnification_calls(self):
        """Every call that the program made to Magnification.dll; see magnification.Call."""
        return self.magnification.calls()

    def magnification_script(self, effect=(0,), initialize=0):
        """Sets the results of Magnification.dll from now on; see Magnification.script."""
        self.magnification.script(effect, initialize)

    def run_tool(self, name, *arguments, timeout=TIMEOUT):
        """Runs a command of tools/main.cpp and returns its answer. Raises ToolError if it fails."""
        return self.desktop.request(name, *arguments, timeout=timeout)

    def run_console_program(self, exe, arguments=(), timeout=None):
        """Runs a console program in this lab, forwards its output and returns its exit code."""
        return run_console(self.desktop, exe, arguments, timeout)
