"""A thousand rounds through the settings panel leave nothing behind."""

import pytest

from desk import CLOSE, GEAR, SETTINGS_ROWS, wait_until

ROUNDS, BATCH = 1000, 25
SAVES = 2 * len(SETTINGS_ROWS)  # of a round
WM_LBUTTONDOWN, WM_CLOSE, WM_PAINT, SHOW_POPUP = 0x201, 0x10, 0xF, 0x8000 + 105
RUN_KEY, RUN_VALUE = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run", "Ambrel2"
FLAGS = ("LaunchAtStart", "AllowExtremeDim", "UseLegacyGamma")


def click(x, y):
    return WM_LBUTTONDOWN, 1, x | y << 16


# Opens the popup as a second start does, opens settings, flips each row twice, closes, hides. Windows draws when no
# other message waits, which would be hardly ever: so each panel is drawn by a message in its turn.
PAINT = (WM_PAINT, 0, 0)
ROUND = [(SHOW_POPUP, 0, 0), click(*GEAR), PAINT,
         *(message for row in SETTINGS_ROWS.values() for message in (click(*row), PAINT, click(*row))),
         click(*CLOSE), PAINT, (WM_CLOSE, 0, 0)]


class Rounds:
    def __init__(self, desk):
        self.desk, self.window = desk, f"{desk.window_facts()['handle']:#x}"
        self.saves = desk.saves()

    def go(self, rounds):
        """Lets the program work off so many rounds."""
        for number in range(1, rounds + 1):
            for message in ROUND:
                self.desk.post_message(*message, target=self.window)
            if number % BATCH == 0 or number == rounds:
                self.saves += SAVES * (number % BATCH or BATCH)
                wait_until(lambda: self.desk.saves() >= self.saves, "the rounds to be worked off")
        self.desk.wait_for_popup(False)
        assert self.desk.saves() == self.saves


@pytest.fixture(name="options")
def options_fixture(desk):
    yield desk
    desk.registry_delete(RUN_KEY, RUN_VALUE)


def held_by(desk):
    """GDI objects and handles; a registry key that is open is a handle."""
    return desk.gdi_objects(), desk.open_handles()


def test_a_thousand_rounds_leave_no_gdi_object_and_no_handle_behind(options):
    rounds = Rounds(options)
    rounds.go(1)
    held = held_by(options)
    assert min(held) > 0
    rounds.go(ROUNDS)
    assert held_by(options) == held
    assert [options.settings()[flag] for flag in FLAGS] == ["0", "0", "0"]
    assert options.registry_get(RUN_KEY, RUN_VALUE) is None
    assert options.screen_is_plain()
    options.press_power()
    options.wait_for_colour(0.385, 1.0)


def test_rounds_with_the_filter_on_leave_nothing_but_the_cursors_that_windows_takes_over(make_desk):
    # Wine records that it is handed a cursor, and leaves it and its three bitmaps with the program.
    desk = make_desk(debug="-all,fixme+cursor").start_fresh()
    desk.press_power()
    desk.wait_for_colour(0.385, 1.0)
    desk.wait_for_saves(1)

    def replaced():
        return desk.wine_log().count("SetSystemCursor")

    rounds = Rounds(desk)
    rounds.go(1)
    before = replaced()
    objects, handles = held_by(desk)
    rounds.go(50)
    # Into Legacy Mode and back are two new tints of fifteen cursors.
    assert replaced() - before == 50 * 2 * 15
    assert held_by(desk) == (objects + 3 * (replaced() - before), handles)
    desk.wait_for_colour(0.385, 1.0)
