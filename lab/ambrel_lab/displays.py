"""An extended desktop: simulated displays next to the lab's screen, each with its own rule for gamma ramps."""

import struct

from .popup import WINDOW_CLASS
from .x11 import identity_ramp

DLL = "C:\\lab\\displays.dll"
SCRIPT = "C:\\lab\\displays.script"
RAMP = "C:\\lab\\displays.ramp."
ENTRIES = struct.Struct("<768H")
KINDS = ("everything", "identity", "nothing")


class Displays:
    """The running program sees these displays from `connect` until it exits."""

    def __init__(self, lab, double_folder):
        self.lab, self.double_folder = lab, double_folder

    def connect(self, *kinds):
        """Makes the running program see one display per argument. The first is the lab's screen.

        Each argument is one of KINDS: the gamma ramps that the display's own device context accepts. With more than
        one display the context of the whole screen refuses all ramps, as Windows does on an extended desktop.
        """
        assert all(kind in KINDS for kind in kinds), kinds
        self.change(*kinds)
        for path in self.lab.prefix.path(RAMP).parent.glob("displays.ramp.*"):
            path.unlink()
        if not self.lab.prefix.path(DLL).exists():
            self.lab.prefix.put(self.double_folder / "displays.dll", DLL)
        self.lab.desktop.request("inject", WINDOW_CLASS, DLL)

    def change(self, *kinds):
        """Changes the number or the kinds of the displays after connect()."""
        self.lab.prefix.replace_text(SCRIPT, " ".join(kinds))

    def ramp(self, number):
        """The gamma ramp of a display, as three lists. Displays are numbered from 1."""
        if number == 1:
            return self.lab.ramp()
        path = self.lab.prefix.path(RAMP + str(number))
        if not path.exists():
            return identity_ramp()
        values = ENTRIES.unpack(path.read_bytes())
        return [list(values[start:start + 256]) for start in (0, 256, 512)]
