"""The program file's sections in memory: constant data for messages that carry a pointer."""

import struct

import pefile


def find_rectangle(exe, condition):
    """(address, left, top) of constant data that can be read as a rectangle whose corner satisfies `condition`. The
    address is that of a program loaded at the address that its file asks for."""
    program = pefile.PE(exe, fast_load=True)
    constants = next(section for section in program.sections if section.Name.rstrip(b"\0") == b".rdata")
    data = constants.get_data()
    for position in range(0, len(data) - 16, 4):
        left, top = struct.unpack_from("<2i", data, position)
        if condition(left, top):
            return program.OPTIONAL_HEADER.ImageBase + constants.VirtualAddress + position, left, top
    raise AssertionError("the program's constants contain no such rectangle")


def is_at_its_own_base(exe, pid):
    base = pefile.PE(exe, fast_load=True).OPTIONAL_HEADER.ImageBase
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps:
        return any(line.startswith(f"{base:x}-") for line in maps)
