"""The popup at four scalings: its position and size, and the colours and edges of its design.

Saves pictures of every state in build/pictures/ for inspection.
"""

import itertools

import pytest

import model
from ambrel_lab.layout import STRIP_TEXT, TRACK_BOTTOM, TRAVEL
from ambrel_lab.popup import WINDOW_CLASS
from desk import PRESET_POSITIONS, Desk, wait_until
from failures import open_desk

SCALINGS = [96, 120, 144, 192]
BACKGROUND, HEADER, LOWER, BLACK = (13, 13, 13), (25, 25, 25), (26, 26, 26), (0, 0, 0)
GROOVE, UNLIT, UNLIT_BAR, DIVIDER = (0x1E,) * 3, (0x28,) * 3, (0x50,) * 3, (0x1C,) * 3
MAJOR_TICK, THUMB_EDGE = (0x64,) * 3, (0x3C,) * 3
RED, WHITE, AMBER, DIMMED = (255, 0, 0), (255, 255, 255), (255, 210, 0), (0x66,) * 3
# Left edges of the presets' buttons, all from y 429 to 465.
PRESET_LEFT = {"DAY": 30, "EVENING": 120, "NIGHT": 210}


def scaled(value, dpi):
    """Scales as Windows does: rounded to the nearest, halves up."""
    return (value * dpi * 2 + 96) // 192


class Panel:
    """A picture of the popup with coordinates in design units."""

    def __init__(self, picture, dpi):
        self.picture, self.scale = picture, dpi / 96

    def at(self, x, y):
        return self.picture.pixel(int(x * self.scale), int(y * self.scale))

    def near(self, x, y):
        """The colours around a position. Scaling may move one-unit lines by a pixel."""
        left, top = round(x * self.scale), round(y * self.scale)
        return {self.picture.pixel(left + a, top + b) for a in (-1, 0, 1) for b in (-1, 0, 1)}

    def colours(self, left, top, right, bottom):
        return self.picture.crop(*(round(edge * self.scale) for edge in (left, top, right, bottom))).pixels()


@pytest.fixture(name="panel_of", scope="module", params=SCALINGS)
def panel_of_fixture(request, pictures):
    """Draws a state of the popup at one scaling: panel_of(name, act, settings) returns (desk, Panel)."""
    dpi = request.param
    # Each scaling has its own desk, which closes before the next one opens.
    with open_desk(Desk, request, dpi=dpi, size=(1920, 1200)) as desk:
        def draw(name, act=lambda desk: None, **settings):
            desk.start_fresh(settings)
            desk.open_popup()
            act(desk)
            desk.move(5, 5)
            picture = settled(desk)
            picture.save(pictures / f"popup-{dpi}-{name}.png")
            desk.popup_picture(as_seen=True).save(pictures / f"popup-{dpi}-{name}-as-seen.png")
            return desk, Panel(picture, dpi)
        yield draw


def is_uncovered(desk):
    """Whether no window, such as the icon's tooltip, covers a part of the popup."""
    popup = desk.popup_rect()
    above = itertools.takewhile(lambda window: window.window_class != WINDOW_CLASS, desk.windows())
    return not any(window.left < popup.right and window.right > popup.left
                   and window.top < popup.bottom and window.bottom > popup.top for window in above)


def settled(desk):
    """A picture of the popup once it is drawn: two consecutive pictures are equal and contain the header.

    Windows paints when no other message waits, which may be long after the state has changed. The message that is sent
    here waits for the handler that is under way and paints what is out of date.
    """
    wait_until(lambda: is_uncovered(desk), "a popup that no tooltip covers", state=desk.windows)
    desk.paint()
    last = [None]

    def same():
        picture = desk.popup_picture()
        found = picture == last[0] and picture.pixel(3, 3) == HEADER
        last[0] = picture
        return found and picture
    return wait_until(same, "the drawn popup", pause=0.1)


def turn_on(desk):
    desk.press_power()
    desk.wait_for_tooltip(model.tooltip_on(model.DEFAULT_INTENSITY, 1.0))


