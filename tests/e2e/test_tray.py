"""The tray icon: its picture and tooltip, and clicks on it and its menu."""

import time

import pytest

import model
from ambrel_lab.popup import TASKBAR_CLASS
from desk import (ATTEMPTS, MENU_CLASS, MENU_LEGACY_MODE, POWER, REOPEN_DELAY, LabError, act_within, wait_until,
                  wait_until_settled)

WM_USER_TRAY, WM_ACTIVATE, WM_CLOSE, WM_TIMER = 0x401, 0x6, 0x10, 0x113
WA_INACTIVE, SAVE_TIMER = 0, 1
TICK = 0.02  # seconds; more than a tick of Windows' clock
WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_RBUTTONUP, WM_MBUTTONUP, WM_MOUSEMOVE = 0x202, 0x203, 0x205, 0x208, 0x200
# The range in which Windows registers messages by name.
NAMED_MESSAGES = range(0xC000, 0xC100)


def icon_picture(desk):
    rect = desk.wait_for_tray_icon().rect
    desk.wait_for_window_at(rect.left, rect.top, TASKBAR_CLASS)  # The tooltip covers the icon's upper part.
    return desk.connection.picture(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top)


def test_after_the_start_the_tooltip_shows_only_the_name(desk):
    assert desk.tray_tooltip() == "Ambrel"


def test_the_tooltip_follows_the_filter(desk):
    desk.press_power()
    desk.wait_for_tooltip("Ambrel - ON (3998K, 100%)")
    desk.press_power()
    desk.wait_for_tooltip("Ambrel - OFF")


@pytest.mark.parametrize("settings, tooltip", [
    ({"Intensity": 0}, "Ambrel - ON (6500K, 100%)"),
    ({"Intensity": 1000, "Brightness": 855}, "Ambrel - ON (0K, 85%)"),
    ({"Intensity": 900, "Brightness": 570}, "Ambrel - ON (650K, 56%)"),
    ({"Intensity": 999, "Brightness": 999}, "Ambrel - ON (7K, 99%)"),
])
def test_the_tooltip_rounds_the_warmth_and_truncates_the_percentage(file_desk, settings, tooltip):
    desk = file_desk.start_fresh(settings)
    desk.press_power()
    desk.wait_for_tooltip(tooltip)


def test_the_icon_differs_between_on_and_off(desk):
    def icon():
        picture = icon_picture(desk)
        return picture.colours() > 2 and picture
    off = wait_until_settled(icon, "the drawn icon")
    desk.press_power()
    wait_until(lambda: icon_picture(desk) != off, "the icon for an active filter")
    desk.press_power()
    wait_until(lambda: icon_picture(desk) == off, "the icon for an inactive filter")


def test_there_is_one_icon(desk):
    desk.press_power()
    desk.wait_for_tooltip("Ambrel - ON (3998K, 100%)")
    assert len(desk.tray_icons()) == 1


def hide_with_a_click(desk):
    """Clicks the icon while the popup is shown: the press hides the popup, and the release must not open it again. If a
    busy machine handles the release too late, the popup rightly opens; then the click is repeated."""
    for _ in range(ATTEMPTS):
        position = desk.tray_icon_position()
        desk.wait_for_window_at(*position, TASKBAR_CLASS)
        started = time.monotonic()
        desk.click_tray()
        desk.synchronise(TASKBAR_CLASS)
        desk.synchronise()
        duration = time.monotonic() - started
        time.sleep(2 * REOPEN_DELAY)  # Nothing may open late.
        if not desk.popup_visible():
            return
        assert duration > REOPEN_DELAY - TICK, "the click that hid the popup has opened it again"
    raise LabError(f"none of {ATTEMPTS} clicks was handled in time")


def test_a_left_click_opens_the_popup_and_another_hides_it(desk):
    assert not desk.popup_visible()
    desk.click_tray()
    desk.wait_for_popup()
    hide_with_a_click(desk)


def test_the_click_that_hides_the_popup_does_not_open_it_again(desk):
    desk.open_popup()
    hide_with_a_click(desk)


def test_a_click_directly_after_the_popup_was_hidden_opens_nothing(desk):
    def show():
        desk.show()
        return hide_and_click
    started = []

    def hide_and_click():
        saves = desk.saves()
        started[:] = [time.monotonic()]
        desk.post_message(WM_CLOSE)
        desk.post_message(WM_USER_TRAY, 1, WM_LBUTTONUP)
        desk.post_message(WM_TIMER, SAVE_TIMER)  # Its save shows that both messages before it have been handled.
        desk.wait_for_saves(saves + 1)
    act_within(REOPEN_DELAY, show)
    time.sleep(0.1)  # No popup may open.
    assert not desk.popup_visible()
    time.sleep(max(0.0, started[0] + 2 * REOPEN_DELAY - time.monotonic()))
    desk.click_tray()
    desk.wait_for_popup()


