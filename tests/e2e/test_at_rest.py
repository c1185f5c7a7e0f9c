"""Resources: the hidden program uses no processor time and no timers, and nothing leaks GDI objects."""

import time

import pytest

import model
from desk import POWER, wait_until, wait_until_settled

WATCHED = 1.5
CLOCK_TICK = 0.01
WM_CLOSE = 0x10
# Wine records SetSystemCursor calls but does not take ownership of the cursor as Windows does: three bitmaps remain.
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


class ObjectCount:
    """The change of the number of the program's own GDI objects since this was created.

    It must be created after the program has processed its input. A paint still in progress has temporary objects.
    """

    def __init__(self, desk):
        self.desk = desk
        self.at_first = wait_until_settled(self.now, "the number of GDI objects", pause=0.2)

    def now(self):
        replaced = self.desk.wine_log().count("SetSystemCursor")
        return self.desk.gdi_objects() - BITMAPS_OF_A_CURSOR * replaced

    def more(self):
        return self.now() - self.at_first

    def assert_unchanged(self):
        """Waits, because a paint in progress has temporary objects. A leak does not disappear."""
        wait_until(lambda: self.more() == 0, "no more GDI objects than before", state=self.more)


def hide(desk):
    if desk.popup_visible():
        desk.post_message(WM_CLOSE)
        desk.wait_for_popup(False)
        desk.synchronise()


def timer_messages(desk, since):
    """The WM_TIMER messages of the program's window in Wine's log since a byte of the log."""
    window = f"{desk.window_facts()['handle']:#x}"
    lines = desk.wine_log(since).splitlines()
    return [line for line in lines if window in line and "WM_TIMER" in line and "dispatched" in line]


@pytest.fixture(name="recorded", scope="module")
def recorded_fixture(make_file_desk):
    """A desk on which Wine logs every message of every window."""
    return make_file_desk(debug="-all,+message").start_fresh()


def test_an_open_popup_runs_one_timer(recorded):
    recorded.open_popup()
    since = recorded.wine_log_size()
    wait_until(lambda: len(timer_messages(recorded, since)) >= 3, "the timer of the open popup")
    assert all("wp=00000006" in line for line in timer_messages(recorded, since))
    hide(recorded)


@pytest.mark.parametrize("lit", [False, True])
def test_a_hidden_popup_runs_no_timer_and_receives_no_message(recorded, lit):
    if lit:
        saves = recorded.saves()
        recorded.press_power()
        recorded.wait_for_saves(saves + 1)
    hide(recorded)
    window = f"{recorded.window_facts()['handle']:#x}"

    def messages():
        return [line for line in recorded.wine_log(since).splitlines() if window in line and "dispatched" in line]
    since = recorded.wine_log_size()
    wait_until_settled(lambda: (True, len(messages())), "the messages that hiding causes", pause=0.3)
    since = recorded.wine_log_size()
    time.sleep(WATCHED)
    assert not messages()


def test_the_save_timer_of_a_drag_fires_once(recorded):
    recorded.slide("WARMTH", 10)
    saves = recorded.saves()
    wait_until(lambda: recorded.saves() > saves, "the save")
    hide(recorded)
    since = recorded.wine_log_size()
    time.sleep(1.0)  # Twice the period of the timer, which must not fire again.
    assert timer_messages(recorded, since) == []


@pytest.mark.parametrize("settings", [None, {}, {"UseLegacyGamma": 1}])
def test_the_hidden_program_uses_no_processor_time(file_desk, settings):
    desk = file_desk.start_fresh(settings)
    desk.open_popup()
    if settings is not None:
        desk.press_power()
        desk.wait_for_saves(1)
    hide(desk)
    wait_until(lambda: desk.processor_share(0.3) == 0, "the end of the processor time that hiding takes")
    before = desk.processor_seconds()
    time.sleep(WATCHED)
    assert desk.processor_seconds() - before <= CLOCK_TICK


def drag_up_and_down(desk, times):
    for _ in range(times):
        desk.slide("WARMTH", 50, steps=25)
        desk.slide("WARMTH", -50, steps=25)


@pytest.mark.parametrize("settings", [{}, {"UseLegacyGamma": 1}])
def test_two_hundred_drag_steps_leak_no_gdi_object(file_desk, settings):
    desk = file_desk.start_fresh(settings)
    desk.press_power()
    drag_up_and_down(desk, 1)
    # The tooltip of a value that no other step reaches shows that all steps are processed.
    desk.slide("WARMTH", 60, steps=1)
    higher = model.dragged(0.385, 60)
    desk.wait_for_tooltip(model.tooltip_on(higher, 1.0))
    objects = ObjectCount(desk)
    assert desk.gdi_objects() > 0
    drag_up_and_down(desk, 4)
    desk.slide("WARMTH", -70, steps=1)
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(higher, -70), 1.0))
    objects.assert_unchanged()


def test_forty_clicks_leak_no_gdi_object(desk):
    desk.choose("NIGHT")
    desk.choose("DAY")
    desk.press_power()
    wait_until(lambda: len(desk.effects()) == 3, "three clicks")
    desk.wait_for_tooltip(model.TOOLTIP_OFF)
    objects = ObjectCount(desk)
    x, y = desk.unit_to_screen(*POWER)
    desk.input.click_repeatedly(x, y, 40, 0.015)
    wait_until(lambda: len(desk.effects()) == 43, "forty clicks")
    desk.wait_for_tooltip(model.TOOLTIP_OFF)
    objects.assert_unchanged()


def test_opening_and_closing_popup_and_menu_leaks_no_gdi_object(desk):
    def open_and_hide():
        desk.open_popup()
        desk.open_menu()
        desk.close_menu()
        hide(desk)
    open_and_hide()
    objects = ObjectCount(desk)
    for _ in range(5):
        open_and_hide()
    objects.assert_unchanged()


def test_a_drag_sets_one_matrix_per_step_and_makes_no_other_call(desk):
    desk.press_power()
    desk.wait_for_colour(model.DEFAULT_INTENSITY, 1.0)
    before = len(desk.magnification_calls())
    desk.slide("WARMTH", 40, steps=20)
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(0.385, 40), 1.0))
    calls = desk.magnification_calls()[before:]
    assert {call.function for call in calls} == {"MagSetFullscreenColorEffect"}
    # Moves that arrive faster than they are processed may be merged. None is processed twice.
    assert 1 <= len(calls) <= 21
