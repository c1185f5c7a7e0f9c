#!/usr/bin/python3
"""Regenerates ../app.ico, ../tray_off.ico, ../tray_on.ico and ../logo.png
from the SVG files beside this script.

Needs the Debian packages librsvg2-bin (rsvg-convert) and python3-pil:

    apt-get install -y --no-install-recommends librsvg2-bin python3-pil
    /usr/bin/python3 src/res/art/render.py

The outputs are committed, so building the program needs none of this.
With the same package versions, two runs give equal bytes.

NAME_16.svg, NAME_20.svg and NAME_24.svg are drawn on the pixel grid of those
sizes; NAME.svg is the full drawing.  Entries up to 64 pixels are 32-bit
bitmaps with an AND mask; the 256-pixel entry is a PNG.
"""

import io
import os
import struct
import subprocess
import zlib

from PIL import Image

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.dirname(HERE)

# Size in pixels -> suffix of the drawing it is rendered from.
APP = {16: "_16", 20: "_20", 24: "_24", 32: "", 40: "", 48: "", 64: "", 256: ""}
TRAY = {16: "_16", 20: "_20", 24: "_24", 32: "", 40: "_20", 48: "", 64: "", 256: ""}
# The popup draws this one at 22 units: a size of its own at each usual DPI, or
# Windows would stretch a neighbour.
POPUP = {22: "_20", 28: "", 33: "", 44: ""}
ICONS = {"app": APP, "tray_off": TRAY, "tray_on": dict(sorted({**TRAY, **POPUP}.items()))}

# The 256-pixel picture keeps this many colours: the flat ones and a few steps
# of edge blending, which makes its PNG far smaller.
COLOURS = 24


def render(svg, size):
    """The drawing as straight-alpha RGBA bytes, rows from the top."""
    png = subprocess.run(
        ["rsvg-convert", "-w", str(size), "-h", str(size), "-f", "png",
         os.path.join(HERE, svg)],
        check=True, stdout=subprocess.PIPE).stdout
    image = Image.open(io.BytesIO(png)).convert("RGBA")
    assert image.size == (size, size), svg
    data = bytearray(image.tobytes())
    for i in range(0, len(data), 4):
        if data[i + 3] == 0:  # no stray colour in clear pixels
            data[i:i + 4] = b"\0\0\0\0"
    return bytes(data)


def reduce_colours(rgba):
    """The picture with every pixel moved to one of COLOURS of its own colours."""
    pixels = [rgba[i:i + 4] for i in range(0, len(rgba), 4)]
    counts = {}
    for pixel in pixels:
        counts[pixel] = counts.get(pixel, 0) + 1

    def weighed(c):
        return [c[0] * c[3] // 255, c[1] * c[3] // 255, c[2] * c[3] // 255, 2 * c[3]]

    # Keep, one after another, the colour that is worst served so far.
    worst = {c: 1 << 20 for c in counts}
    moved = {}
    for _ in range(min(COLOURS, len(counts))):
        kept = max(counts, key=lambda c: (counts[c] * worst[c], c))
        w = weighed(kept)
        for c in counts:
            d = sum((x - y) ** 2 for x, y in zip(w, weighed(c)))
            if d < worst[c]:
                worst[c] = d
                moved[c] = kept
    return b"".join(moved[pixel] for pixel in pixels)


def filter_row(kind, row, above):
    """One PNG row of RGBA bytes, filtered."""
    out = bytearray([kind])
    for i, value in enumerate(row):
        a = row[i - 4] if i >= 4 else 0
        b = above[i]
        if kind == 0:
            guess = 0
        elif kind == 1:
            guess = a
        elif kind == 2:
            guess = b
        elif kind == 3:
            guess = (a + b) >> 1
        else:
            c = above[i - 4] if i >= 4 else 0
            p = a + b - c
            guess = min((abs(p - a), 0, a), (abs(p - b), 1, b), (abs(p - c), 2, c))[2]
        out.append((value - guess) & 255)
    return bytes(out)


def encode_png(rgba, size):
    """A plain 8-bit RGBA PNG: the smallest of several filterings."""
    stride = size * 4
    blank = bytes(stride)
    rows = [rgba[y * stride:(y + 1) * stride] for y in range(size)]
    filtered = [[filter_row(k, row, rows[y - 1] if y else blank) for k in range(5)]
                for y, row in enumerate(rows)]
    candidates = [b"".join(f[k] for f in filtered) for k in range(5)]
    # Per row: the smallest sum of signed magnitudes, then the fewest bytes set.
    candidates.append(b"".join(
        min(f, key=lambda r: sum(min(v, 256 - v) for v in r[1:])) for f in filtered))
    candidates.append(b"".join(
        min(f, key=lambda r: sum(v != 0 for v in r[1:])) for f in filtered))
    packed = []
    for raw in candidates:
        for strategy in (zlib.Z_DEFAULT_STRATEGY, zlib.Z_FILTERED, zlib.Z_RLE):
            z = zlib.compressobj(9, zlib.DEFLATED, 15, 9, strategy)
            packed.append(z.compress(raw) + z.flush())

    def chunk(kind, body):
        return (struct.pack(">I", len(body)) + kind + body
                + struct.pack(">I", zlib.crc32(kind + body)))

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", min(packed, key=len)) + chunk(b"IEND", b""))


def encode_bitmap(rgba, size):
    """BITMAPINFOHEADER, BGRA rows from the bottom, AND mask."""
    stride = size * 4
    mask_stride = (size + 31) // 32 * 4
    colour = bytearray()
    mask = bytearray()
    for y in reversed(range(size)):
        row = rgba[y * stride:(y + 1) * stride]
        bits = bytearray(mask_stride)
        for x in range(size):
            r, g, b, a = row[x * 4:x * 4 + 4]
            colour += bytes((b, g, r, a))
            if a == 0:
                bits[x >> 3] |= 0x80 >> (x & 7)
        mask += bits
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0,
                         len(colour) + len(mask), 0, 0, 0, 0)
    return header + bytes(colour) + bytes(mask)


def encode_icon(images):
    """images: (size, encoded bytes), in the order wanted in the file."""
    directory = struct.pack("<HHH", 0, 1, len(images))
    offset = len(directory) + 16 * len(images)
    for size, body in images:
        directory += struct.pack("<BBBBHHII", size & 255, size & 255, 0, 0, 1, 32,
                                 len(body), offset)
        offset += len(body)
    return directory + b"".join(body for _, body in images)


def write(name, data):
    with open(os.path.join(OUT, name), "wb") as f:
        f.write(data)
    print("%-14s %6d bytes" % (name, len(data)))


def main():
    for name, sizes in ICONS.items():
        images = []
        for size, suffix in sizes.items():
            rgba = render(name + suffix + ".svg", size)
            if size == 256:
                images.append((size, encode_png(reduce_colours(rgba), size)))
            else:
                images.append((size, encode_bitmap(rgba, size)))
        write(name + ".ico", encode_icon(images))
        if name == "app":
            write("logo.png", images[-1][1])


if __name__ == "__main__":
    main()
