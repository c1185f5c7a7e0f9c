"""Resolution and scaling change, the machine wakes up: the filter is applied again, once, and the popup fits."""

import struct
import time
import uuid

import pytest

import model
from desk import POWER, REOPEN_GUARD, SLIDER_X, SLIDER_Y, act_within, wait_until
from image import is_at_its_own_base, place_of_a_rectangle

WM_DISPLAYCHANGE, WM_POWERBROADCAST, WM_DPICHANGED, WM_CLOSE = 0x7E, 0x218, 0x2E0, 0x10
RESUME_AUTOMATIC, RESUME_SUSPEND, SUSPEND, BATTERY_LOW = 18, 7, 4, 9
POWER_SETTING_CHANGE = 0x8013
CONSOLE_DISPLAY_STATE = uuid.UUID("6fe69556-704a-47a0-8f24-c28d936fda47")
MONITOR_POWER_ON = uuid.UUID("02731015-4510-4526-99e6-e5a17ebd1aea")
OFF, ON, DIMMED = 0, 1, 2
AFTER_DISPLAY_CHANGE, AFTER_RESUME = 0.3, 1.2
# Windows' timers may come a clock tick early.
TICK = 0.02
START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)


@pytest.fixture(name="lit")
def lit_fixture(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    return desk


@pytest.fixture(name="full_size")
def full_size_fixture(file_desk):
    yield
    if file_desk.metrics()["width"] != file_desk.size[0]:
        file_desk.change_mode(*file_desk.size)


def wait_for_applies(desk, count):
    wait_until(lambda: len(desk.effects()) >= count, f"{count} colour matrices")


def test_a_display_change_applies_the_filter_again_a_moment_later(lit):
    started = time.monotonic()
    lit.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    wait_for_applies(lit, 2)
    assert time.monotonic() - started >= AFTER_DISPLAY_CHANGE - TICK
    assert lit.effects()[1].matrix == lit.effects()[0].matrix


def post_changes(desk, times, pause):
    """Posts so many display changes, `pause` seconds apart, none of which comes after the wait that another started."""
    def lit_afresh():
        desk.start_fresh().press_power()
        desk.wait_for_colour(*START)
        return post

    def post():
        for _ in range(times):
            desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
            time.sleep(pause)
    # The whole burst takes less than its pauses and one wait: then no two changes are a wait apart.
    act_within((times - 1) * pause + AFTER_DISPLAY_CHANGE, lit_afresh)
    return time.monotonic() - pause


def test_a_burst_of_display_changes_applies_it_once(file_desk):
    post_changes(file_desk, 8, 0.0)
    wait_for_applies(file_desk, 2)
    time.sleep(2 * AFTER_DISPLAY_CHANGE)  # For applies that follow wrongly.
    assert len(file_desk.effects()) == 2


def test_each_display_change_of_a_burst_starts_the_wait_anew(file_desk):
    last = post_changes(file_desk, 4, 0.1)  # A slow burst.
    wait_for_applies(file_desk, 2)
    assert time.monotonic() - last >= AFTER_DISPLAY_CHANGE - 0.1 - TICK
    time.sleep(AFTER_DISPLAY_CHANGE)  # For applies that follow wrongly.
    assert len(file_desk.effects()) == 2


@pytest.mark.parametrize("event", [RESUME_AUTOMATIC, RESUME_SUSPEND])
def test_a_resume_applies_the_filter_again_after_a_longer_wait(lit, event):
    started = time.monotonic()
    assert lit.send_message(WM_POWERBROADCAST, event, 0) == 1
    wait_for_applies(lit, 2)
    assert time.monotonic() - started >= AFTER_RESUME - TICK


def test_both_messages_of_one_resume_apply_it_once(lit):
    lit.post_message(WM_POWERBROADCAST, RESUME_AUTOMATIC, 0)
    lit.post_message(WM_POWERBROADCAST, RESUME_SUSPEND, 0)
    wait_for_applies(lit, 2)
    time.sleep(0.4)  # For a second apply that follows wrongly.
    assert len(lit.effects()) == 2


def test_other_power_events_apply_nothing(lit):
    for event in (SUSPEND, BATTERY_LOW):
        assert lit.send_message(WM_POWERBROADCAST, event, 0) == 1
    time.sleep(AFTER_RESUME + 0.3)  # Longer than the longest wait.
    assert len(lit.effects()) == 1


def tell_power_setting(desk, state, setting=CONSOLE_DISPLAY_STATE):
    """Sends what Windows sends when a power setting has changed."""
    data = setting.bytes_le + struct.pack("<LL", 4, state)
    assert desk.send_data(WM_POWERBROADCAST, POWER_SETTING_CHANGE, data) == 1


def test_displays_that_were_off_get_the_filter_again_when_they_come_on(lit):
    tell_power_setting(lit, OFF)
    started = time.monotonic()
    tell_power_setting(lit, ON)
    wait_for_applies(lit, 2)
    assert time.monotonic() - started >= AFTER_RESUME - TICK


def test_a_ramp_that_was_lost_while_the_displays_were_off_comes_back(file_desk):
    desk = file_desk.start_fresh({"UseLegacyGamma": 1})
    desk.press_power()
    desk.wait_for_legacy_colour(*START)
    tell_power_setting(desk, OFF)
    desk.set_ramp(model.ramp(model.IDENTITY))
    tell_power_setting(desk, ON)
    desk.wait_for_legacy_colour(*START)


def test_displays_that_are_on_already_or_were_only_dimmed_apply_nothing(lit):
    # The first is what Windows tells right after the registration.
    for state in (ON, DIMMED, ON):
        tell_power_setting(lit, state)
    for state in (OFF, ON):
        tell_power_setting(lit, state, MONITOR_POWER_ON)
    time.sleep(AFTER_RESUME + 0.3)  # Longer than the longest wait.
    assert len(lit.effects()) == 1


def test_with_the_filter_off_a_display_change_touches_nothing(desk):
    desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    desk.wait_for_tip(model.TIP_OFF)  # What is drawn anew after the wait.
    assert desk.effects() == []
    assert desk.screen_is_plain()


def test_a_ramp_that_the_display_driver_lost_comes_back_in_legacy_mode(file_desk):
    desk = file_desk.start_fresh({"UseLegacyGamma": 1})
    desk.press_power()
    desk.wait_for_legacy_colour(*START)
    desk.set_ramp(model.ramp(model.IDENTITY))
    desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    desk.wait_for_legacy_colour(*START)


def test_the_box_of_a_failed_load_does_not_pile_up(make_desk):
    desk = make_desk(magnification="missing")
    desk.clear()
    desk.start_program()
    desk.press_button(desk.wait_for_message_box())
    desk.wait_for_icon()
    desk.press_power()
    desk.wait_for_tip(model.tip_on(*START))
    for _ in range(3):
        desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
        desk.wait_for_message_box()
        time.sleep(0.6)  # Twice the time that the program waits after a display change.
    boxes = desk.message_boxes()
    assert len(boxes) == 1
    desk.press_button(boxes[0])
    wait_until(lambda: not desk.message_boxes(), "the end of the box")
    desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    desk.press_button(desk.wait_for_message_box())


def test_a_library_that_failed_at_the_start_is_tried_again(file_desk):
    desk = file_desk
    desk.clear(initialize=5)
    desk.start_program()
    desk.press_button(desk.wait_for_message_box())
    desk.wait_for_icon()
    desk.press_power()
    desk.wait_for_tip(model.tip_on(*START))
    assert desk.effects() == []
    desk.magnification_script(initialize=0)
    desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    desk.wait_for_colour(*START)
    assert [call.function for call in desk.magnification_calls()] == [
        "MagInitialize", "MagInitialize", "MagSetFullscreenColorEffect"]


def test_a_real_change_of_resolution_applies_the_filter_again(lit, full_size):
    lit.change_mode(1280, 720)
    wait_for_applies(lit, 2)
    lit.wait_for_colour(*START)
    assert all(call.matrix == lit.effects()[0].matrix for call in lit.effects())


def test_after_a_change_of_resolution_the_popup_opens_in_the_new_corner(lit, full_size):
    lit.change_mode(1280, 720)
    wait_until(lambda: lit.metrics()["work_right"] == 1280, "the new work area")
    lit.post_message(WM_CLOSE)
    lit.wait_for_popup(False)
    wait_for_applies(lit, 2)
    time.sleep(2 * REOPEN_GUARD)
    # Wine's taskbar moves its icons but not what it tells of their places.
    lit.click(1280 - 10, 720 - 10)
    rect = lit.wait_for_popup()
    metrics = lit.metrics()
    assert (rect.right, rect.bottom) == (metrics["work_right"] - 10, metrics["work_bottom"] - 10)
    assert (rect.right - rect.left, rect.bottom - rect.top) == (320, 540)


def test_the_resolution_changes_while_a_slider_is_held(lit, full_size):
    lit.wait_for_saves(1)
    lit.slide("WARMTH", 30, release=False)
    lit.wait_for_tip(model.tip_on(model.dragged(0.385, 30), 1.0))
    applies = len(lit.effects())
    lit.change_mode(1280, 720)
    wait_until(lambda: lit.metrics()["width"] == 1280, "the new resolution")
    wait_for_applies(lit, applies + 1)
    lit.move(600, 400)
    lit.move(600, 300)
    lit.release()
    lit.wait_for_saves(2)
    # Wherever the pointer was left: screen, tip and file agree on one value.
    saved = int(lit.settings()["Intensity"]) / 1000.0
    assert lit.effects()[-1].diagonal == pytest.approx(model.factors(saved, 1.0), abs=0.004)
    lit.post_message(WM_CLOSE)
    lit.wait_for_popup(False)
    time.sleep(2 * REOPEN_GUARD)
    lit.click(1280 - 10, 720 - 10)
    lit.wait_for_popup()
    # Wine does not move the work area's lower edge, so only the popup's upper part can be reached.
    lit.drag_unit(80, 150, 80, 120)
    lit.wait_for_saves(3)
    now = int(lit.settings()["Intensity"]) / 1000.0
    assert now == pytest.approx(model.dragged(saved, 30), abs=0.002)


def send_new_dpi(desk, dpi, wparam=None):
    """Sends what Windows sends when the popup gets another DPI; where the suggested rectangle begins."""
    exe = desk.prefix.path(desk.program_path)
    assert is_at_its_own_base(exe, desk.program_pids()[0])
    address, left, top = place_of_a_rectangle(exe, lambda x, y: 40 <= x <= 300 and 40 <= y <= 150)
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
def test_the_new_dpi_is_read_from_the_high_word_when_there_is_one(desk, wparam, size):
    desk.open_popup()
    send_new_dpi(desk, 0, wparam)
    rect = desk.popup_rect()
    assert (rect.right - rect.left, rect.bottom - rect.top) == size


def test_after_a_new_dpi_clicks_and_drags_follow_it(desk):
    desk.open_popup()
    left, top = send_new_dpi(desk, 144)
    desk.click(left + POWER[0] * 1.5, top + POWER[1] * 1.5)
    desk.wait_for_tip(model.tip_on(*START))
    x, y = left + SLIDER_X["WARMTH"] * 1.5, top + SLIDER_Y * 1.5
    desk.drag(x, y, x, y - 45)
    desk.wait_for_tip(model.tip_on(model.dragged(0.385, 30), 1.0))


def test_the_dpi_changes_while_a_slider_is_held(desk):
    desk.press_power()
    desk.slide("WARMTH", 30, release=False)
    desk.wait_for_tip(model.tip_on(model.dragged(0.385, 30), 1.0))
    left, top = send_new_dpi(desk, 192)
    # The slider goes on from the place of the press, now counted in the new units.
    desk.move(left + 160, top + 2 * (SLIDER_Y - 50))
    desk.wait_for_tip(model.tip_on(model.dragged(0.385, 50), 1.0))
    desk.release()
    desk.wait_for_saves(1)
    desk.wait_for_setting("Intensity", str(model.per_mille(model.dragged(0.385, 50))))


def test_a_dpi_message_without_a_rectangle_does_no_harm(desk):
    desk.open_popup()
    desk.send_message(WM_DPICHANGED, 144 << 16 | 144, 0)
    desk.send_message(WM_DPICHANGED, 96 << 16 | 96, 0)
    desk.press_power()
    desk.wait_for_colour(*START)
