"""The popup: its position, when it takes the foreground, and when it hides."""

import time

import pytest

import model
from desk import wait_until
from text_recognition import picture_of

WS_POPUP, WS_CLIPCHILDREN, WS_CAPTION, WS_THICKFRAME = 0x80000000, 0x02000000, 0x00C00000, 0x00040000
WS_EX_TOPMOST, WS_EX_TOOLWINDOW = 0x8, 0x80
WM_CLOSE, WM_MOUSEACTIVATE, MA_ACTIVATE = 0x10, 0x21, 1
# The popup checks the foreground window every 150 ms.
SEVERAL_CHECKS = 0.5


def test_the_program_starts_with_its_popup_hidden(desk):
    time.sleep(0.3)  # No popup may open.
    assert not desk.popup_visible()


def test_it_opens_ten_units_inside_the_corner_of_the_work_area(desk):
    rect = desk.open_popup()
    metrics = desk.metrics()
    assert (rect.right, rect.bottom) == (metrics["work_right"] - 10, metrics["work_bottom"] - 10)
    assert (rect.right - rect.left, rect.bottom - rect.top) == (320, 540)


def test_it_is_a_frameless_topmost_window_without_a_taskbar_button(desk):
    desk.open_popup()
    found = desk.window_facts()
    style, extended = found["style"] & 0xFFFFFFFF, found["extended_style"]
    assert style & WS_POPUP and style & WS_CLIPCHILDREN
    assert not style & WS_CAPTION and not style & WS_THICKFRAME
    assert extended & WS_EX_TOPMOST and extended & WS_EX_TOOLWINDOW
    assert (found["class"], found["title"]) == ("Ambrel2Class", "Ambrel")


def test_it_takes_the_foreground(desk):
    desk.open_popup()
    desk.wait_for_foreground()


def test_it_takes_the_foreground_from_another_program(desk):
    with desk.other_window():
        desk.open_popup()
        desk.wait_for_foreground()
        time.sleep(SEVERAL_CHECKS)
        assert desk.popup_visible()


def test_it_hides_when_another_window_takes_the_foreground(desk):
    desk.open_popup()
    desk.wait_for_foreground()
    with desk.other_window():
        desk.wait_for_popup(False)


def test_it_hides_when_another_window_is_clicked(desk):
    with desk.other_window():
        desk.open_popup()
        desk.wait_for_foreground()
        desk.click_window(300, 250, "LabOtherWindow")
        desk.wait_for_popup(False)


def test_it_stays_open_while_it_is_used(desk):
    desk.open_popup()
    desk.wait_for_foreground()
    for up in (20, -20):
        desk.slide("WARMTH", up)
    desk.press_power()
    desk.wait_for_tooltip(model.tooltip_on(model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS))
    time.sleep(SEVERAL_CHECKS)
    assert desk.popup_visible() and desk.popup_is_foreground()


def test_alt_f4_hides_it_and_does_not_end_the_program(desk):
    desk.press_power()
    desk.wait_for_colour(model.DEFAULT_INTENSITY, 1.0)
    desk.wait_for_foreground()
    desk.key("alt+F4")
    desk.wait_for_popup(False)
    time.sleep(0.3)  # The program must not exit.
    assert desk.program_running()
    assert desk.icon_shown()
    assert not desk.screen_is_plain()
    desk.click_tray()
    desk.wait_for_popup()


def test_hiding_it_keeps_the_filter(desk):
    desk.choose("EVENING")
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])
    desk.post_message(WM_CLOSE)
    desk.wait_for_popup(False)
    desk.wait_for_saves(1)
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])
    assert desk.settings()["Intensity"] == "584"


def test_it_opens_again_at_the_same_position_with_the_current_state(desk):
    first = desk.open_popup()
    desk.choose("NIGHT")
    desk.wait_for_tooltip("Ambrel - ON (0K, 70%)")
    # The centre bar of the thumb at the upper end of the track.
    wait_until(lambda: desk.popup_picture().pixel(80, 107) == (255, 0, 0), "the thumb at the upper end")
    shown = picture_of(desk)
    desk.post_message(WM_CLOSE)
    desk.wait_for_popup(False)
    assert desk.open_popup() == first
    wait_until(lambda: picture_of(desk) == shown, "the same picture")


@pytest.mark.parametrize("pointer", [(5, 5), (960, 540), (1915, 5)])
def test_it_opens_in_the_same_corner_for_every_pointer_position(desk, pointer):
    desk.move(*pointer)
    desk.post_message(0x401, 1, 0x202)  # The taskbar's message for a click on the icon.
    rect = desk.wait_for_popup()
    assert (rect.right, rect.bottom) == (1910, 1050)


def test_a_click_into_it_activates_it(desk):
    desk.open_popup()
    assert desk.send_message(WM_MOUSEACTIVATE, 0, 0) == MA_ACTIVATE


def test_keys_do_nothing(desk):
    desk.open_popup()
    desk.wait_for_foreground()
    for key in ("Escape", "Return", "space", "Tab"):
        desk.key(key)
    time.sleep(0.2)  # No key may have an effect.
    assert desk.popup_visible()
    assert desk.effects() == []


def test_a_small_desktop_shows_its_upper_left_part(make_desk):
    desk = make_desk(size=(640, 480))
    desk.start()
    rect = desk.open_popup()
    assert (rect.left, rect.top) == (640 - 320 - 10, 10)
    assert (rect.right - rect.left, rect.bottom - rect.top) == (320, 540)
