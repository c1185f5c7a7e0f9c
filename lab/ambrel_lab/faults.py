"""Faults in the running program: functions of Windows that fail, and crashes. See doubles/faults.cpp."""

from .popup import WINDOW_CLASS

DLL = "C:\\lab\\faults.dll"
SCRIPT = "C:\\lab\\faults.script"
KINDS = ("access", "illegal", "divide", "overflow")
ALWAYS = 0xFFFFFFFF


class Faults:
    """A program is given its faults once; they last until it ends."""

    def __init__(self, lab, double_folder):
        self.lab, self.double_folder = lab, double_folder

    def inject(self, *faults):
        """Gives the running program these faults; see failing() and crashing()."""
        self.lab.prefix.path(SCRIPT).write_text("\n".join(faults), encoding="ascii")
        if not self.lab.prefix.path(DLL).exists():
            self.lab.prefix.put(self.double_folder / "faults.dll", DLL)
        self.lab.desktop.request("inject", WINDOW_CLASS, DLL)

    @staticmethod
    def failing(name, result=0, error=0, times=ALWAYS, every_other=False, everywhere=False):
        """The imported function returns `result` with this last error instead of being called; with `everywhere` also
        when Windows' own DLLs call it, or a loop of the program that read the import pointer before."""
        how = "everywhere" if everywhere else "import"
        return f"fail {how} {name} {result} {error} {times} {int(every_other)}"

    @staticmethod
    def crashing(kind, offset):
        """The program's code at `offset` from the start of its image becomes a fault, one of KINDS."""
        assert kind in KINDS
        return f"crash {kind} {offset}"
