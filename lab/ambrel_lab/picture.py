"""Picture: an immutable RGB image that can be cropped, inspected and saved as PNG."""

import io

from PIL import Image, ImageChops


def as_seen(factors, ramp):
    """Each level as displayed when a colour matrix multiplies the channels before a gamma ramp is applied.

    Returns three lists like a ramp's. Values between the ramp's entries are interpolated.
    """
    def interpolated(channel, position):
        below = min(int(position), len(channel) - 2)
        return channel[below] + (channel[below + 1] - channel[below]) * (position - below)
    return [[round(interpolated(channel, step * min(max(factor, 0.0), 1.0))) for step in range(len(channel))]
            for factor, channel in zip(factors, ramp)]


class Picture:
    """Wraps an RGB image of Pillow. Immutable."""

    def __init__(self, image):
        assert image.mode == "RGB"
        self.image = image

    @classmethod
    def from_bgrx(cls, width, height, raw):
        """From an X server's 32-bit pixels without padding at the row ends."""
        return cls(Image.frombytes("RGB", (width, height), raw, "raw", "BGRX"))

    @classmethod
    def load(cls, path):
        with Image.open(path) as image:
            return cls(image.convert("RGB"))

    @property
    def width(self):
        return self.image.width

    @property
    def height(self):
        return self.image.height

    @property
    def rgb(self):
        """The pixels, three bytes each, row by row from the top."""
        return self.image.tobytes()

    def png(self):
        """The bytes of a PNG file, reproducible: they contain no time stamp and no name of a program."""
        file = io.BytesIO()
        self.image.save(file, "PNG")
        return file.getvalue()

    def save(self, path):
        with open(path, "wb") as file:
            file.write(self.png())

    def pixel(self, x, y):
        """(red, green, blue), each 0 to 255."""
        return self.image.getpixel((x, y))

    def pixels(self):
        """All pixels as (red, green, blue), row by row from the top."""
        return list(self.image.getdata())

    def crop(self, left, top, right, bottom):
        """The part from (left, top) up to but not including (right, bottom)."""
        return Picture(self.image.crop((left, top, right, bottom)))

    def through(self, ramp):
        """The picture as a display shows it with this gamma ramp (or visible levels)."""
        return Picture(self.image.point([value >> 8 for channel in ramp for value in channel]))

    def difference(self, other):
        """Bounding box (left, top, right, bottom) of the differences from a picture of the same size; None if equal."""
        return ImageChops.difference(self.image, other.image).getbbox()

    def contains(self, colour):
        """Whether any pixel has this (red, green, blue)."""
        return tuple(colour) in {found for _, found in self._counted()}

    def colours(self):
        """The number of different colours."""
        return len(self._counted())

    def _counted(self):
        return self.image.getcolors(self.width * self.height)

    def __eq__(self, other):
        return isinstance(other, Picture) and self.image.size == other.image.size and self.rgb == other.rgb

    def __repr__(self):
        return f"Picture({self.width}x{self.height})"
