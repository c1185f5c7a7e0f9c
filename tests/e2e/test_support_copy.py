"""Copying the support report: the clipboard, the button's indication and its duration, and the log."""

import time

import pytest

from bundle import (BEFORE, COPIED, COPIED_DURATION, COPIED_LINE, FAILED_LINE, NORMAL, SUPPORT, SURFACE, Machine,
                    copied_is_seen, copies, copy, failures, button_state, press, utf_16_length, wait_for_button_state,
                    while_copied)
from desk import ATTEMPTS, GEAR, POWER, SETTINGS_ROWS, act_within, wait_until, wait_until_settled
from text_recognition import LABEL, SMALL, span, matches_text
from panels import panel_of, show_settings, wait_for_panel

WM_LBUTTONDOWN, WM_CLOSE = 0x201, 0x10
COPIED_OUTLINE, NORMAL_OUTLINE = (0x0A, 0x18, 0x0E), (0x0C, 0x0C, 0x0C)
BACKGROUND, WHITE = (13, 13, 13), (255, 255, 255)
TITLE_COLOUR, HINT_COLOUR = (0x78, 0xE6, 0x96), (0x6E, 0xC8, 0x82)
TITLE_BOX, HINT_BOX, BUTTON = (30, 468, 290, 490), (30, 490, 290, 510), (24, 462, 296, 516)
EXTREME_DIM_VALUE = (226, 186, 290, 220)
# The maximum delay of the repaint, in seconds, on a machine on which the program answers within MAX_ANSWER.
MAX_DELAY, MAX_ANSWER = 2.5, 0.5


@pytest.fixture(name="panel")
def panel_fixture(desk):
    """The program directly after its start with the settings panel open."""
    show_settings(desk)
    return desk


def press_by_message(desk, x, y):
    """Presses the mouse button by a message. Returns after the program has handled it."""
    desk.send_message(WM_LBUTTONDOWN, 1, x | y << 16)


def colours_in(picture, box):
    return set(picture.crop(*box).pixels())


def button_of(desk):
    return desk.popup_picture().crop(*BUTTON)


# The clipboard

def gdi_objects_while_idle(desk):
    """The number of GDI objects once the popup no longer paints, which creates some for a moment."""
    desk.paint()
    return wait_until_settled(desk.gdi_objects, "the number of GDI objects", pause=0.2)


def test_the_report_replaces_the_clipboards_content(panel):
    report = copy(panel)
    assert BEFORE not in report.text
    assert report.text.startswith("TO: support@ambrel.example\r\n")
    assert report.text.endswith("\r\n=== END DIAGNOSTICS ===\r\n")


def test_every_line_ends_with_cr_lf(panel):
    text = copy(panel).text
    assert text.count("\r\n") == text.count("\r") == text.count("\n") > 50


def test_the_report_is_copied_to_an_empty_clipboard(make_desk):
    desk = make_desk().start_fresh()
    assert desk.clipboard_text() is None
    press(desk)
    wait_until(lambda: copies(desk), "the line of the copy")
    assert desk.clipboard_text().startswith("TO: support@ambrel.example\r\n")


def test_the_logged_length_is_in_utf_16_units(desk):
    machine = Machine(desk)
    machine.set(SystemManufacturer="M\u00f6bel \U0001f5a5\U0001f5a5", SystemProductName="\u6a5f\u68b0")
    try:
        text = copy(desk).text
    finally:
        machine.restore()
    assert "M\u00f6bel \U0001f5a5\U0001f5a5 \u6a5f\u68b0\r\n" in text
    length = utf_16_length(text)
    assert len(text) < length < len(text.encode())
    assert copies(desk) == [f"Support bundle copied to clipboard ({length} chars)"]


def test_a_copy_logs_one_line_and_changes_nothing_else(panel):
    panel.wait_for_log("Gamma range: Windows default")
    log = panel.log()
    text = copy(panel).text
    time.sleep(0.8)  # Longer than the delay of a save.
    assert panel.log() == log + [f"Support bundle copied to clipboard ({len(text)} chars)"]
    assert panel.settings() == {} and panel.effects() == [] and panel.screen_is_plain()
    assert panel.message_boxes() == [] and panel.popup_visible()


