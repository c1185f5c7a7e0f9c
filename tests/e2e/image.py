"""The program file's sections in memory: constant data for messages that carry a pointer."""

import struct

HEADER_OFFSET, MACHINE_SIZE = 0x3C, 24


def sections(data):
    """(name, address in memory, offset in the file, size) of each section, the address with the image's base."""
    start = struct.unpack_from("<I", data, HEADER_OFFSET)[0]
    count, optional_size = struct.unpack_from("<H", data, start + 6)[0], struct.unpack_from("<H", data, start + 20)[0]
    base = struct.unpack_from("<Q", data, start + MACHINE_SIZE + 24)[0]
    for number in range(count):
        row = start + MACHINE_SIZE + optional_size + 40 * number
        name = data[row:row + 8].rstrip(b"\0").decode()
        _, address, size, offset = struct.unpack_from("<4I", data, row + 8)
        yield name, base + address, offset, size


def find_rectangle(exe, condition):
    """(address, left, top) of constant data that can be read as a rectangle whose corner satisfies `condition`."""
    data = exe.read_bytes()
    for name, address, offset, size in sections(data):
        if name != ".rdata":
            continue
        for position in range(0, size - 16, 4):
            left, top = struct.unpack_from("<2i", data, offset + position)
            if condition(left, top):
                return address + position, left, top
    raise AssertionError("the program's constants contain no such rectangle")


def is_at_its_own_base(exe, pid):
    start = next(sections(exe.read_bytes()))[1] & ~0xFFFF
    with open(f"/proc/{pid}/maps", encoding="utf-8") as maps:
        return any(line.startswith(f"{start:x}-") for line in maps)
