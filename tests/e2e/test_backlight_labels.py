"""The card in each of its nine states on the screen. Leaves pictures in build/pictures/ to be looked at."""

import re

import pytest

from backlight import BUILD, POLL, SETTLED, VERIFY, LabError, Monitor, Panel, wait_until
from backlight import bench_fixture  # noqa: F401

SCALE = 2
AMBER, GREEN, GREY, WHITE, DIMMED = (255, 210, 0), (0, 214, 124), (110, 110, 110), (255, 255, 255), (102, 102, 102)
STATUS, SWITCH, TOP_EDGE, CARD = (36, 400, 226, 414), (234, 390, 286, 412), (60, 383, 260, 386), (20, 380, 300, 422)
SHOW_POPUP, WM_CLOSE = 0x8069, 0x10
# Brighter than the surface of the card, with the smoothing at a letter's edge left out.
LIT = 0x48
# More unlit columns than this are a space and not the gap between two letters.
SPACE = 4
# What the edges of a word's letters may add to its width or take from it.
EDGES = 4


@pytest.fixture(name="backlight_desk", scope="module")
def large_desk_fixture(make_file_desk):
    return make_file_desk(build_dir=BUILD, dpi=96 * SCALE, size=(1920, 1200))


class Card:
    """The card on a picture of the popup."""

    def __init__(self, bench):
        self.bench, self.picture = bench, bench.desk.popup_picture()

    def part(self, area):
        return self.picture.crop(*(edge * SCALE for edge in area))

    def colours(self, area):
        part = self.part(area)
        return {part.pixel(x, y) for x in range(part.width) for y in range(part.height)}

    def word_widths(self):
        """How wide each word of the status line is, from its first to its last lit column."""
        part = self.part(STATUS)
        lit = [x for x in range(part.width) if any(max(part.pixel(x, y)) > LIT for y in range(part.height))]
        ends = [x for x, following in zip(lit, lit[1:] + [part.width + SPACE]) if following - x > SPACE]
        starts = [lit[0]] + [x for last, x in zip(lit, lit[1:]) if x - last > SPACE] if lit else []
        return [end - start + 1 for start, end in zip(starts, ends)]

    def shows(self, text, accent, on):
        wanted = [self.bench.desk.measure_text("Segoe UI", 12 * SCALE, 700, word)["width"] for word in text.split()]
        seen = self.word_widths()
        return (len(seen) == len(wanted) and all(abs(one - other) <= EDGES for one, other in zip(seen, wanted))
                and accent in self.colours(TOP_EDGE)
                and (WHITE if on else DIMMED) in self.colours(SWITCH) and (on or WHITE not in self.colours(SWITCH)))


def check(bench, pictures, text, accent, on):
    """Waits for the card to show this, and keeps its picture."""
    bench.desk.show()
    bench.desk.move(5, 5)
    try:
        wait_until(lambda: Card(bench).shows(text, accent, on), text)
    except LabError:
        card = Card(bench)
        card.picture.save(pictures / "card-unexpected.png")
        assert (card.word_widths(), card.colours(TOP_EDGE)) == (text, accent)
    name = re.sub("[^a-z0-9]+", "-", text.lower())
    Card(bench).part(CARD).save(pictures / f"card-{name}.png")
    bench.desk.popup_picture().save(pictures / f"popup-{name}.png")


def test_the_card_when_off_with_a_display_below_100(bench, pictures):
    bench.begin([Monitor("left", 98)], [Panel("panel", 100)])
    check(bench, pictures, "LOCK DISPLAY AT 100%", AMBER, on=False)


def test_the_card_when_off_with_only_a_panel_below_100(bench, pictures):
    bench.begin(panels=[Panel("panel", 60)])
    check(bench, pictures, "LOCK BUILT-IN PANEL AT 100%", AMBER, on=False)


def test_the_card_when_off_with_every_display_at_100(bench, pictures):
    bench.begin([Monitor("left", 99)], [Panel("panel", 100)])
    check(bench, pictures, "DISPLAY ALREADY AT 100%", GREY, on=False)


def test_the_card_during_the_verification(bench, pictures):
    bench.begin([Monitor("left", 40)]).show()
    bench.click_card()
    bench.wait_for_value("left", 100)
    # The verification has to wait for WMI, and what was to be painted is painted meanwhile.
    bench.hardware.wmi(delay_query=3000)
    check(bench, pictures, "VERIFYING 100% LOCK", AMBER, on=True)
    bench.hardware.wmi()


def test_the_card_of_a_lock(bench, pictures):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("left", "panel")
    check(bench, pictures, "DISPLAY LOCKED AT 100%", GREEN, on=True)


def test_the_card_of_a_lock_with_only_a_panel(bench, pictures):
    bench.begin(panels=[Panel("panel", 60)])
    bench.lock("panel")
    check(bench, pictures, "BUILT-IN PANEL LOCKED AT 100%", GREEN, on=True)


def test_the_card_while_waiting_for_a_display(bench, pictures):
    bench.begin(on=True)
    check(bench, pictures, "WAITING FOR DISPLAY", AMBER, on=True)


def test_the_card_while_the_lock_is_reasserted(bench, pictures):
    bench.begin([Monitor("left", 40, behaviour="ignores")], on=True)
    bench.tick(SETTLED, VERIFY)  # Locked anew: the next poll is two seconds away.
    check(bench, pictures, "REASSERTING 100% LOCK", AMBER, on=True)


def test_the_card_of_a_display_that_does_not_hold_100(bench, pictures):
    bench.begin([Monitor("left", 40, behaviour="ignores")], on=True)
    bench.tick(*[POLL, VERIFY] * 10)
    check(bench, pictures, "DISPLAY WON'T HOLD 100%", AMBER, on=True)


def test_opening_the_popup_detects_a_display_that_was_turned_down(bench, pictures):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.tick(SETTLED, VERIFY)  # Locked anew: the next poll is two seconds away.
    bench.desk.send_message(WM_CLOSE)
    bench.hardware.turn("left", 40)
    bench.desk.call_window(SHOW_POPUP)
    check(bench, pictures, "REASSERTING 100% LOCK", AMBER, on=True)
    check(bench, pictures, "DISPLAY LOCKED AT 100%", GREEN, on=True)


def test_the_card_appears_and_disappears_with_the_displays(bench):
    bench.begin().show()
    assert not {AMBER, GREY} & Card(bench).colours(TOP_EDGE)
    bench.hardware.monitors([Monitor("left", 100)])
    bench.tick(SETTLED)
    wait_until(lambda: GREY in Card(bench).colours(TOP_EDGE), "the card")
    bench.hardware.unplug("left")
    bench.tick(SETTLED)
    wait_until(lambda: GREY not in Card(bench).colours(TOP_EDGE), "the end of the card")
