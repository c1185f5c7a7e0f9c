"""Changes of resolution and scaling, and resume: the filter is applied again, once, and the popup fits."""

import struct
import time
import uuid

import pytest

import model
from desk import POWER, REOPEN_DELAY, SLIDER_X, SLIDER_Y, act_within, wait_for_value, wait_until
from image import is_at_its_own_base, find_rectangle

WM_DISPLAYCHANGE, WM_POWERBROADCAST, WM_DPICHANGED, WM_CLOSE = 0x7E, 0x218, 0x2E0, 0x10
RESUME_AUTOMATIC, RESUME_SUSPEND, SUSPEND, BATTERY_LOW = 18, 7, 4, 9
POWER_SETTING_CHANGE = 0x8013
WM_TIMER, SETTLE_TIMER = 0x113, 2
CONSOLE_DISPLAY_STATE = uuid.UUID("6fe69556-704a-47a0-8f24-c28d936fda47")
MONITOR_POWER_ON = uuid.UUID("02731015-4510-4526-99e6-e5a17ebd1aea")
OFF, ON, DIMMED = 0, 1, 2
AFTER_DISPLAY_CHANGE, AFTER_RESUME = 0.3, 1.2
# Windows' timers may fire a clock tick early.
TICK = 0.02
START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)


@pytest.fixture(name="filtered")
def filtered_fixture(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    return desk


@pytest.fixture(name="full_size")
def full_size_fixture(file_desk):
    yield
    if file_desk.metrics()["width"] != file_desk.size[0]:
        file_desk.change_mode(*file_desk.size)
        wait_for_taskbar(file_desk, *file_desk.size)


def wait_for_taskbar(desk, width, height):
    """Waits until the taskbar has followed a change of resolution."""
    def corner():
        facts = desk.window_facts("Shell_TrayWnd")
        return facts["right"], facts["bottom"]
    wait_for_value(corner, (width, height), "the taskbar's lower right corner")


def wait_for_applies(desk, count):
    wait_until(lambda: len(desk.effects()) >= count, f"{count} colour matrices")


def test_a_display_change_applies_the_filter_again_a_moment_later(filtered):
    started = time.monotonic()
    filtered.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    wait_for_applies(filtered, 2)
    assert time.monotonic() - started >= AFTER_DISPLAY_CHANGE - TICK
    assert filtered.effects()[1].matrix == filtered.effects()[0].matrix


def post_changes(desk, times, pause):
    """Posts display changes `pause` seconds apart, each within the delay that the previous one started. Returns a time
    before the last one."""
    def start_filtered():
        desk.start_fresh().press_power()
        desk.wait_for_colour(*START)
        return post

    def post():
        for number in range(times):
            time.sleep(pause if number else 0)
            last = time.monotonic()
            desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
        return last
    # No two changes are a full delay apart if the burst takes less than one delay plus all its pauses but one.
    return act_within((times - 2) * pause + AFTER_DISPLAY_CHANGE, start_filtered)


def test_a_burst_of_display_changes_applies_it_once(file_desk):
    post_changes(file_desk, 8, 0.0)
    wait_for_applies(file_desk, 2)
    time.sleep(2 * AFTER_DISPLAY_CHANGE)  # No further apply may follow.
    assert len(file_desk.effects()) == 2


def test_each_display_change_of_a_burst_restarts_the_delay(file_desk):
    last = post_changes(file_desk, 4, 0.1)  # A slow burst.
    wait_for_applies(file_desk, 2)
    assert time.monotonic() - last >= AFTER_DISPLAY_CHANGE - TICK
    time.sleep(AFTER_DISPLAY_CHANGE)  # No further apply may follow.
    assert len(file_desk.effects()) == 2


@pytest.mark.parametrize("event", [RESUME_AUTOMATIC, RESUME_SUSPEND])
def test_a_resume_applies_the_filter_again_after_a_longer_delay(filtered, event):
    started = time.monotonic()
    assert filtered.send_message(WM_POWERBROADCAST, event, 0) == 1
    wait_for_applies(filtered, 2)
    assert time.monotonic() - started >= AFTER_RESUME - TICK


def test_both_messages_of_one_resume_apply_it_once(filtered):
    filtered.post_message(WM_POWERBROADCAST, RESUME_AUTOMATIC, 0)
    filtered.post_message(WM_POWERBROADCAST, RESUME_SUSPEND, 0)
    wait_for_applies(filtered, 2)
    time.sleep(0.4)  # No second apply may follow.
    assert len(filtered.effects()) == 2


def test_other_power_events_apply_nothing(filtered):
    for event in (SUSPEND, BATTERY_LOW):
        assert filtered.send_message(WM_POWERBROADCAST, event, 0) == 1
    time.sleep(AFTER_RESUME + 0.3)  # Longer than the longest delay.
    assert len(filtered.effects()) == 1


def send_power_setting(desk, state, setting=CONSOLE_DISPLAY_STATE):
    """Sends the message that Windows sends when a power setting has changed."""
    data = setting.bytes_le + struct.pack("<LL", 4, state)
    assert desk.send_data(WM_POWERBROADCAST, POWER_SETTING_CHANGE, data) == 1


def test_the_filter_is_applied_again_when_the_displays_turn_on(filtered):
    send_power_setting(filtered, OFF)
    started = time.monotonic()
    send_power_setting(filtered, ON)
    wait_for_applies(filtered, 2)
    assert time.monotonic() - started >= AFTER_RESUME - TICK


def test_a_ramp_that_was_lost_while_the_displays_were_off_is_restored(file_desk):
    desk = file_desk.start_fresh({"UseLegacyGamma": 1})
    desk.press_power()
    desk.wait_for_legacy_colour(*START)
    send_power_setting(desk, OFF)
    desk.set_ramp(model.ramp(model.IDENTITY))
    send_power_setting(desk, ON)
    desk.wait_for_legacy_colour(*START)


def test_displays_that_are_already_on_or_only_dimmed_apply_nothing(filtered):
    # Windows reports the first state directly after the registration.
    for state in (ON, DIMMED, ON):
        send_power_setting(filtered, state)
    for state in (OFF, ON):
        send_power_setting(filtered, state, MONITOR_POWER_ON)
    time.sleep(AFTER_RESUME + 0.3)  # Longer than the longest delay.
    assert len(filtered.effects()) == 1


def test_a_display_change_with_the_filter_off_sets_no_colour(desk):
    desk.send_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    desk.call_window(WM_TIMER, SETTLE_TIMER)  # What follows after the delay.
    assert desk.effects() == []
    assert desk.screen_is_plain()


def test_legacy_mode_restores_a_ramp_that_the_display_driver_dropped(file_desk):
    desk = file_desk.start_fresh({"UseLegacyGamma": 1})
    desk.press_power()
    desk.wait_for_legacy_colour(*START)
    desk.set_ramp(model.ramp(model.IDENTITY))
    desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    desk.wait_for_legacy_colour(*START)


def test_the_message_box_of_a_failed_load_opens_once(make_desk):
    desk = make_desk(magnification="missing")
    desk.clear()
    desk.start_program()
    desk.press_button(desk.wait_for_message_box())
    desk.wait_for_icon()
    desk.press_power()
    desk.wait_for_tooltip(model.tooltip_on(*START))
    for _ in range(3):
        desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
        desk.wait_for_message_box()
        time.sleep(0.6)  # Twice the delay after a display change.
    boxes = desk.message_boxes()
    assert len(boxes) == 1
    desk.press_button(boxes[0])
    wait_until(lambda: not desk.message_boxes(), "the message box to close")
    desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    desk.press_button(desk.wait_for_message_box())


def test_a_library_that_failed_at_the_start_is_tried_again(file_desk):
    desk = file_desk
    desk.clear(initialize=5)
    desk.start_program()
    desk.press_button(desk.wait_for_message_box())
    desk.wait_for_icon()
    desk.press_power()
    desk.wait_for_tooltip(model.tooltip_on(*START))
    assert desk.effects() == []
    desk.magnification_script(initialize=0)
    desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    desk.wait_for_colour(*START)
    assert [call.function for call in desk.magnification_calls()] == [
        "MagInitialize", "MagInitialize", "MagSetFullscreenColorEffect"]


def test_a_real_change_of_resolution_applies_the_filter_again(filtered, full_size):
    filtered.change_mode(1280, 720)
    wait_for_applies(filtered, 2)
    filtered.wait_for_colour(*START)
    assert all(call.matrix == filtered.effects()[0].matrix for call in filtered.effects())


def test_after_a_change_of_resolution_the_popup_opens_in_the_new_corner(filtered, full_size):
    filtered.change_mode(1280, 720)
    wait_until(lambda: filtered.metrics()["work_right"] == 1280, "the new work area")
    filtered.post_message(WM_CLOSE)
    filtered.wait_for_popup(False)
    wait_for_applies(filtered, 2)
    time.sleep(2 * REOPEN_DELAY)
    # Wine's taskbar moves its icons but reports their old positions.
    wait_for_taskbar(filtered, 1280, 720)
    filtered.click_window(1280 - 10, 720 - 10, "Shell_TrayWnd")
    rect = filtered.wait_for_popup()
    metrics = filtered.metrics()
    assert (rect.right, rect.bottom) == (metrics["work_right"] - 10, metrics["work_bottom"] - 10)
    assert (rect.right - rect.left, rect.bottom - rect.top) == (320, 540)


def test_the_resolution_changes_while_a_slider_is_held(filtered, full_size):
    filtered.wait_for_saves(1)
    filtered.slide("WARMTH", 30, release=False)
    filtered.wait_for_tooltip(model.tooltip_on(model.dragged(0.385, 30), 1.0))
    applies = len(filtered.effects())
    filtered.change_mode(1280, 720)
    wait_until(lambda: filtered.metrics()["width"] == 1280, "the new resolution")
    wait_for_applies(filtered, applies + 1)
    filtered.move(600, 400)
    filtered.move(600, 300)
    filtered.release()
    filtered.wait_for_saves(2)
    # Screen, tooltip and file agree on one value, regardless of the pointer's position.
    saved = int(filtered.settings()["Intensity"]) / 1000.0
    assert filtered.effects()[-1].diagonal == pytest.approx(model.factors(saved, 1.0), abs=0.004)
    filtered.post_message(WM_CLOSE)
    filtered.wait_for_popup(False)
    time.sleep(2 * REOPEN_DELAY)
    wait_for_taskbar(filtered, 1280, 720)
    filtered.click_window(1280 - 10, 720 - 10, "Shell_TrayWnd")
    filtered.wait_for_popup()
    # Wine does not move the work area's lower edge, so only the popup's upper part is on the screen.
    filtered.drag_unit(80, 150, 80, 120)
    filtered.wait_for_saves(3)
    now = int(filtered.settings()["Intensity"]) / 1000.0
    assert now == pytest.approx(model.dragged(saved, 30), abs=0.002)


def send_new_dpi(desk, dpi, wparam=None):
    """Sends the message that Windows sends for a new DPI. Returns the left and top of the suggested rectangle."""
    exe = desk.prefix.path(desk.program_path)
    assert is_at_its_own_base(exe, desk.program_pids()[0])
    address, left, top = find_rectangle(exe, lambda x, y: 40 <= x <= 300 and 40 <= y <= 150)
    desk.send_message(WM_DPICHANGED, dpi << 16 | dpi if wparam is None else wparam, address)
    return left, top


@pytest.mark.parametrize("dpi, size", [(96, (320, 540)), (120, (400, 675)), (144, (480, 810)), (192, (640, 1080))])
def test_a_new_dpi_moves_and_sizes_the_popup(desk, dpi, size):
    desk.open_popup()
    left, top = send_new_dpi(desk, dpi)
    rect = desk.popup_rect()
    assert (rect.left, rect.top) == (left, top)
    assert (rect.right - rect.left, rect.bottom - rect.top) == size


@pytest.mark.parametrize("wparam, size", [(144, (480, 810)), (0x900060, (480, 810)), (0, (320, 540))])
def test_the_new_dpi_is_read_from_the_high_word_if_it_is_not_zero(desk, wparam, size):
    desk.open_popup()
    send_new_dpi(desk, 0, wparam)
    rect = desk.popup_rect()
    assert (rect.right - rect.left, rect.bottom - rect.top) == size


def test_after_a_new_dpi_clicks_and_drags_follow_it(desk):
    desk.open_popup()
    left, top = send_new_dpi(desk, 144)
    desk.click(left + POWER[0] * 1.5, top + POWER[1] * 1.5)
    desk.wait_for_tooltip(model.tooltip_on(*START))
    x, y = left + SLIDER_X["WARMTH"] * 1.5, top + SLIDER_Y * 1.5
    desk.drag(x, y, x, y - 45)
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(0.385, 30), 1.0))


def test_the_dpi_changes_while_a_slider_is_held(desk):
    desk.press_power()
    desk.slide("WARMTH", 30, release=False)
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(0.385, 30), 1.0))
    left, top = send_new_dpi(desk, 192)
    # The drag continues from the position of the press, in the new units.
    desk.move(left + 160, top + 2 * (SLIDER_Y - 50))
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(0.385, 50), 1.0))
    desk.release()
    desk.wait_for_saves(1)
    desk.wait_for_setting("Intensity", str(model.per_mille(model.dragged(0.385, 50))))


def test_a_dpi_message_without_a_rectangle_is_ignored(desk):
    desk.open_popup()
    desk.send_message(WM_DPICHANGED, 144 << 16 | 144, 0)
    desk.send_message(WM_DPICHANGED, 96 << 16 | 96, 0)
    desk.press_power()
    desk.wait_for_colour(*START)