@pytest.mark.parametrize("message", [WM_LBUTTONDBLCLK, WM_MBUTTONUP, WM_MOUSEMOVE])
def test_other_mouse_messages_of_the_icon_do_nothing(desk, message):
    desk.send_message(WM_USER_TRAY, 1, message)
    assert not desk.popup_visible()
    assert not desk.menu_window()


def test_a_middle_click_does_nothing(desk):
    desk.click_tray(2)
    time.sleep(0.3)  # Neither popup nor menu may open.
    assert not desk.popup_visible()
    assert not desk.menu_window()


def test_a_right_click_opens_the_menu_at_the_pointer(desk):
    position = desk.tray_icon_position()
    menu = desk.open_menu()
    assert menu.window.window_class == MENU_CLASS
    assert menu.window.right >= position[0] >= menu.window.left
    assert menu.window.bottom <= 1080
    launch, legacy, last = menu.rows.values()
    assert menu.window.top < launch.top < launch.bottom <= legacy.top < legacy.bottom
    assert legacy.bottom < last.top < last.bottom < menu.window.bottom  # A line lies between them.
    assert {row.bottom - row.top for row in menu.rows.values()} == {launch.bottom - launch.top}
    assert not desk.popup_visible()
    desk.close_menu()


def test_a_menu_closed_without_a_choice_changes_nothing(desk):
    desk.open_menu()
    desk.close_menu()
    desk.press_power()
    desk.wait_for_saves(1)
    assert desk.settings()["UseLegacyGamma"] == "0"
    assert desk.saves() == 1


def test_a_click_on_the_separator_does_nothing(desk):
    menu = desk.open_menu()
    above, below = menu.rows[MENU_LEGACY_MODE], menu.rows["Quit"]
    desk.click_window(above.left + 60, (above.bottom + below.top) // 2, menu.window.handle)
    time.sleep(0.2)  # No command may run.
    assert desk.program_running()
    assert desk.saves() == 0


def test_the_popup_stays_open_while_the_menu_is_open(desk):
    desk.open_popup()
    desk.open_menu()
    time.sleep(0.4)  # Longer than the interval of the popup's foreground check.
    assert desk.popup_visible()
    desk.close_menu()


def press_power_of_a_slow_display(desk):
    """Presses the power button and returns its position while the program handles the press, which takes until
    end_slow_call."""
    desk.show()
    power = desk.unit_to_screen(*POWER)
    desk.magnification.script(hold=True)
    desk.press(*power)
    wait_until(desk.effects, "the slow call")
    return power


def open_menu_while_busy(desk, icon):
    """Right-clicks the icon while the program is busy, and returns the menu that opens when it no longer is."""
    desk.click(*icon, 3)
    for _ in range(3):  # The taskbar passes the click on.
        desk.send_message(0, target=TASKBAR_CLASS)
        time.sleep(0.1)
    return end_slow_call(desk)


def end_slow_call(desk):
    """Ends the slow call, and returns the menu that opens."""
    assert desk.tray_tooltip() == "Ambrel" and not desk.menu_window()
    desk.magnification.script()
    menu = wait_until_settled(desk.menu_window, "the tray menu")
    time.sleep(0.3)  # No row may be chosen.
    assert desk.menu_window() == menu
    return menu


def choose_quit(desk, menu):
    assert desk.menu_window() == menu
    desk.click_menu_row(desk.wait_for_menu(), "Quit")
    assert desk.wait_for_exit() == 0
    assert desk.settings().get("UseLegacyGamma", "0") == "0"


def test_a_pending_button_release_chooses_no_row_of_the_menu(desk):
    icon = desk.tray_icon_position()
    press_power_of_a_slow_display(desk)
    desk.release()
    menu = open_menu_while_busy(desk, icon)
    desk.wait_for_tooltip("Ambrel - ON (3998K, 100%)")
    choose_quit(desk, menu)


def test_a_button_release_before_a_right_click_chooses_no_row_of_the_menu(desk):
    """The taskbar may pass a click on too late. A message that is posted in its place cannot be late."""
    icon = desk.tray_icon_position()
    press_power_of_a_slow_display(desk)
    desk.release()
    desk.input.move(*icon)
    desk.post_message(WM_USER_TRAY, 1, WM_RBUTTONUP)
    menu = end_slow_call(desk)
    desk.wait_for_tooltip("Ambrel - ON (3998K, 100%)")
    choose_quit(desk, menu)


def test_a_pending_click_is_handled_before_the_menu_opens(desk):
    icon = desk.tray_icon_position()
    power = press_power_of_a_slow_display(desk)
    desk.release()
    desk.click(*power)
    menu = open_menu_while_busy(desk, icon)
    desk.wait_for_tooltip("Ambrel - OFF")
    choose_quit(desk, menu)


def test_a_pending_slider_release_is_handled_before_the_menu_opens(desk):
    icon = desk.tray_icon_position()
    press_power_of_a_slow_display(desk)
    desk.release()
    desk.slide("WARMTH", 40)
    menu = open_menu_while_busy(desk, icon)
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(0.385, 40), 1.0))
    choose_quit(desk, menu)


