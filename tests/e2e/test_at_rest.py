"""What the program costs: nothing while it is hidden, and no handle that is not given back."""

import time

import pytest

import model
from desk import wait_until

WATCHED = 1.5
CLOCK_TICK = 0.01
WM_CLOSE = 0x10
# Wine records that a system cursor was handed over, and does not take it over as Windows does: its three bitmaps stay.
CURSOR_RECORD = "-all,fixme+cursor"
BITMAPS_OF_A_CURSOR = 3


@pytest.fixture(name="file_desk", scope="module")
def file_desk_fixture(make_file_desk):
    desk = make_file_desk(debug=CURSOR_RECORD)
    desk.desktop.open()
    return desk


@pytest.fixture(name="desk")
def desk_fixture(file_desk):
    return file_desk.start_fresh()


class Held:
    """The GDI objects that the program holds itself, in changes since this was made."""

    def __init__(self, desk):
        self.desk = desk
        self.at_first = self.now()

    def now(self):
        handed_over = self.desk.wine_log().count("SetSystemCursor")
        return self.desk.gdi_objects() - BITMAPS_OF_A_CURSOR * handed_over

    def more(self):
        return self.now() - self.at_first

    def assert_no_more(self):
        """A paint holds objects while it lasts, so this looks until none is under way; a leak does not go away."""
        wait_until(lambda: self.more() == 0, "no more GDI objects than before", actual=self.more)


def hide(desk):
    if desk.popup_visible():
        desk.post_message(WM_CLOSE)
        desk.wait_for_popup(False)


def timer_messages(desk, since):
    """The timers that Wine's record of messages shows for the program's window."""
    window = f"{desk.window_facts()['handle']:#x}"
    lines = desk.wine_log()[since:].splitlines()
    return [line for line in lines if window in line and "WM_TIMER" in line and "dispatched" in line]


@pytest.fixture(name="overheard", scope="module")
def overheard_fixture(make_file_desk):
    """A screen on which every message of every window is recorded."""
    return make_file_desk(debug="-all,+message").start_fresh()


def test_while_the_popup_is_open_one_timer_runs(overheard):
    overheard.open_popup()
    since = len(overheard.wine_log())
    wait_until(lambda: len(timer_messages(overheard, since)) >= 3, "the timer of the open popup")
    assert all("wp=00000006" in line for line in timer_messages(overheard, since))
    hide(overheard)


@pytest.mark.parametrize("lit", [False, True])
def test_while_the_popup_is_hidden_no_timer_runs_and_no_message_comes(overheard, lit):
    if lit:
        saves = overheard.saves()
        overheard.press_power()
        overheard.wait_for_saves(saves + 1)
    hide(overheard)
    time.sleep(0.3)  # For what the hiding itself brings.
    since = len(overheard.wine_log())
    time.sleep(WATCHED)
    window = f"{overheard.window_facts()['handle']:#x}"
    silence = overheard.wine_log()[since:]
    assert not [line for line in silence.splitlines() if window in line and "dispatched" in line]


def test_the_timer_of_the_drag_ends_with_the_save(overheard):
    overheard.slide("WARMTH", 10)
    saves = overheard.saves()
    wait_until(lambda: overheard.saves() > saves, "the save")
    hide(overheard)
    since = len(overheard.wine_log())
    time.sleep(1.0)  # Twice the period of the timer that must not come again.
    assert timer_messages(overheard, since) == []


@pytest.mark.parametrize("settings", [None, {}, {"UseLegacyGamma": 1}])
def test_hidden_the_program_uses_no_processor_time(file_desk, settings):
    desk = file_desk.start_fresh(settings)
    desk.open_popup()
    if settings is not None:
        desk.press_power()
        desk.wait_for_saves(1)
    hide(desk)
    time.sleep(0.3)  # For what the hiding itself costs.
    before = desk.processor_seconds()
    time.sleep(WATCHED)
    assert desk.processor_seconds() - before <= CLOCK_TICK


def drag_up_and_down(desk, times):
    for _ in range(times):
        desk.slide("WARMTH", 50, steps=25)
        desk.slide("WARMTH", -50, steps=25)


@pytest.mark.parametrize("settings", [{}, {"UseLegacyGamma": 1}])
def test_two_hundred_steps_of_a_drag_leave_no_gdi_object_behind(file_desk, settings):
    desk = file_desk.start_fresh(settings)
    desk.press_power()
    drag_up_and_down(desk, 1)
    desk.wait_for_tip(model.tip_on(0.385, 1.0))
    held = Held(desk)
    assert desk.gdi_objects() > 0
    drag_up_and_down(desk, 4)
    desk.wait_for_tip(model.tip_on(0.385, 1.0))
    held.assert_no_more()


def test_forty_clicks_leave_no_gdi_object_behind(desk):
    desk.choose("NIGHT")
    desk.choose("DAY")
    desk.press_power()
    desk.wait_for_tip(model.TIP_OFF)
    held = Held(desk)
    x, y = desk.unit_to_screen(160, 503)
    desk.input.click_repeatedly(x, y, 40, 0.015)
    wait_until(lambda: len(desk.effects()) == 43, "forty clicks")
    desk.wait_for_tip(model.TIP_OFF)
    held.assert_no_more()


def test_opening_and_hiding_the_popup_and_its_menu_leaves_no_gdi_object_behind(desk):
    def open_and_hide():
        desk.open_popup()
        desk.open_menu()
        desk.close_menu()
        hide(desk)
    open_and_hide()
    held = Held(desk)
    for _ in range(5):
        open_and_hide()
    held.assert_no_more()


def test_a_drag_hands_over_one_matrix_a_step_and_calls_nothing_else(desk):
    desk.press_power()
    desk.wait_for_colour(model.DEFAULT_INTENSITY, 1.0)
    before = len(desk.magnification_calls())
    desk.slide("WARMTH", 40, steps=20)
    desk.wait_for_tip(model.tip_on(model.dragged(0.385, 40), 1.0))
    calls = desk.magnification_calls()[before:]
    assert {call.function for call in calls} == {"MagSetFullscreenColorEffect"}
    # Moves that come faster than they are worked off may be joined; none is worked off twice.
    assert 1 <= len(calls) <= 21
