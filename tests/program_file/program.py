"""The program file as the tests read it: python3-pefile's view and helpers of the rules."""

import os
import struct
from pathlib import Path

import pefile

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("AMBREL_BUILD_DIR", ROOT / "build" / "release"))
PROGRAM = BUILD / "ambrel.exe"

# Offsets in the load configuration (IMAGE_LOAD_CONFIG_DIRECTORY64 in Microsoft's "PE Format").
DEPENDENT_LOAD_FLAGS, SECURITY_COOKIE, LOAD_CONFIG_SIZE = 0x4E, 0x58, 0x70


class Program:
    def __init__(self, data):
        self.data = data
        self.pe = pefile.PE(data=data)

    @property
    def base(self):
        return self.pe.OPTIONAL_HEADER.ImageBase

    def directory(self, name):
        """(address relative to the image's base, size); zeros if there is none."""
        entry = self.pe.OPTIONAL_HEADER.DATA_DIRECTORY[pefile.DIRECTORY_ENTRY[f"IMAGE_DIRECTORY_ENTRY_{name}"]]
        return entry.VirtualAddress, entry.Size

    def number(self, kind, address):
        """A number at an address relative to the image's base; `kind` is a format character of struct."""
        return struct.unpack("<" + kind, self.pe.get_data(address, struct.calcsize(kind)))[0]

    def load_configuration(self):
        """The address relative to the image's base, or None."""
        address, size = self.directory("LOAD_CONFIG")
        return address if address and size else None

    def cookie_address(self):
        """The security cookie's address relative to the image's base, or None."""
        configuration = self.load_configuration()
        address = self.number("Q", configuration + SECURITY_COOKIE) if configuration else 0
        return address - self.base if address else None

    def imports(self):
        """{DLL in lower case: names of its functions}."""
        return {entry.dll.decode().lower(): {item.name.decode() for item in entry.imports}
                for entry in getattr(self.pe, "DIRECTORY_ENTRY_IMPORT", [])}

    def resources(self, kind):
        """{id or name: bytes} of one kind of resource, in the first language."""
        root = getattr(self.pe, "DIRECTORY_ENTRY_RESOURCE", None)
        found = {}
        for entry in root.entries if root else []:
            if entry.id == kind:
                for item in entry.directory.entries:
                    data = item.directory.entries[0].data.struct
                    found[item.id or str(item.name)] = self.pe.get_data(data.OffsetToData, data.Size)
        return found

    def version_texts(self):
        """The version resource's fields."""
        return {key.decode(): value.decode() for block in getattr(self.pe, "FileInfo", [[]])[0]
                for table in getattr(block, "StringTable", []) for key, value in table.entries.items()}


def built_program():
    return Program(PROGRAM.read_bytes())