def test_the_report_stays_on_the_clipboard_after_the_program_has_ended(panel):
    text = copy(panel).text
    assert panel.quit() == 0
    assert panel.clipboard_text() == text


def test_the_clipboard_is_closed_after_a_copy(panel):
    copy(panel)
    panel.set_clipboard_text("another program's text")
    assert panel.clipboard_text() == "another program's text"


# The button's rectangle

@pytest.mark.parametrize("x, y", [(24, 462), (295, 462), (24, 515), (295, 515)])
def test_the_button_reacts_up_to_its_corners(panel, x, y):
    panel.set_clipboard_text(BEFORE)
    panel.click_unit(x, y)
    wait_until(lambda: copies(panel), "the line of the copy")
    assert panel.clipboard_text() != BEFORE


@pytest.mark.parametrize("x, y", [(23, 489), (296, 489), (160, 461), (160, 516)])
def test_a_click_next_to_the_button_copies_nothing(panel, x, y):
    panel.set_clipboard_text(BEFORE)
    press_by_message(panel, x, y)
    assert copies(panel) == [] and failures(panel) == 0
    assert panel.clipboard_text() == BEFORE and button_state(panel) == "normal"


def test_the_main_panel_has_no_such_button(desk):
    desk.set_clipboard_text(BEFORE)
    desk.show()
    wait_for_panel(desk, "main")
    desk.click_unit(*SUPPORT)  # The power button is at this position.
    desk.wait_for_saves(1)
    assert copies(desk) == [] and desk.clipboard_text() == BEFORE


# The copied indication

def test_the_button_shows_copied_and_the_address(panel):
    assert button_state(panel) == "normal"
    before = button_of(panel)
    picture = while_copied(panel, lambda report: panel.popup_picture())
    title, hint = span(picture, TITLE_BOX, COPIED), span(picture, HINT_BOX, COPIED)
    assert matches_text(panel, title, "COPIED", LABEL, left=36)
    assert matches_text(panel, hint, "PASTE INTO AN EMAIL TO SUPPORT@AMBREL.EXAMPLE", SMALL, left=36)
    assert TITLE_COLOUR in colours_in(picture, TITLE_BOX) and HINT_COLOUR not in colours_in(picture, TITLE_BOX)
    assert HINT_COLOUR in colours_in(picture, HINT_BOX) and TITLE_COLOUR not in colours_in(picture, HINT_BOX)
    assert WHITE not in colours_in(picture, BUTTON)
    for x, y in ((160, 462), (160, 515), (24, 489), (295, 489)):
        assert picture.pixel(x, y) == COPIED_OUTLINE, (x, y)
    for x, y in ((160, 463), (160, 514), (25, 489), (294, 489)):
        assert picture.pixel(x, y) == COPIED, (x, y)
    for x, y in ((160, 461), (160, 516), (23, 489), (296, 489)):
        assert picture.pixel(x, y) == BACKGROUND, (x, y)
    wait_for_button_state(panel, "normal")
    assert button_of(panel) == before


def test_the_button_in_its_normal_state_has_its_colours_and_text(panel):
    picture = panel.popup_picture()
    assert picture.pixel(160, 462) == picture.pixel(24, 489) == picture.pixel(295, 489) == NORMAL_OUTLINE
    assert picture.pixel(160, 463) == picture.pixel(25, 489) == NORMAL
    found = span(picture, (30, 466, 290, 512), NORMAL)
    assert matches_text(panel, found, "COPY FEEDBACK FOR SUPPORT", LABEL) and abs(sum(found) / 2 - 160) <= 1
    assert WHITE in colours_in(picture, BUTTON) and TITLE_COLOUR not in colours_in(picture, BUTTON)


def wait_for_the_end(desk):
    """Waits until the copied indication has ended without input. Returns the time, and the longest time that a look at
    the button and the program's answer to a message took: the delays that the machine causes are no longer."""
    longest = 0.0

    def ended():
        nonlocal longest
        started = time.monotonic()
        shown = button_state(desk)
        desk.send_message(0)
        longest = max(longest, time.monotonic() - started)
        return shown == "normal"
    wait_until(ended, "the end of the copied indication", state=lambda: button_state(desk))
    return time.monotonic(), longest