def choose(name):
    def act(desk):
        desk.choose(name)
        desk.wait_for_tooltip(model.tooltip_on(*model.PRESETS[name][:2]))
    return act


def assert_frame(panel):
    """Asserts the parts that are the same in every state."""
    assert panel.at(3, 200) == panel.at(316, 70) == BACKGROUND
    assert panel.at(3, 3) == panel.at(316, 54) == HEADER
    assert panel.at(3, 380) == panel.at(316, 537) == LOWER
    assert BLACK in panel.near(5, 374)
    assert panel.at(160, 118) == panel.at(160, 200) == panel.at(160, 293) == DIVIDER
    assert panel.at(160, 112) == panel.at(160, 299) == BACKGROUND
    for middle in (80, 240):
        assert panel.at(middle - 5.5, 290) == panel.at(middle + 5, 290) == BLACK  # next to the groove
        for y in (304.5, 205.5):
            assert panel.at(middle - 40, y) == panel.at(middle + 40, y) == MAJOR_TICK
    title = panel.colours(22, 20, 180, 40)
    assert max(title) == DIMMED and min(title) == HEADER  # text of one colour on the header
    assert max(panel.colours(280, 17, 304, 41)) == DIMMED


def assert_slider(panel, middle, value, fill, bar):
    way = int(value * TRAVEL)
    if value < 0.85:
        assert panel.at(middle, TRACK_BOTTOM - way - 20) == GROOVE
    if value > 0.15:
        assert panel.at(middle, TRACK_BOTTOM - way + 20) == fill
        assert panel.at(middle, 303) == fill
    for x in (middle - 8, middle, middle + 8):
        assert panel.at(x, TRACK_BOTTOM + 0.5 - way) == bar
    assert THUMB_EDGE in panel.near(middle - 26, TRACK_BOTTOM - way)
    grey = panel.at(middle + 18, 291.5 - way + 2)
    assert grey[0] == grey[1] == grey[2] and 60 <= grey[0] <= 89  # bright upper part of the thumb
    dip = panel.at(middle + 18, 291.5 - way + 19)
    assert dip[0] == dip[1] == dip[2] and 46 <= dip[0] <= 48  # the dark dip at 70%


def assert_presets(panel, selected):
    for name, left in PRESET_LEFT.items():
        ring, outline = ((0x46,) * 3, (0x6E,) * 3) if name == selected else ((0x22,) * 3, (0x37,) * 3)
        assert ring in panel.near(left - 1, 447), name
        assert outline in panel.near(left, 447), name
        letters = panel.colours(left + 10, 435, left + 70, 459)
        assert (max(letters) == WHITE) == (name == selected), name


def assert_power(panel, lit):
    ring, outline = ((0x78, 0, 0), (0x50, 0, 0)) if lit else ((0x22,) * 3, (0x2D,) * 3)
    assert ring in panel.near(160, 478)
    assert outline in panel.near(160, 479)
    top, middle, bottom = panel.at(40, 482), panel.at(40, 503), panel.at(40, 523)
    if lit:
        assert 0xCC >= top[0] > middle[0] > bottom[0] >= 0x99
        assert top[1:] == middle[1:] == bottom[1:] == (0, 0)
    else:
        assert 0x26 >= top[0] > middle[0] > bottom[0] >= 0x1A
    assert max(panel.colours(130, 490, 220, 516)) == WHITE  # "KIVO"


def assert_value_boxes(panel):
    assert (0xA0, 0, 0) in panel.near(80, 330)
    assert (0x37,) * 3 in panel.near(240, 330)
    assert panel.at(42, 342) == panel.at(212, 342) == BLACK
    assert max(panel.colours(42, 333, 118, 351))[1:] == (0, 0)  # red letters
    assert max(panel.colours(212, 333, 268, 351)) == WHITE
    assert (255, 0, 0) in panel.colours(30, 65, 130, 87)  # "WARMTH"
    assert (255, 255, 255) in panel.colours(175, 65, 305, 87)  # "BRIGHTNESS"


def assert_hint(panel, shown):
    colours = panel.colours(*STRIP_TEXT)
    assert (AMBER in colours) == shown
    assert RED not in colours


