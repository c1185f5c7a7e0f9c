"""The double of Magnification.dll in one prefix: which one is there, what it answers, what it was asked."""

import os
import struct
from dataclasses import dataclass
from operator import mul

from .paths import LabError

DLL = "C:\\windows\\system32\\Magnification.dll"
SCRIPT = "C:\\lab\\magnification.script"
LOG = "C:\\lab\\magnification.log"
EFFECT = "C:\\lab\\magnification.effect"  # followed by a dot and the number of the process whose effect it is
CELLS = struct.Struct("<25f")
IDENTITY = (1.0, 1.0, 1.0)

# What the library is: whole, without one entry point, or not there at all.
LIBRARIES = {
    "ok": "magnification.dll",
    "missing": None,
    "without-initialize": "magnification-without-initialize.dll",
    "without-uninitialize": "magnification-without-uninitialize.dll",
    "without-effect": "magnification-without-effect.dll",
}


@dataclass
class Call:
    """One call that the program made. `matrix` holds 25 floats for the effect and none for the others."""

    function: str
    result: int
    error: int
    matrix: list

    @property
    def diagonal(self):
        """(red, green, blue) factors of an effect."""
        return tuple(self.matrix[6 * channel] for channel in range(3))


def diagonal_of(cells):
    for place, cell in enumerate(cells):
        if place % 6 and cell or place in (18, 24) and cell != 1.0:
            raise LabError(f"the lab shows diagonal matrices only, not {cells}")
    return cells[0], cells[6], cells[12]


class Magnification:
    def __init__(self, prefix, double_folder):
        self.prefix, self.double_folder, self.serial = prefix, double_folder, 0

    def install(self, kind):
        """Puts a library of LIBRARIES into system32; a program that has loaded another keeps that one."""
        if kind not in LIBRARIES:
            raise LabError(f"no such Magnification library: {kind}; there are {', '.join(LIBRARIES)}")
        if LIBRARIES[kind]:
            self.prefix.put(self.double_folder / LIBRARIES[kind], DLL)
        else:
            self.prefix.path(DLL).unlink(missing_ok=True)

    def script(self, effect=(0,), initialize=0, delay=0):
        """What the library answers from now on, also while the program runs.

        `effect` is the error of each coming effect call, 0 being success; the last one answers all later calls, so
        (87, 0) fails once with error 87 and (87,) for ever. A program that loads the library anew starts the list
        again. `initialize` is the error of MagInitialize. Each effect call takes `delay` ms after it was recorded.
        """
        self.serial += 1
        path = self.prefix.path(SCRIPT)
        effects = ",".join(map(str, effect))
        text = f"serial={self.serial}\ninitialize={initialize}\neffect={effects}\ndelay={delay}\n"
        temporary = path.with_suffix(".new")
        temporary.write_text(text)
        os.replace(temporary, path)

    def in_force(self):
        """(red, green, blue): what the matrices in force multiply each channel by, those of all processes together.

        An effect ends with its process, however that ends. A matrix that is not diagonal raises LabError.
        """
        factors = IDENTITY
        for path in self.prefix.path(EFFECT).parent.glob("magnification.effect.*"):
            try:
                cells = path.read_bytes()
            except FileNotFoundError:
                continue
            if len(cells) == CELLS.size:  # Shorter only in the moment in which the file is made.
                factors = tuple(map(mul, factors, diagonal_of(CELLS.unpack(cells))))
        return factors

    def show_as_ramp(self):
        """Makes the library show its matrix as a gamma ramp too, for a person in front of the display."""
        self.prefix.path(SCRIPT).write_text("show=1\n")

    def calls(self):
        """Every call so far, oldest first."""
        path = self.prefix.path(LOG)
        calls = []
        for line in path.read_text().splitlines() if path.exists() else []:
            function, result, error, matrix = line.split("\t")
            calls.append(Call(function, int(result), int(error), [float(cell) for cell in matrix.split()]))
        return calls

    def forget(self):
        """Empties the record."""
        self.prefix.path(LOG).unlink(missing_ok=True)
