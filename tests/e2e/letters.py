"""Looking at the popup at 96 DPI: a picture of it at rest, and texts, which are told apart by how wide they are."""

from desk import wait_until_settled

# Face, height and weight of the popup's fonts.
SMALL = ("Segoe UI", 12, 700)
LABEL = ("Segoe UI", 13, 900)
TITLE = ("Segoe UI", 14, 900)
# Letters begin and end a little inside or outside the width that GDI tells.
SLACK = 1
# The tip of the tray icon may lie over what is below.
ABOVE_THE_TIP = 520


def picture_of(desk):
    """The popup once it is drawn: two pictures in a row are the same."""
    return wait_until_settled(lambda: desk.popup_picture().crop(0, 0, 320, ABOVE_THE_TIP), "the popup's picture")


def span(picture, box, ground):
    """(left, right) of what is not of the ground's colour in a box (left, top, right, bottom); None when all is."""
    part = picture.crop(*box)
    inked = [x for x in range(part.width) if any(part.pixel(x, y) != ground for y in range(part.height))]
    return (box[0] + inked[0], box[0] + inked[-1] + 1) if inked else None


def stands(desk, found, text, font, left=None, right=None):
    """Whether a span is this text, beginning or ending there; without a place only its width counts."""
    if found is None:
        return False
    width = desk.measure_text(*font, text)["width"]
    if left is None:
        left = right - width if right is not None else (found[0] + found[1] - width) / 2
    return abs(found[0] - left) <= SLACK and abs(found[1] - (left + width)) <= SLACK


def closest(desk, found, texts, font):
    """Which of these texts a span is, by its width; smoothing adds a pixel."""
    return min(texts, key=lambda text: abs(found[1] - found[0] - 1 - desk.measure_text(*font, text)["width"]))