def ends_in_time(desk, pressed, done):
    """Waits for the end of the indication of a press that was made at `pressed` and handled at `done`, and asserts the
    duration. False if the machine was too busy to prove that it is not too long."""
    ended, longest = wait_for_the_end(desk)
    assert ended - pressed >= COPIED_DURATION
    if ended - done <= COPIED_DURATION + MAX_DELAY:
        return True
    assert longest > MAX_ANSWER, f"the indication took {ended - done:.1f} s, and no answer more than {longest:.1f} s"
    return False


def repeat_while_busy(attempt):
    """Repeats attempt() until it returns True."""
    for _ in range(ATTEMPTS):
        if attempt():
            return
    pytest.fail(f"the machine was too busy in each of {ATTEMPTS} attempts")


def test_the_copied_indication_ends_after_five_seconds(panel):
    panel.move(10, 10)

    def press_once():
        pressed = time.monotonic()
        press_by_message(panel, *SUPPORT)
        done = time.monotonic()
        return copied_is_seen(panel, pressed) and ends_in_time(panel, pressed, done)
    repeat_while_busy(press_once)


def test_a_repaint_within_five_seconds_keeps_the_copied_indication(panel):
    """Without the repaint the button would keep the state that was drawn first."""
    def switch_a_row_near_the_end():
        since = time.monotonic()
        press_by_message(panel, *SUPPORT)
        copied_is_seen(panel, since)
        time.sleep(max(0.0, since + 4.3 - time.monotonic()))
        before = panel.popup_picture()
        press_by_message(panel, *SETTINGS_ROWS["ALLOW EXTREME DIM"])

        def redrawn():
            picture = panel.popup_picture()
            return picture.crop(*EXTREME_DIM_VALUE) != before.crop(*EXTREME_DIM_VALUE) and picture
        return wait_until(redrawn, "the row to be redrawn")
    picture = act_within(COPIED_DURATION, lambda: wait_for_button_state(panel, "normal") or switch_a_row_near_the_end)
    assert picture.pixel(*SURFACE) == COPIED


def stays_copied(desk, pressed, until):
    """Asserts that the button shows the indication of a press at `pressed` until a time. False if the machine was too
    busy for a look before the indication ended."""
    while time.monotonic() < until:
        shown = button_state(desk)
        if time.monotonic() >= pressed + COPIED_DURATION:
            return False
        assert shown == "copied"
        time.sleep(0.1)
    return True


def test_a_second_copy_restarts_the_five_seconds(panel):
    def press_twice():
        before, first = len(copies(panel)), time.monotonic()
        press_by_message(panel, *SUPPORT)
        if not (copied_is_seen(panel, first) and stays_copied(panel, first, first + 3.0)):
            return False
        second = time.monotonic()
        press_by_message(panel, *SUPPORT)
        done = time.monotonic()
        if done >= first + COPIED_DURATION or not stays_copied(panel, second, first + COPIED_DURATION + 1.5):
            return False
        in_time = ends_in_time(panel, second, done)
        assert len(copies(panel)) == before + 2
        return in_time
    repeat_while_busy(press_twice)


def test_the_button_is_up_to_date_when_the_panel_is_shown_again(panel):
    def reopen_panel(_report):
        panel.close_settings()
        wait_for_panel(panel, "main")
        panel.click_unit(*GEAR)
        wait_until(lambda: button_state(panel), "the support button")
        return button_state(panel)
    assert while_copied(panel, reopen_panel) == "copied"
    panel.close_settings()
    wait_for_panel(panel, "main")
    time.sleep(COPIED_DURATION)  # The indication ends while it is not visible.
    panel.click_unit(*GEAR)
    wait_for_panel(panel, "settings")
    assert button_state(panel) == "normal"


def test_the_copied_indication_is_kept_while_the_popup_is_hidden(panel):
    def hide_and_show(_report):
        panel.post_message(WM_CLOSE)
        panel.wait_for_popup(False)
        panel.open_popup()
        wait_until(lambda: button_state(panel), "the support button")
        return button_state(panel)
    assert while_copied(panel, hide_and_show) == "copied"
    wait_for_the_end(panel)


