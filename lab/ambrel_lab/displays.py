"""An extended desktop for the program: displays beside the lab's screen, and what each does with gamma ramps."""

import struct

from .popup import WINDOW_CLASS
from .x11 import identity_ramp

DLL = "C:\\lab\\displays.dll"
SCRIPT = "C:\\lab\\displays.script"
RAMP = "C:\\lab\\displays.ramp."
ENTRIES = struct.Struct("<768H")
KINDS = ("everything", "identity", "nothing")


class Displays:
    """The program knows of them from `connect` until it ends."""

    def __init__(self, lab, double_folder):
        self.lab, self.double_folder = lab, double_folder

    def connect(self, *kinds):
        """Makes the running program see as many displays, the lab's screen first.

        Each is a word of KINDS: what ramps its own device context accepts. With more than one the context of the
        whole screen refuses all, as Windows does on an extended desktop.
        """
        assert all(kind in KINDS for kind in kinds), kinds
        self.change(*kinds)
        for path in self.lab.prefix.path(RAMP).parent.glob("displays.ramp.*"):
            path.unlink()
        if not self.lab.prefix.path(DLL).exists():
            self.lab.prefix.put(self.double_folder / "displays.dll", DLL)
        self.lab.desktop.ask("inject", WINDOW_CLASS, DLL)

    def change(self, *kinds):
        """Other displays, or other kinds, for a program that sees an extended desktop already."""
        self.lab.prefix.path(SCRIPT).write_text(" ".join(kinds))

    def ramp(self, number):
        """The gamma ramp of a display, which are counted from 1, as three lists."""
        if number == 1:
            return self.lab.ramp()
        path = self.lab.prefix.path(RAMP + str(number))
        if not path.exists():
            return identity_ramp()
        values = ENTRIES.unpack(path.read_bytes())
        return [list(values[start:start + 256]) for start in (0, 256, 512)]
