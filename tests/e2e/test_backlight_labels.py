"""The card in each of its nine states on the screen. Saves pictures in build/pictures/ for inspection."""

import re

import pytest

from backlight import BUILD, POLL, SETTLED, UNTIL_ENDED, VERIFY, WM_TIMER, LabError, Monitor, Panel, wait_until
from backlight import backlight_fixture  # noqa: F401

SCALE = 2
AMBER, GREEN, GREY, WHITE, DIMMED = (255, 210, 0), (0, 214, 124), (110, 110, 110), (255, 255, 255), (102, 102, 102)
STATUS, SWITCH, TOP_EDGE, CARD = (36, 400, 226, 414), (234, 390, 286, 412), (60, 383, 260, 386), (20, 380, 300, 422)
SHOW_POPUP, WM_CLOSE = 0x8069, 0x10
# Brighter than the card's surface; excludes the anti-aliased edges of letters.
LIT = 0x48
# A gap of more columns than this is a space between words.
SPACE = 4
# Tolerance for the width of a word, in pixels.
EDGES = 4


@pytest.fixture(name="backlight_desk", scope="module")
def large_desk_fixture(make_file_desk):
    return make_file_desk(build_dir=BUILD, dpi=96 * SCALE, size=(1920, 1200))


class Card:
    """The card on a picture of the popup."""

    def __init__(self, backlight):
        self.backlight, self.picture = backlight, backlight.desk.popup_picture()

    def part(self, area):
        return self.picture.crop(*(edge * SCALE for edge in area))

    def colours(self, area):
        return set(self.part(area).pixels())

    def word_widths(self):
        """The width of each word of the status line, from its first to its last lit column."""
        part = self.part(STATUS)
        lit = [x for x in range(part.width) if any(max(part.pixel(x, y)) > LIT for y in range(part.height))]
        ends = [x for x, following in zip(lit, lit[1:] + [part.width + SPACE]) if following - x > SPACE]
        starts = [lit[0]] + [x for last, x in zip(lit, lit[1:]) if x - last > SPACE] if lit else []
        return [end - start + 1 for start, end in zip(starts, ends)]

    def shows(self, text, accent, on):
        wanted = [self.backlight.desk.measure_text("Segoe UI", 12 * SCALE, 700, word)["width"] for word in text.split()]
        seen = self.word_widths()
        return (len(seen) == len(wanted) and all(abs(one - other) <= EDGES for one, other in zip(seen, wanted))
                and accent in self.colours(TOP_EDGE)
                and (WHITE if on else DIMMED) in self.colours(SWITCH) and (on or WHITE not in self.colours(SWITCH)))


def check(backlight, pictures, text, accent, on):
    """Waits until the card shows the text, its accent colour and the switch, and saves a picture."""
    backlight.desk.show()
    backlight.desk.move(5, 5)
    try:
        wait_until(lambda: Card(backlight).shows(text, accent, on), text)
    except LabError:
        card = Card(backlight)
        card.picture.save(pictures / "card-unexpected.png")
        assert (card.word_widths(), card.colours(TOP_EDGE)) == (text, accent)
    name = re.sub("[^a-z0-9]+", "-", text.lower())
    Card(backlight).part(CARD).save(pictures / f"card-{name}.png")
    backlight.desk.popup_picture().save(pictures / f"popup-{name}.png")


def test_the_card_when_off_with_a_display_below_100(backlight, pictures):
    backlight.start([Monitor("left", 98)], [Panel("panel", 100)])
    check(backlight, pictures, "LOCK DISPLAY AT 100%", AMBER, on=False)


def test_the_card_when_off_with_only_a_panel_below_100(backlight, pictures):
    backlight.start(panels=[Panel("panel", 60)])
    check(backlight, pictures, "LOCK BUILT-IN PANEL AT 100%", AMBER, on=False)


def test_the_card_when_off_with_every_display_at_100(backlight, pictures):
    backlight.start([Monitor("left", 99)], [Panel("panel", 100)])
    check(backlight, pictures, "DISPLAY ALREADY AT 100%", GREY, on=False)


def test_the_card_during_the_verification(backlight, pictures):
    backlight.start([Monitor("left", 40)]).show()
    backlight.click_card()
    backlight.desk.wait_for_saves(1)
    # The verification waits for WMI, and the popup is painted during the wait.
    backlight.hardware.wmi(delay_query=UNTIL_ENDED)
    backlight.desk.post_message(WM_TIMER, VERIFY)
    wait_until(backlight.hardware.held_calls, "a call that waits")
    check(backlight, pictures, "VERIFYING 100% LOCK", AMBER, on=True)
    backlight.hardware.wmi()
    backlight.hardware.end_delays()


def test_the_card_of_a_lock(backlight, pictures):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("left", "panel")
    check(backlight, pictures, "DISPLAY LOCKED AT 100%", GREEN, on=True)


def test_the_card_of_a_lock_with_only_a_panel(backlight, pictures):
    backlight.start(panels=[Panel("panel", 60)])
    backlight.lock("panel")
    check(backlight, pictures, "BUILT-IN PANEL LOCKED AT 100%", GREEN, on=True)


def test_the_card_while_waiting_for_a_display(backlight, pictures):
    backlight.start(on=True)
    check(backlight, pictures, "WAITING FOR DISPLAY", AMBER, on=True)


def test_the_card_while_the_lock_is_reasserted(backlight, pictures):
    backlight.start([Monitor("left", 40, behaviour="ignores")], on=True)
    backlight.tick(SETTLED, VERIFY)
    check(backlight, pictures, "REASSERTING 100% LOCK", AMBER, on=True)


def test_the_card_of_a_display_that_does_not_hold_100(backlight, pictures):
    backlight.start([Monitor("left", 40, behaviour="ignores")], on=True)
    backlight.tick(*[POLL, VERIFY] * 10)
    check(backlight, pictures, "DISPLAY WON'T HOLD 100%", AMBER, on=True)


def test_opening_the_popup_detects_a_display_that_was_turned_down(backlight, pictures):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.desk.send_message(WM_CLOSE)
    backlight.hardware.set_by_user("left", 40)
    backlight.desk.call_window(SHOW_POPUP)
    check(backlight, pictures, "REASSERTING 100% LOCK", AMBER, on=True)
    backlight.tick(POLL, VERIFY)
    check(backlight, pictures, "DISPLAY LOCKED AT 100%", GREEN, on=True)


def test_the_card_appears_and_disappears_with_the_displays(backlight):
    backlight.start().show()
    assert not {AMBER, GREY} & Card(backlight).colours(TOP_EDGE)
    backlight.hardware.monitors([Monitor("left", 100)])
    backlight.tick(SETTLED)
    wait_until(lambda: GREY in Card(backlight).colours(TOP_EDGE), "the card")
    backlight.hardware.unplug("left")
    backlight.tick(SETTLED)
    wait_until(lambda: GREY not in Card(backlight).colours(TOP_EDGE), "the card to disappear")
