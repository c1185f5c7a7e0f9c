"""Pictures: rectangles of red, green and blue bytes that can be cut, looked at and kept as PNG."""

import struct
import zlib

PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def as_seen(factors, ramp):
    """What a screen makes of each level when a colour matrix multiplies the channels before a gamma ramp is applied.

    Three lists like a ramp's. Between the ramp's entries the value is interpolated.
    """
    def seen(channel, place):
        below = min(int(place), len(channel) - 2)
        return channel[below] + (channel[below + 1] - channel[below]) * (place - below)
    return [[round(seen(channel, step * min(max(factor, 0.0), 1.0))) for step in range(len(channel))]
            for factor, channel in zip(factors, ramp)]


def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


class Picture:
    """`rgb` holds width x height pixels of three bytes, row by row from the top."""

    def __init__(self, width, height, rgb):
        assert len(rgb) == 3 * width * height
        self.width, self.height, self.rgb = width, height, bytes(rgb)

    @classmethod
    def from_bgrx(cls, width, height, raw):
        """From an X server's 32-bit pixels without padding at the row ends."""
        rgb = bytearray(3 * width * height)
        rgb[0::3], rgb[1::3], rgb[2::3] = raw[2::4], raw[1::4], raw[0::4]
        return cls(width, height, rgb)

    @classmethod
    def load(cls, path):
        """Reads a PNG that `save` wrote; other PNGs raise ValueError."""
        data = open(path, "rb").read()
        width, height, kind = struct.unpack(">II5s", data[16:29])
        position, packed = 8, b""
        while position < len(data):
            length, chunk = struct.unpack(">I4s", data[position:position + 8])
            if chunk == b"IDAT":
                packed += data[position + 8:position + 8 + length]
            position += length + 12
        rows, stride = zlib.decompress(packed), 3 * width + 1
        if not data.startswith(PNG_SIGNATURE) or kind != b"\x08\x02\x00\x00\x00" or any(rows[0::stride]):
            raise ValueError(f"{path} is not one of the lab's own pictures")
        return cls(width, height, b"".join(rows[y * stride + 1:(y + 1) * stride] for y in range(height)))

    def png(self):
        """The bytes of a PNG, the same for the same picture: no time stamp, no name of what wrote it."""
        stride = 3 * self.width
        rows = b"".join(b"\0" + self.rgb[y * stride:(y + 1) * stride] for y in range(self.height))
        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0)
        return (PNG_SIGNATURE + png_chunk(b"IHDR", header) + png_chunk(b"IDAT", zlib.compress(rows, 6))
                + png_chunk(b"IEND", b""))

    def save(self, path):
        with open(path, "wb") as file:
            file.write(self.png())

    def pixel(self, x, y):
        """(red, green, blue), each 0 to 255."""
        start = 3 * (y * self.width + x)
        return tuple(self.rgb[start:start + 3])

    def crop(self, left, top, right, bottom):
        """The part from (left, top) up to but not including (right, bottom)."""
        rows = (self.rgb[3 * (y * self.width + left):3 * (y * self.width + right)] for y in range(top, bottom))
        return Picture(right - left, bottom - top, b"".join(rows))

    def through(self, ramp):
        """As the eye sees it: what a display shows of these pixels with that gamma ramp loaded."""
        rgb = bytearray(self.rgb)
        for channel in range(3):
            table = bytes(value >> 8 for value in ramp[channel])
            rgb[channel::3] = self.rgb[channel::3].translate(table)
        return Picture(self.width, self.height, rgb)

    def holds(self, colour):
        """Whether any pixel is of this (red, green, blue)."""
        return any(self.rgb[i:i + 3] == bytes(colour) for i in range(0, len(self.rgb), 3))

    def colours(self):
        """How many different colours it holds."""
        return len({self.rgb[i:i + 3] for i in range(0, len(self.rgb), 3)})

    def __eq__(self, other):
        return (isinstance(other, Picture) and self.rgb == other.rgb
                and (self.width, self.height) == (other.width, other.height))

    def __repr__(self):
        return f"Picture({self.width}x{self.height})"
