"""Reads what a Windows program file says of itself: headers, imports and sections. Offsets as in Microsoft's
"PE Format"."""

import struct
from pathlib import Path

DIRECTORY_IMPORT = 1
DIRECTORY_RESOURCE = 2
DIRECTORY_DELAY_IMPORT = 13


class PeFile:
    def __init__(self, path):
        self.data = Path(path).read_bytes()
        header = self._number("I", 0x3C)
        assert self.data[header:header + 4] == b"PE\0\0"
        self.machine, count, self.timestamp = struct.unpack_from("<HHI", self.data, header + 4)
        optional_size = self._number("H", header + 20)
        self.optional = header + 24
        assert self._number("H", self.optional) == 0x20B, "not a 64-bit program"
        self.sections = [self._section(self.optional + optional_size + 40 * i) for i in range(count)]

    def _number(self, kind, offset):
        return struct.unpack_from("<" + kind, self.data, offset)[0]

    def _section(self, offset):
        name, size, address, raw_size, raw = struct.unpack_from("<8sIIII", self.data, offset)
        return name.rstrip(b"\0").decode(), address, max(size, raw_size), raw

    def _offset(self, address):
        for _, start, size, raw in self.sections:
            if start <= address < start + size:
                return raw + address - start
        raise AssertionError(f"no section holds {address:#x}")

    def _text(self, address):
        start = self._offset(address)
        return self.data[start:self.data.index(b"\0", start)].decode("ascii")

    @property
    def os_version(self):
        return struct.unpack_from("<HH", self.data, self.optional + 40)

    @property
    def subsystem_version(self):
        return struct.unpack_from("<HH", self.data, self.optional + 48)

    @property
    def subsystem(self):
        return self._number("H", self.optional + 68)

    @property
    def dll_characteristics(self):
        return self._number("H", self.optional + 70)

    def directory(self, index):
        return struct.unpack_from("<II", self.data, self.optional + 112 + 8 * index)

    def imported_dlls(self):
        address, _ = self.directory(DIRECTORY_IMPORT)
        names, offset = [], self._offset(address)
        while self._number("I", offset + 12):
            names.append(self._text(self._number("I", offset + 12)).lower())
            offset += 20
        return names
