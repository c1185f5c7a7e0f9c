"""A thousand rounds through the settings panel leak nothing."""

import pytest

from desk import CLOSE, GEAR, SETTINGS_ROWS, wait_until, wait_until_settled

ROUNDS, BATCH = 1000, 5
SAVES = 2 * len(SETTINGS_ROWS)  # per round
WM_NULL, WM_LBUTTONDOWN, WM_CLOSE, WM_PAINT, SHOW_POPUP = 0, 0x201, 0x10, 0xF, 0x8000 + 105
RUN_KEY, RUN_VALUE = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run", "Ambrel2"
FLAGS = ("LaunchAtStart", "AllowExtremeDim", "UseLegacyGamma")


def click(x, y):
    return WM_LBUTTONDOWN, 1, x | y << 16


# Opens the popup as a second start does, opens settings, flips each row twice, closes, hides. Windows sends WM_PAINT
# only when no other message is pending, which is rare here, so the round posts it.
PAINT = (WM_PAINT, 0, 0)
ROUND = [(SHOW_POPUP, 0, 0), click(*GEAR), PAINT,
         *(message for row in SETTINGS_ROWS.values() for message in (click(*row), PAINT, click(*row))),
         click(*CLOSE), PAINT, (WM_CLOSE, 0, 0)]


class Rounds:
    def __init__(self, desk):
        self.desk, self.window = desk, f"{desk.window_facts()['handle']:#x}"
        self.saves = desk.saves()

    def go(self, rounds):
        """Posts rounds of messages and waits until the program has handled them."""
        for number in range(1, rounds + 1):
            for message in ROUND:
                self.desk.post_message(*message, target=self.window)
            if number % BATCH == 0 or number == rounds:
                self.saves += SAVES * (number % BATCH or BATCH)
                wait_until(lambda: self.desk.saves() >= self.saves, "the rounds to be handled")
        self.desk.wait_for_popup(False)
        self.desk.send_message(WM_NULL)  # Hiding goes on after the window has become invisible.
        assert self.desk.saves() == self.saves


@pytest.fixture(name="options")
def options_fixture(desk):
    yield desk
    desk.registry_delete(RUN_KEY, RUN_VALUE)


def objects_of(desk):
    """(GDI objects, handles) of the program at rest. An open registry key is a handle."""
    return wait_until_settled(lambda: (desk.gdi_objects(), desk.open_handles()), "the program's objects", pause=0.2)


def test_a_thousand_rounds_leak_no_gdi_object_and_no_handle(options):
    rounds = Rounds(options)
    rounds.go(1)
    before = objects_of(options)
    assert min(before) > 0
    rounds.go(ROUNDS)
    assert objects_of(options) == before
    assert [options.settings()[flag] for flag in FLAGS] == ["0", "0", "0"]
    assert options.registry_get(RUN_KEY, RUN_VALUE) is None
    assert options.screen_is_plain()
    options.press_power()
    options.wait_for_colour(0.385, 1.0)


def test_rounds_with_the_filter_on_leak_only_the_cursors_that_windows_takes_ownership_of(make_desk):
    # Wine records SetSystemCursor calls but does not take ownership: the cursor and its three bitmaps remain.
    desk = make_desk(debug="-all,fixme+cursor").start_fresh()
    desk.press_power()
    desk.wait_for_colour(0.385, 1.0)
    desk.wait_for_saves(1)

    def replaced():
        return desk.wine_log().count("SetSystemCursor")

    rounds = Rounds(desk)
    rounds.go(1)
    before = replaced()
    objects, handles = objects_of(desk)
    rounds.go(50)
    # Entering and leaving Legacy Mode tints fifteen cursors twice.
    assert replaced() - before == 50 * 2 * 15
    assert objects_of(desk) == (objects + 3 * (replaced() - before), handles)
    desk.wait_for_colour(0.385, 1.0)
