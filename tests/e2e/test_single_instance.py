"""Single instance: a second start shows the popup of the first instance and exits."""

import time

import pytest

import model
from desk import MARKER, TIMEOUT, wait_until

UNKNOWN = "--unknown-option"
MUTEX = "Global\\Ambrel2SingleInstance"


def second_start(desk, *arguments):
    """Runs a second instance until it exits. Returns its exit code."""
    first = desk.program
    try:
        return desk.start_program(*arguments).wait(TIMEOUT)
    finally:
        desk.program = first


def test_a_second_start_shows_the_popup_of_the_first_and_exits_with_0(desk):
    assert not desk.popup_visible()
    assert second_start(desk) == 0
    desk.wait_for_popup()
    assert len(desk.program_pids()) == 1


def test_a_second_start_brings_the_popup_to_the_foreground(desk):
    with desk.other_window():
        assert second_start(desk) == 0
        desk.wait_for_popup()
        desk.wait_for_foreground()


def test_a_second_start_writes_no_line_into_the_log(desk):
    desk.loaded()
    before = desk.events_path.read_bytes()
    assert second_start(desk) == 0
    desk.wait_for_popup()
    assert desk.events_path.read_bytes() == before


def test_a_second_start_does_not_change_the_filter_or_the_settings(desk):
    desk.choose("EVENING")
    desk.wait_for_saves(1)
    calls = len(desk.magnification_calls())
    settings = desk.settings_text()
    assert second_start(desk) == 0
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])
    assert len(desk.magnification_calls()) == calls
    assert desk.settings_text() == settings
    assert desk.tray_tooltip() == "Ambrel - ON (2700K, 85%)"


def test_a_second_start_adds_no_icon(desk):
    assert second_start(desk) == 0
    assert len(desk.tray_icons()) == 1


def test_a_second_start_while_the_popup_is_open_leaves_it_open(desk):
    rect = desk.open_popup()
    assert second_start(desk) == 0
    time.sleep(0.4)  # Longer than the interval of the popup's foreground check.
    assert desk.popup_visible()
    assert desk.popup_rect() == rect


def test_a_copy_in_another_folder_is_a_second_start_too(desk):
    copy = desk.prefix.path("C:\\Other place\\renamed.exe")
    copy.parent.mkdir(exist_ok=True)
    copy.write_bytes(desk.prefix.path(desk.program_path).read_bytes())
    assert desk.desktop.start(["C:\\Other place\\renamed.exe"]).wait(TIMEOUT) == 0
    desk.wait_for_popup()


@pytest.mark.parametrize("arguments", [[UNKNOWN], ["", "\"", "caf\u00e9"], ["x" * 30000]])
def test_a_second_start_accepts_any_command_line(desk, arguments):
    assert second_start(desk, *arguments) == 0
    desk.wait_for_popup()


def test_second_starts_during_the_first_start_exit_with_0(desk):
    desk.kill_program()
    desk.write_events(None)
    started = [desk.start_program() for _ in range(3)]
    wait_until(lambda: sum(child.poll() is None for child in started) == 1, "a single instance")
    assert sorted(child.poll() is None for child in started) == [False, False, True]
    assert [child.returncode for child in started if child.returncode is not None] == [0, 0]
    desk.wait_for_icon()
    desk.loaded()
    assert desk.events_text().count(MARKER) == 1
    desk.press_power()
    desk.wait_for_colour(model.DEFAULT_INTENSITY, 1.0)


def test_a_start_after_quit_is_a_first_instance(desk):
    assert desk.quit() == 0
    desk.start()
    assert desk.program.poll() is None
    assert desk.events_text().count(MARKER) == 2


def test_a_start_after_a_crash_is_a_first_instance(desk):
    desk.kill_program()
    desk.start()
    assert desk.program.poll() is None
    assert desk.events_text().count(MARKER) == 2


def test_a_second_start_exits_while_the_first_has_no_window_yet(make_desk):
    # A missing library delays the first start with a message box before its window is created.
    desk = make_desk(magnification="missing")
    desk.start_program()
    box = desk.wait_for_message_box()
    assert desk.window_facts() is None
    assert second_start(desk) == 0
    assert desk.program.poll() is None
    desk.press_button(box)
    desk.wait_for_icon()
    assert not desk.popup_visible()
    assert desk.events_text().count(MARKER) == 1


def test_a_start_while_an_unrelated_program_holds_the_mutex_shows_nothing_and_changes_nothing(file_desk):
    desk = file_desk
    desk.clear({"UseLegacyGamma": 1})
    desk.write_events("an older run\r\n")
    settings, windows = desk.settings_text(), desk.windows()
    with desk.mutex_held(MUTEX):
        assert desk.start_program().wait(TIMEOUT) == 0
        assert not desk.program_running()
        assert desk.windows() == windows
        assert not desk.tray_icons()
        assert desk.events_text() == "an older run\n"
        assert desk.settings_text() == settings
        assert not desk.magnification_calls()
        assert desk.screen_is_plain()
    desk.start()
    desk.press_power()
    desk.wait_for_legacy_colour(model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
    assert desk.events_text().count(MARKER) == 1