def test_no_menu_opens_during_a_slider_drag(desk):
    desk.slide("WARMTH", 40, release=False)
    desk.post_message(WM_USER_TRAY, 1, WM_RBUTTONUP)
    desk.send_message(0)
    time.sleep(0.3)  # No menu may open.
    assert not desk.menu_window()
    desk.release()
    desk.wait_for_saves(1)
    assert desk.settings()["Intensity"] == "587"
    assert desk.quit() == 0


def test_a_hidden_popup_that_is_hidden_again_opens_with_the_next_click(desk):
    desk.post_message(WM_CLOSE)
    desk.post_message(WM_USER_TRAY, 1, WM_LBUTTONUP)
    desk.wait_for_popup()


def test_the_first_click_after_a_choice_in_the_menu_opens_the_popup(desk):
    taskbar = desk.window_at(*desk.tray_icon_position()).handle
    desk.click_menu_row(desk.open_menu(), "Launch at Startup")
    # A message instead of a simulated click, which could be late on a busy machine.
    wait_until(lambda: desk.saves() == 1, "the effect of the choice", pause=0.005)
    # The menu leaves the hidden popup active, and the taskbar takes the activation when the icon is pressed.
    desk.post_message(WM_ACTIVATE, WA_INACTIVE, taskbar)
    desk.post_message(WM_USER_TRAY, 1, WM_LBUTTONUP)
    desk.wait_for_popup()


def test_the_popup_can_be_opened_and_closed_repeatedly(desk):
    for _ in range(5):
        desk.click_tray()
        desk.wait_for_popup()
        hide_with_a_click(desk)


def test_quit_removes_the_icon_and_exits_with_0(desk):
    assert desk.quit() == 0
    desk.wait_for_icon(shown=False)


def test_a_new_taskbar_gets_the_icon_in_its_current_state(desk):
    desk.choose("EVENING")
    desk.wait_for_tooltip("Ambrel - ON (2700K, 85%)")
    desk.wait_for_saves(1)
    # Of these messages the program handles only TaskbarCreated, whose number is unknown here.
    for number in NAMED_MESSAGES:
        desk.post_message(number)
    desk.wait_for_log("TaskbarCreated received - (re)adding tray icon")
    # Until the icon has been removed and added again, the old one may still be shown.
    desk.post_message(WM_TIMER, SAVE_TIMER)
    desk.wait_for_saves(2)
    desk.wait_for_icon()
    desk.wait_for_tooltip("Ambrel - ON (2700K, 85%)")
    assert desk.log().count("TaskbarCreated received - (re)adding tray icon") == 1
    assert len(desk.tray_icons()) == 1
    desk.post_message(WM_CLOSE)
    desk.wait_for_popup(False)
    time.sleep(REOPEN_DELAY + 0.05)
    desk.click_tray()
    desk.wait_for_popup()


@pytest.mark.parametrize("number", [0, 9, 100, 0x7FFFFFFF])
def test_messages_of_timers_that_do_not_run_are_ignored(desk, number):
    log = desk.log()
    desk.send_message(WM_TIMER, number)
    assert desk.log() == log
    assert desk.tray_tooltip() == "Ambrel"
    assert not desk.popup_visible()


def test_the_menu_command_of_legacy_mode_does_not_change_the_tooltip(desk):
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(1)
    assert desk.tray_tooltip() == "Ambrel"


def test_the_longest_tooltip_is_not_truncated(file_desk):
    desk = file_desk.start_fresh({"Intensity": 0, "Brightness": 1000})
    desk.press_power()
    desk.wait_for_tooltip(model.tooltip_on(0.0, 1.0))
    assert len(desk.tray_tooltip()) <= 127
