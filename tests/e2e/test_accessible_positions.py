"""Where an accessibility client finds the controls: their rectangles and the hit test."""

import pytest

from accessible import press, read_panel
from accessible import popup_fixture  # noqa: F401
from ambrel_lab.accessibility import NONE, OK
from ambrel_lab.hardware import Monitor
from ambrel_lab.layout import SLIDER_X, TRACK_BOTTOM, TRACK_TOP
from backlight import BUILD
from desk import wait_until
from panels import drawn_picture

SCALINGS = [96, 120, 144, 192]


def drawn_bounds(picture, rect, margin):
    """Where what is drawn about `rect` begins: the first pixels that differ from the surface around it, found inwards
    from `margin` outside the middle of each edge."""
    left, top, right, bottom = rect
    middle_x, middle_y = (left + right) // 2, (top + bottom) // 2

    def first(x, y, step_x, step_y):
        surface = picture.pixel(x, y)
        for _ in range(4 * margin):
            if picture.pixel(x, y) != surface:
                break
            x, y = x + step_x, y + step_y
        return x, y
    return (first(left - margin, middle_y, 1, 0)[0], first(middle_x, top - margin, 0, 1)[1],
            first(right + margin, middle_y, -1, 0)[0] + 1, first(middle_x, bottom + margin, 0, -1)[1] + 1)


def ink_bounds(picture, area):
    """Where the text or glyph in `area` is: the pixels that differ from the header, whose colour depends on the row."""
    left, top, right, bottom = area
    ink = [(x, y) for y in range(top, bottom) for x in range(left, right) if picture.pixel(x, y) != picture.pixel(left, y)]
    assert ink, f"nothing is drawn in {area}"
    columns, rows = zip(*ink)
    return min(columns), min(rows), max(columns) + 1, max(rows) + 1


def assert_centred_ink(picture, rect, unit):
    """The gear and CLOSE have no outline: each is drawn in the middle of its rectangle. A glyph's ink is not exactly in
    the middle of its cell, hence the tolerance of three units."""
    margin = round(4 * unit)
    ink = ink_bounds(picture, [edge + side * margin for edge, side in zip(rect, (-1, -1, 1, 1))])
    assert rect[0] <= ink[0] and rect[1] <= ink[1] and ink[2] <= rect[2] and ink[3] <= rect[3], (rect, ink)
    for low, high in ((0, 2), (1, 3)):
        assert abs(ink[low] + ink[high] - rect[low] - rect[high]) / 2 <= 3 * unit, (rect, ink)


@pytest.mark.parametrize("dpi", SCALINGS)
def test_the_rectangles_are_where_the_controls_are_drawn(make_desk, dpi):
    desk = make_desk(build_dir=BUILD, dpi=dpi, size=(1920, 1200))
    desk.hardware.monitors([Monitor("desk", 100)])
    desk.start()
    desk.open_popup()

    def on_popup(control):
        corner = desk.popup_rect()
        return tuple(edge - base for edge, base in zip(control.rect, (corner.left, corner.top) * 2))

    unit = dpi / 96
    margin = round(4 * unit)
    lower, background = (0x1A,) * 3, (0x0D,) * 3
    picture = drawn_picture(desk, lambda picture: picture.pixel(3, picture.height - 3) == lower)
    for name in ("DAY", "EVENING", "NIGHT", "KIVO"):
        rect = on_popup(desk.accessible_control(name))
        # A ring of one unit surrounds these buttons, drawn with a pen that is up to two pixels wide.
        ring = [edge + side * unit for edge, side in zip(rect, (-1, -1, 1, 1))]
        assert near(drawn_bounds(picture, rect, margin), ring, 2), (name, rect, drawn_bounds(picture, rect, margin))
    card = on_popup(desk.accessible_control("PWM-SAFE MODE"))
    assert near(drawn_bounds(picture, card, margin), card, 1), (card, drawn_bounds(picture, card, margin))
    assert_centred_ink(picture, on_popup(desk.accessible_control("SETTINGS")), unit)
    for name, x in SLIDER_X.items():
        # The track, which is 52 units wide, as the slider can be pressed.
        track = tuple(round_half_up(edge * unit) for edge in (x - 26, TRACK_TOP, x + 26, TRACK_BOTTOM))
        assert on_popup(desk.accessible_control(name)) == track

    press(desk, "SETTINGS")
    wait_until(lambda: read_panel(desk)[0] == ("text", "SETTINGS"), "the settings panel",
               state=lambda: read_panel(desk))
    picture = drawn_picture(desk, lambda picture: picture.pixel(3, picture.height - 3) == background)
    for name in ("LAUNCH AT STARTUP", "ALLOW EXTREME DIM", "LEGACY MODE", "COPY FEEDBACK FOR SUPPORT"):
        rect = on_popup(desk.accessible_control(name))
        assert near(drawn_bounds(picture, rect, margin), rect, 1), (name, rect, drawn_bounds(picture, rect, margin))
    assert_centred_ink(picture, on_popup(desk.accessible_control("CLOSE")), unit)


def near(drawn, rect, pixels):
    """Whether two rectangles differ by so many pixels at most: GDI and the program round edges separately."""
    return all(abs(one - other) <= pixels for one, other in zip(drawn, rect))


def round_half_up(value):
    return int(value + 0.5)


def test_the_hit_test_finds_each_control_and_nothing_outside(popup):
    for control in popup.accessible_controls():
        x, y = (control.rect.left + control.rect.right) // 2, (control.rect.top + control.rect.bottom) // 2
        assert popup.accessible_at(x, y) == (OK, control.id), control
    client = popup.accessible_popup().rect
    assert popup.accessible_at(client.left + 2, client.top + 300) == (OK, 0)
    assert popup.accessible_at(client.left - 1, client.top) == (NONE, -1)
    assert popup.accessible_at(-2**31, 2**31 - 1) == (NONE, -1)
