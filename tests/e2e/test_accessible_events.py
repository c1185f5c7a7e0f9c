"""The events that the popup sends to accessibility clients."""

import model
from accessible import HINT, press, read_panel
from accessible import hardware_desk_fixture, popup_fixture, start_with_displays_fixture  # noqa: F401
from ambrel_lab.hardware import Monitor
from backlight import CONFIRMED, VERIFY, WM_TIMER
from desk import SLIDER_X, SLIDER_Y, wait_for_value, wait_until

WM_DISPLAYCHANGE, WM_CLOSE = 0x7E, 0x10
WM_QUERYENDSESSION, WM_ENDSESSION, ENDSESSION_CLOSEAPP = 0x11, 0x16, 1


def test_a_preset_announces_values_and_states(popup):
    with popup.accessible_events() as events:
        press(popup, "DAY")
        found = events.wait_for(("value", 4), ("state", 8), ("state", 11))
        assert len(found) == len(set(found)) and ("value", 6) not in found
        press(popup, "EVENING")
        events.wait_for(("reorder", 0), ("value", 4), ("value", 6), ("state", 7), ("state", 8), ("state", 9))


def test_the_panels_and_the_popup_announce_themselves(popup):
    with popup.accessible_events() as events:
        press(popup, "SETTINGS")
        assert events.wait_for(("reorder", 0)) == [("reorder", 0)]
        press(popup, "ALLOW EXTREME DIM")
        assert events.wait_for(("state", 4)) == [("state", 4)]
        press(popup, "COPY FEEDBACK FOR SUPPORT")
        copied = [("name", 6), ("description", 6), ("help", 6)]
        assert events.wait_for(*copied) == copied
        popup.post_message(WM_CLOSE)
        assert ("hide", 0) in events.wait_for(("hide", 0))
        popup.show()
        assert ("show", 0) in events.wait_for(("show", 0))


def test_a_drag_announces_the_steps_that_change_the_text_and_no_others(file_desk):
    desk = file_desk.start_fresh({"Brightness": 850})
    desk.press_power()
    wait_until(lambda: read_panel(desk)[-1][-1] == "Uncheck", "the filter")
    x, y = SLIDER_X["BRIGHTNESS"], SLIDER_Y
    desk.press_unit(x, y)
    shown = [model.percent(0.85)]
    with desk.accessible_events() as events:
        for step in range(1, 13):
            before = len(desk.effects())
            desk.move_unit(x, y + step)
            wait_until(lambda: len(desk.effects()) > before, "the step")
            desk.paint()
            shown.append(model.percent(model.dragged(0.85, -step)))
        desk.release()
        changes = sum(one != other for one, other in zip(shown, shown[1:]))
        assert 0 < changes < 12
        wait_for_value(lambda: len(events.read()), changes, "the number of events")
        assert events.take() == [("value", 6)] * changes


def test_a_lock_announces_the_status_of_the_strip(start_with_displays):
    desk = start_with_displays([Monitor("desk", 40, present=False)])
    desk.hardware.hold_timers(VERIFY)
    assert read_panel(desk)[6] == ("text", HINT)
    with desk.accessible_events() as events:
        desk.hardware.plug("desk")
        desk.post_message(WM_DISPLAYCHANGE)
        events.wait_for(("reorder", 0), ("name", 7), ("description", 7), ("help", 7))
        press(desk, "PWM-SAFE MODE")
        events.wait_for(("state", 7), ("description", 7), ("help", 7))
        desk.wait_for_saves(1)
        desk.call_window(WM_TIMER, VERIFY)
        assert CONFIRMED % 1 in desk.log()
        wait_until(lambda: read_panel(desk)[6][3] == "DISPLAY LOCKED AT 100%", "the confirmed lock")
        events.wait_for(("description", 7), ("help", 7))


def test_an_end_of_the_program_announces_that_the_popup_disappears(popup):
    with popup.accessible_events() as events:
        # As an installer that replaces the program's file.
        popup.send_message(WM_QUERYENDSESSION, 0, ENDSESSION_CLOSEAPP)
        assert popup.popup_visible()
        popup.send_message(WM_ENDSESSION, 1, ENDSESSION_CLOSEAPP)
        assert ("hide", 0) in events.wait_for(("hide", 0))
    assert popup.wait_for_exit() == 0
