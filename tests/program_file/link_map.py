"""The linker's map of the program: the symbols and the object file at an address."""

import re
from bisect import bisect_right
from pathlib import Path

from program import PROGRAM

# An input section: address, size, alignment, "object:(section)". Symbols follow it, deeper by one column.
SECTION = re.compile(r"^([0-9a-f]{8}) ([0-9a-f]{8}) +\d+ {9}(\S.*):\((\S*)\)$")
SYMBOL = re.compile(r"^([0-9a-f]{8}) 0{8} +0 {17}(\S.*)$")


class LinkMap:
    def __init__(self, text):
        self.symbols, sections = {}, []
        for line in text.splitlines():
            if found := SECTION.match(line):
                if size := int(found[2], 16):
                    sections.append((int(found[1], 16), size, Path(found[3]).name))
            elif found := SYMBOL.match(line):
                self.symbols.setdefault(found[2], int(found[1], 16))
        self.sections = sorted(sections)

    def object_at(self, address):
        """The name of the object file whose section contains the address."""
        start, size, name = self.sections[bisect_right(self.sections, (address, float("inf"), "")) - 1]
        assert start <= address < start + size, f"no section contains {address:#x}"
        return name

    def name_at(self, address):
        """The object and the symbol as "object: symbol", or only the object if the function has no symbol."""
        names = [name for name, start in self.symbols.items() if start == address and not name.startswith(".")]
        return f"{self.object_at(address)}: {names[0]}" if names else self.object_at(address)


def link_map():
    return LinkMap(PROGRAM.with_suffix(".exe.map").read_text())
