"""The size of the program file."""

import re
from pathlib import Path

from figures import Figure

RESOURCES = Path(__file__).resolve().parents[2] / "src" / "res"
LIMIT_KIB = 320
# Sections that occupy space in the stripped file.
IN_THE_FILE = (".text", ".rdata", ".data", ".pdata", ".xdata")
# An input section of the linker's map: address, size, alignment, "object:(section)".
SECTION = re.compile(r"^[0-9a-f]{8} ([0-9a-f]{8}) +\d+ {9}(\S.*):\((\S*)\)$", re.M)


def own_bytes(map_text):
    """The bytes that the linker took from the program's own objects."""
    return sum(int(size, 16) for size, path, section in SECTION.findall(map_text)
               if path.endswith(".cpp.obj") and section.startswith(IN_THE_FILE))


def size(build, _full):
    program = (build / "ambrel.exe").stat().st_size / 1024
    pictures = sum(file.stat().st_size for name in ("*.ico", "*.png") for file in RESOURCES.glob(name))
    floor = (own_bytes((build / "ambrel.exe.map").read_text()) + pictures) / 1024
    yield Figure("size of the program", program, "KiB", goal=LIMIT_KIB)
    # The rest is the C runtime, which every program of the compiler contains, and the file's format.
    yield Figure("size of the program, compared with its own code and pictures", program, "KiB", floor, program / floor)
