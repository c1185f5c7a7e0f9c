#!/usr/bin/python3
"""Writes ../app.ico, ../tray_off.ico, ../tray_on.ico and ../logo.png from the drawings beside this script.

Needs the Debian packages librsvg2-bin (rsvg-convert) and python3-pil. The outputs are committed, so the build needs
neither. With the same package versions two runs give equal bytes.

NAME_16.svg, NAME_20.svg and NAME_24.svg fit the pixel grid of those sizes; NAME.svg is the full drawing.
"""

import io
import struct
import subprocess
from pathlib import Path

from PIL import Image

DRAWINGS = Path(__file__).resolve().parent
OUTPUT = DRAWINGS.parent

# Size in pixels -> suffix of the drawing.
APP = {16: "_16", 20: "_20", 24: "_24", 32: "", 40: "", 48: "", 64: "", 256: ""}
TRAY = {**APP, 40: "_20"}
# The popup shows this icon at 22 units. Windows stretches a neighbour unless there is a picture of the very size, so
# there is one for every usual scale: 100, 125, 150, 175, 200, 225, 250, 300 and 350 %.
POPUP = {22: "_20", 28: "", 33: "", 39: "", 44: "", 50: "", 55: "", 66: "", 77: ""}
ICONS = {"app": APP, "tray_off": TRAY, "tray_on": dict(sorted({**TRAY, **POPUP}.items()))}

# Larger pictures are PNG inside the .ico, which is a fraction of a bitmap's size.
LARGEST_BITMAP = 32


def render(name, size):
    png = subprocess.run(["rsvg-convert", "-w", str(size), "-h", str(size), DRAWINGS / f"{name}.svg"], check=True,
                         stdout=subprocess.PIPE).stdout
    return Image.open(io.BytesIO(png)).convert("RGBA")


def encode_png(picture):
    file = io.BytesIO()
    picture.save(file, "PNG", optimize=True)
    return file.getvalue()


def encode_bitmap(picture):
    """A header, BGRA rows and the rows of the mask, which Pillow's own writer of icons leaves out. Both from below."""
    clear = picture.getchannel("A").point(lambda alpha: 255 if alpha == 0 else 0).convert("1")
    colours = picture.tobytes("raw", "BGRA", 0, -1)
    mask = clear.tobytes("raw", "1", (picture.width + 31) // 32 * 4, -1)
    header = struct.pack("<IiiHHIIiiII", 40, picture.width, picture.height * 2, 1, 32, 0, len(colours) + len(mask),
                         0, 0, 0, 0)
    return header + colours + mask


def encode_icon(pictures):
    """A directory and the pictures. A size of 256 is written as 0."""
    directory, data = struct.pack("<HHH", 0, 1, len(pictures)), b""
    start = len(directory) + 16 * len(pictures)
    for picture in pictures:
        image = encode_bitmap(picture) if picture.width <= LARGEST_BITMAP else encode_png(picture)
        directory += struct.pack("<BBBBHHII", picture.width % 256, picture.height % 256, 0, 0, 1, 32, len(image),
                                 start + len(data))
        data += image
    return directory + data


def write(name, data):
    (OUTPUT / name).write_bytes(data)
    print(f"{name:14} {len(data):6} bytes")


def main():
    for name, sizes in ICONS.items():
        write(f"{name}.ico", encode_icon([render(name + suffix, size) for size, suffix in sizes.items()]))
    write("logo.png", encode_png(render("app", 256)))


if __name__ == "__main__":
    main()