def test_the_end_of_the_copied_indication_does_not_show_a_hidden_popup(panel):
    copy(panel)
    panel.post_message(WM_CLOSE)
    panel.wait_for_popup(False)
    time.sleep(COPIED_DURATION + 0.5)
    assert not panel.popup_visible()
    panel.open_popup()
    wait_for_button_state(panel, "normal")


def test_the_button_reacts_where_it_is_drawn_at_a_larger_scaling(make_desk):
    desk = make_desk(dpi=192, size=(1920, 1200))
    desk.start_fresh()
    desk.show_settings()
    x, y = SURFACE
    wait_until(lambda: desk.popup_picture().pixel(2 * x, 2 * y) == NORMAL, "the button")
    press_by_message(desk, 2 * 24, 2 * 461)
    assert copies(desk) == []
    desk.click_unit(295, 515)
    wait_until(lambda: copies(desk), "the line of the copy")

    def copied():
        picture = desk.popup_picture()
        return picture.pixel(2 * x, 2 * y) == COPIED and picture
    assert wait_until(copied, "the copied indication").pixel(320, 2 * 462) == COPIED_OUTLINE


# A clipboard that another program keeps open

def test_a_locked_clipboard_is_logged_and_changes_neither_button_nor_clipboard(panel):
    panel.set_clipboard_text(BEFORE)
    before = button_of(panel)
    with panel.clipboard_held():
        panel.click_unit(*SUPPORT)
        wait_until(lambda: failures(panel) == 1, "the line of the failure")
        assert panel.log()[-1] == FAILED_LINE and copies(panel) == []
        assert not button_changes(panel, before)
    assert panel.clipboard_text() == BEFORE
    assert panel.message_boxes() == [] and panel.saves() == 0


def button_changes(desk, before):
    """Whether the button changes within half a second."""
    until = time.monotonic() + 0.5
    while time.monotonic() < until:
        if button_of(desk) != before:
            return True
        time.sleep(0.05)
    return False


def test_the_next_click_after_a_failure_copies(panel):
    with panel.clipboard_held():
        for times in (1, 2):
            panel.click_unit(*SUPPORT)
            wait_until(lambda: failures(panel) == times, "the line of the failure")
    report = while_copied(panel, lambda report: report)
    assert report.text.endswith("\r\n=== END DIAGNOSTICS ===\r\n")


def test_a_locked_clipboard_keeps_the_copied_indication(panel):
    def fail(report):
        with panel.clipboard_held():
            failed = failures(panel)
            panel.click_unit(*SUPPORT)
            wait_until(lambda: failures(panel) == failed + 1, "the line of the failure")
            time.sleep(0.3)  # The button must not change.
            return report.text, button_state(panel)
    text, shown = while_copied(panel, fail)
    assert shown == "copied"
    assert panel.clipboard_text() == text
    wait_for_the_end(panel)


# Repetition

def test_a_hundred_copies_leak_no_gdi_object(panel):
    while_copied(panel, lambda report: None)
    held = gdi_objects_while_idle(panel)
    assert held > 0
    before = len(copies(panel))
    for times in range(before + 1, before + 101):
        panel.click_unit(*SUPPORT)
        wait_until(lambda: len(copies(panel)) == times, f"copy {times}")
    assert gdi_objects_while_idle(panel) == held
    assert failures(panel) == 0
    text = panel.clipboard_text()
    assert f"({utf_16_length(text)} chars)" in copies(panel)[-1] and COPIED_LINE.fullmatch(copies(panel)[-1])
    wait_for_the_end(panel)
    assert panel_of(panel) == "settings"
    panel.close_settings()
    wait_for_panel(panel, "main")
    panel.click_unit(*POWER)
    panel.wait_for_colour(0.385, 1.0)


def test_failed_copies_leak_no_gdi_object(panel):
    with panel.clipboard_held():
        panel.click_unit(*SUPPORT)
        wait_until(lambda: failures(panel) == 1, "the line of the failure")
        held = gdi_objects_while_idle(panel)
        for _ in range(30):
            press_by_message(panel, *SUPPORT)
        assert failures(panel) == 31
        assert gdi_objects_while_idle(panel) == held
