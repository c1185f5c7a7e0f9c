"""Expected colours: an implementation of the published formulas that is independent of the program's code."""

import math
import struct
from collections import namedtuple

from ambrel_lab.layout import TRAVEL

Preset = namedtuple("Preset", "intensity brightness kelvin")
PRESETS = {
    "DAY": Preset(1.0 - 4000.0 / 6500.0, 1.0, 4000),
    "EVENING": Preset(1.0 - 2700.0 / 6500.0, 0.85, 2700),
    "NIGHT": Preset(1.0, 0.7, 0),
}
DEFAULT_INTENSITY, DEFAULT_BRIGHTNESS = 0.385, 1.0
STEPS = 256


def clamp(value, low, high):
    return max(low, min(high, value))


def kelvin(intensity):
    return (1.0 - clamp(intensity, 0.0, 1.0)) * 6500.0


def whole_kelvin(intensity):
    return math.floor(kelvin(intensity) + 0.5)


def black_body(temperature):
    """Linear red, green, blue on the Planckian locus (cubic fits in CIE 1931 xy), each 0 to 4."""
    t = clamp(temperature, 2000.0, 25000.0)
    if t <= 4000.0:
        x = -266123900.0 / t**3 - 234358.0 / t**2 + 877.6956 / t + 0.17991
    else:
        x = 2107037.9 / t**2 - 3025846900.0 / t**3 + 222.6347 / t + 0.24039
    if t <= 2222.0:
        y = -1.1063814 * x**3 - 1.3481102 * x**2 + 2.18555832 * x - 0.20219683
    elif t <= 4000.0:
        y = -0.9549476 * x**3 - 1.37418593 * x**2 + 2.09137015 * x - 0.16748867
    else:
        y = 3.081758 * x**3 - 5.8733867 * x**2 + 3.75112997 * x - 0.37001483
    big_x, big_z = x / y, (1.0 - x - y) / y
    colour = (3.2406 * big_x - 1.5372 - 0.4986 * big_z,
              1.8758 - 0.9689 * big_x + 0.0415 * big_z,
              0.0557 * big_x - 0.204 + 1.057 * big_z)
    return tuple(clamp(channel, 0.0, 4.0) for channel in colour)


def relative_to_daylight(temperature):
    return tuple(clamp(c / w, 0.0, 1.0) for c, w in zip(black_body(temperature), black_body(6500.0)))


def filter_colour(intensity):
    """(red, green, blue) of filtered white at full brightness."""
    k = kelvin(intensity)
    if k > 2000.0:
        return relative_to_daylight(k)
    t = clamp(1.0 - k / 2000.0, 0.0, 1.0)
    share = (3.0 - 2.0 * t) * t * t
    return tuple((pure - warm) * share + warm for pure, warm in zip((1.0, 0.0, 0.0), relative_to_daylight(2000.0)))


def factors(intensity, brightness):
    """The factor of each channel."""
    return tuple(clamp(channel * brightness, 0.0, 1.0) for channel in filter_colour(intensity))


IDENTITY = (1.0, 1.0, 1.0)


def ramp(channel_factors):
    """The gamma ramp for these factors: straight lines through zero."""
    return [[int(step / 255.0 * factor * 65535.0) for step in range(STEPS)] for factor in channel_factors]


def single(value):
    """A number rounded to single precision."""
    return struct.unpack("<f", struct.pack("<f", value))[0]


def matrix(channel_factors):
    """The 25 cells of the colour matrix, row by row."""
    diagonal = [*(single(factor) for factor in channel_factors), 1.0, 1.0]
    return [diagonal[row] if row == column else 0.0 for row in range(5) for column in range(5)]


def per_mille(value):
    """A value as settings.ini stores it."""
    return int(value * 1000.0)


def percent(value):
    """A brightness as the tooltip and the panel show it."""
    return int(value * 100.0)


def tooltip_on(intensity, brightness):
    return f"Ambrel - ON ({whole_kelvin(intensity)}K, {percent(brightness)}%)"


TOOLTIP_OFF = "Ambrel - OFF"


def dragged(start, up, floor=0.0):
    """A slider's value after a drag by `up` design units."""
    return clamp(up / TRAVEL + start, floor, 1.0)
