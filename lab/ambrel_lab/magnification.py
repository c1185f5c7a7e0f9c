"""The double of Magnification.dll in one prefix: installation, scripted results, recorded calls."""

import struct
from dataclasses import dataclass
from operator import mul

from .paths import LabError

DLL = "C:\\windows\\system32\\Magnification.dll"
SCRIPT = "C:\\lab\\magnification.script"
LOG = "C:\\lab\\magnification.log"
EFFECT = "C:\\lab\\magnification.effect"  # followed by a dot and the id of the process that set the effect
CELLS = struct.Struct("<25f")
IDENTITY = (1.0, 1.0, 1.0)

# Kinds of the library: complete, without one entry point, or missing.
LIBRARIES = {
    "ok": "magnification.dll",
    "missing": None,
    "without-initialize": "magnification-without-initialize.dll",
    "without-uninitialize": "magnification-without-uninitialize.dll",
    "without-effect": "magnification-without-effect.dll",
}


@dataclass
class Call:
    """One call that the program made. `matrix` has 25 floats for the effect and none for other calls."""

    function: str
    result: int
    error: int
    matrix: list

    @property
    def diagonal(self):
        """(red, green, blue) factors of an effect."""
        return tuple(self.matrix[6 * channel] for channel in range(3))


def diagonal_of(cells):
    for index, cell in enumerate(cells):
        if index % 6 and cell or index in (18, 24) and cell != 1.0:
            raise LabError(f"the lab shows diagonal matrices only, not {cells}")
    return cells[0], cells[6], cells[12]


class Magnification:
    def __init__(self, prefix, double_folder):
        self.prefix, self.double_folder, self.serial = prefix, double_folder, 0

    def install(self, kind):
        """Installs a library of LIBRARIES in system32. A running program keeps the library that it has loaded."""
        if kind not in LIBRARIES:
            raise LabError(f"no such Magnification library: {kind}; there are {', '.join(LIBRARIES)}")
        if LIBRARIES[kind]:
            self.prefix.put(self.double_folder / LIBRARIES[kind], DLL)
        else:
            self.prefix.path(DLL).unlink(missing_ok=True)

    def script(self, effect=(0,), initialize=0, hold=False):
        """Sets the results of the library's functions from now on, also for a running program.

        `effect` lists the errors of the next effect calls, 0 for success. The last one applies to all later calls, so
        (87, 0) fails once with error 87 and (87,) fails always. A program that reloads the library starts at the
        first one. `initialize` is the error of MagInitialize. With `hold` an effect call is recorded and then does not
        return before the next script.
        """
        self.serial += 1
        effects = ",".join(map(str, effect))
        text = f"serial={self.serial}\ninitialize={initialize}\neffect={effects}\n{'hold=1' if hold else ''}\n"
        self.prefix.replace_text(SCRIPT, text)

    def applied_factors(self):
        """(red, green, blue): the factors of the applied matrices, multiplied over all processes.

        An effect ends with its process, even a killed one. Raises LabError for a matrix that is not diagonal.
        """
        factors = IDENTITY
        for path in self.prefix.path(EFFECT).parent.glob("magnification.effect.*"):
            try:
                cells = path.read_bytes()
            except FileNotFoundError:
                continue
            if len(cells) == CELLS.size:  # Shorter only while the file is being created.
                factors = tuple(map(mul, factors, diagonal_of(CELLS.unpack(cells))))
        return factors

    def show_as_ramp(self):
        """Makes the library show its matrix as a gamma ramp as well, to make the filter visible on a real display."""
        self.prefix.path(SCRIPT).write_text("show=1\n")

    def calls(self):
        """Every call so far, oldest first."""
        path = self.prefix.path(LOG)
        calls = []
        # An incomplete last line is still being written.
        for line in path.read_text().split("\n")[:-1] if path.exists() else []:
            function, result, error, matrix = line.split("\t")
            calls.append(Call(function, int(result), int(error), [float(cell) for cell in matrix.split()]))
        return calls

    def clear_calls(self):
        """Clears the record of calls."""
        self.prefix.path(LOG).unlink(missing_ok=True)
