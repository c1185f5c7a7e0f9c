"""Reads the popup at 96 DPI: a picture of it when it is drawn, and texts, which are identified by their width."""

from desk import wait_until_settled

# Face, height and weight of the popup's fonts.
SMALL = ("Segoe UI", 12, 700)
LABEL = ("Segoe UI", 13, 900)
TITLE = ("Segoe UI", 14, 900)
# Drawn letters may start or end a pixel inside or outside the width that GDI returns.
TOLERANCE = 1
# The tooltip of the tray icon may cover the popup below this line.
ABOVE_THE_TOOLTIP = 520


def picture_of(desk):
    """A picture of the popup once it is drawn: two consecutive pictures are equal."""
    def picture():
        desk.paint()
        return desk.popup_picture().crop(0, 0, 320, ABOVE_THE_TOOLTIP)
    return wait_until_settled(picture, "the popup's picture")


def span(picture, box, ground):
    """(left, right) of the pixels in a box (left, top, right, bottom) that differ from `ground`; None if none do."""
    part = picture.crop(*box)
    columns = [x for x in range(part.width) if any(part.pixel(x, y) != ground for y in range(part.height))]
    return (box[0] + columns[0], box[0] + columns[-1] + 1) if columns else None


def matches_text(desk, found, text, font, left=None, right=None):
    """Whether a span has the width of this text and, if given, its left or right edge."""
    if found is None:
        return False
    width = desk.measure_text(*font, text)["width"]
    if left is None:
        left = right - width if right is not None else (found[0] + found[1] - width) / 2
    return abs(found[0] - left) <= TOLERANCE and abs(found[1] - (left + width)) <= TOLERANCE


def closest(desk, found, texts, font):
    """The text whose width is closest to that of a span. Smoothing adds a pixel."""
    return min(texts, key=lambda text: abs(found[1] - found[0] - 1 - desk.measure_text(*font, text)["width"]))