def test_the_popup_has_its_size_ten_units_inside_the_work_area(panel_of):
    desk, _ = panel_of("off")
    rect, metrics = desk.popup_rect(), desk.metrics()
    assert metrics["dpi"] == desk.dpi
    assert rect.right - rect.left == scaled(320, desk.dpi)
    assert rect.bottom - rect.top == scaled(540, desk.dpi)
    margin = scaled(10, desk.dpi)
    assert rect.right == metrics["work_right"] - margin
    assert rect.top == max(metrics["work_bottom"] - margin - scaled(540, desk.dpi), metrics["work_top"] + margin)


def test_the_popup_with_the_filter_off(panel_of):
    _, panel = panel_of("off")
    assert_frame(panel)
    assert_slider(panel, 80, model.DEFAULT_INTENSITY, UNLIT, UNLIT_BAR)
    assert_slider(panel, 240, 1.0, UNLIT, UNLIT_BAR)
    assert_value_boxes(panel)
    assert_presets(panel, "DAY")
    assert_power(panel, False)
    assert_hint(panel, False)


def test_the_popup_with_the_filter_on(panel_of):
    _, panel = panel_of("on", turn_on)
    assert_frame(panel)
    assert_slider(panel, 80, model.DEFAULT_INTENSITY, RED, RED)
    assert_slider(panel, 240, 1.0, WHITE, WHITE)
    assert_value_boxes(panel)
    assert_power(panel, True)


@pytest.mark.parametrize("name", PRESET_POSITIONS)
def test_the_popup_with_each_preset(panel_of, name):
    _, panel = panel_of(name.lower(), choose(name))
    preset = model.PRESETS[name]
    assert_frame(panel)
    assert_slider(panel, 80, preset.intensity, RED, RED)
    assert_slider(panel, 240, preset.brightness, WHITE, WHITE)
    assert_presets(panel, name)
    assert_power(panel, True)
    assert_hint(panel, preset.brightness < 0.9)


def test_no_preset_is_selected_between_the_presets(panel_of):
    _, panel = panel_of("between", Intensity=480, Brightness=900)
    assert_presets(panel, None)
    assert_slider(panel, 80, 0.48, UNLIT, UNLIT_BAR)
    assert_hint(panel, False)


def test_the_hint_is_highlighted_below_90_percent(panel_of):
    _, panel = panel_of("dim", Brightness=899)
    assert_hint(panel, True)


def test_the_banner_of_a_refused_ramp(panel_of):
    _, panel = panel_of("banner", choose("NIGHT"), UseLegacyGamma=1)
    colours = panel.colours(*STRIP_TEXT)
    assert RED in colours and AMBER not in colours
    assert_frame(panel)


def test_the_sliders_at_both_ends(panel_of):
    _, panel = panel_of("ends", Intensity=0, Brightness=0, AllowExtremeDim=1)
    assert_slider(panel, 80, 0.0, UNLIT, UNLIT_BAR)
    assert_slider(panel, 240, 0.0, UNLIT, UNLIT_BAR)


def test_clicks_and_drags_hit_at_this_scaling(panel_of):
    desk, _ = panel_of("dragged", lambda desk: desk.slide("WARMTH", 60))
    desk.wait_for_saves(1)
    saved = int(desk.settings()["Intensity"]) / 1000.0
    # The pointer moves by whole pixels, the slider by whole units.
    assert saved == pytest.approx(model.dragged(model.DEFAULT_INTENSITY, 60), abs=1.01 / TRAVEL)
    desk.choose("EVENING")
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])


def test_the_whole_screen_is_displayed_in_the_filters_colour(panel_of, pictures):
    desk, _ = panel_of("evening", choose("EVENING"))
    displayed = desk.eye_picture(pictures / f"screen-{desk.dpi}-evening-as-seen.png")
    plain = desk.screenshot()
    factors = model.factors(*model.PRESETS["EVENING"][:2])
    for position in ((10, 10), (960, 20)):
        expected = [channel * factor for channel, factor in zip(plain.pixel(*position), factors)]
        assert displayed.pixel(*position) == pytest.approx(expected, abs=2)
