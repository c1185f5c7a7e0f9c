"""Launch at Startup: the registry value, its two switches, and its repair at start-up."""

import time
from contextlib import contextmanager

import pytest

from desk import MARKER, LabError, wait_until
from panels import show_settings

RUN_KEY, RUN_VALUE = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run", "Ambrel2"
PROGRAM = "C:\\Ambrel\\ambrel.exe"
ELSEWHERE = "C:\\Caf\u00e9 au lait\\ambrel.exe"
MENU_ITEM, ROW = "Launch at Startup", "LAUNCH AT STARTUP"
RESTORED = "Autostart entry missing (INI says ON) - restoring"
TEXT, EXPANDABLE_TEXT, BINARY, NUMBER, LONG_NUMBER = 1, 2, 3, 4, 11
ON, OFF = {"LaunchAtStart": 1}, {"LaunchAtStart": 0}


def pointed_at(path):
    return f"Autostart entry pointed at '{path}' - rewriting to current exe"


def wide(text):
    return text.encode("utf-16-le")


def raw_entry(desk):
    """(type, bytes) of the value in the registry; None if it does not exist."""
    found = desk.desktop.facts("registry-get", RUN_KEY, RUN_VALUE)
    return found and (found["type"], bytes.fromhex(found["hex"]))


def assert_entry(desk, path=PROGRAM):
    """Asserts that the value is the path, without quotes and with a terminating zero."""
    assert raw_entry(desk) == (TEXT, wide(path + "\0"))


@pytest.fixture(name="start_with")
def start_with_fixture(file_desk):
    """Starts the program with a registry value and settings."""
    def start(value=None, settings=None):
        if file_desk.program_running():
            file_desk.kill_program()
        file_desk.registry_delete(RUN_KEY, RUN_VALUE)
        if value is not None:
            file_desk.registry_set(RUN_KEY, RUN_VALUE, value)
        file_desk.start_fresh(settings)
        return file_desk
    yield start
    file_desk.registry_delete(RUN_KEY, RUN_VALUE)


@contextmanager
def read_only_run_key(desk):
    """Context in which the Run key is read-only."""
    program = "C:\\lab\\grant_key_access.exe"
    desk.prefix.put(desk.build_dir / "unit" / "grant_key_access.exe", program)

    def grant(access):
        assert desk.desktop.run([program, RUN_KEY.partition("\\")[2], access]) == 0
    grant("read")
    try:
        with pytest.raises(LabError):
            desk.registry_set(RUN_KEY, "Other", "C:\\other.exe")
        yield
    finally:
        grant("all")


def repair_lines(desk):
    return [line for line in desk.log() if "utostart" in line]


def switch(desk, control):
    saves = desk.saves()
    if control == "menu":
        desk.menu(MENU_ITEM)
        desk.wait_for_saves(saves + 1)
    else:
        show_settings(desk)
        desk.flip(ROW)


# The two switches

@pytest.mark.parametrize("control", ["row", "menu"])
def test_the_option_writes_and_deletes_the_entry(start_with, control):
    desk = start_with()
    assert raw_entry(desk) is None
    switch(desk, control)
    assert_entry(desk)
    assert desk.settings()["LaunchAtStart"] == "1"
    switch(desk, control)
    assert raw_entry(desk) is None
    assert desk.settings()["LaunchAtStart"] == "0"
    assert desk.saves() == 2
    assert repair_lines(desk) == []


def test_row_and_menu_switch_the_same_entry(start_with):
    desk = start_with()
    switch(desk, "row")
    assert_entry(desk)
    switch(desk, "menu")
    assert raw_entry(desk) is None
    assert desk.settings()["LaunchAtStart"] == "0"


def test_the_menu_ticks_the_option_while_it_is_on(start_with):
    desk = start_with()
    plain = desk.menu_picture()
    desk.menu(MENU_ITEM)
    desk.wait_for_saves(1)
    ticked = desk.menu_picture()
    # The tick is in the left column of the first row; everything else is equal.
    assert ticked.crop(0, 0, 20, 24) != plain.crop(0, 0, 20, 24)
    assert ticked.crop(20, 0, plain.width, plain.height) == plain.crop(20, 0, plain.width, plain.height)
    assert ticked.crop(0, 24, 20, plain.height) == plain.crop(0, 24, 20, plain.height)


def test_the_option_can_be_switched_off_after_another_program_deleted_the_entry(start_with):
    desk = start_with()
    switch(desk, "menu")
    desk.registry_delete(RUN_KEY, RUN_VALUE)
    switch(desk, "menu")
    assert raw_entry(desk) is None
    assert desk.settings()["LaunchAtStart"] == "0"


def test_other_entries_are_unchanged(start_with):
    desk = start_with()
    desk.registry_set(RUN_KEY, "Other", "C:\\other.exe")
    switch(desk, "menu")
    switch(desk, "menu")
    assert desk.registry_get(RUN_KEY, "Other") == "C:\\other.exe"
    desk.registry_delete(RUN_KEY, "Other")


# Sign-in

def sign_out_and_in(desk):
    desk.end_session()
    desk.wait_for_exit()
    desk.program = None
    desk.sign_in()


def wait_until_started(desk, starts):
    desk.wait_for_icon()
    wait_until(lambda: desk.events_text().count(MARKER) == starts, f"start {starts}")
    desk.loaded()


def test_with_the_option_on_the_program_starts_at_sign_in(make_desk):
    desk = make_desk().start_fresh()
    desk.show_settings()
    desk.flip(ROW)
    sign_out_and_in(desk)
    wait_until_started(desk, 2)
    assert len(desk.program_pids()) == 1
    assert not desk.popup_visible()
    assert repair_lines(desk) == []
    assert_entry(desk)
    # Its popup opens, and the option can be turned off there.
    desk.show_settings()
    desk.flip(ROW)
    assert raw_entry(desk) is None
    sign_out_and_in(desk)
    time.sleep(1.0)  # A program starts within half of this time.
    assert desk.program_pids() == []


def test_the_entry_follows_the_program_to_a_folder_with_a_blank_and_an_accent(make_desk):
    desk = make_desk().start_fresh()
    desk.menu(MENU_ITEM)
    desk.wait_for_saves(1)
    assert desk.quit() == 0
    old, new = desk.prefix.path(PROGRAM), desk.prefix.path(ELSEWHERE)
    new.parent.mkdir()
    old.rename(new)
    desk.program_path = ELSEWHERE
    desk.start()
    desk.wait_for_log(pointed_at(PROGRAM))
    assert_entry(desk, ELSEWHERE)
    # Windows starts it from there.
    sign_out_and_in(desk)
    wait_until_started(desk, 3)
    assert repair_lines(desk) == []
    desk.kill_program()
    # After it is moved back, the log contains the path with its accent.
    new.rename(old)
    desk.program_path = PROGRAM
    desk.start()
    desk.wait_for_log(pointed_at(ELSEWHERE))
    assert f"'{ELSEWHERE}'".encode() in desk.events_path.read_bytes()
    assert_entry(desk)


# The repair at start-up

def test_the_repair_follows_the_gamma_range_and_is_the_last_line_of_a_start(start_with):
    desk = start_with(settings=ON)
    desk.wait_for_log(RESTORED)
    assert desk.log()[-2:] == ["Gamma range: Windows default", RESTORED]


def test_an_entry_that_is_missing_is_restored(start_with):
    desk = start_with(settings=ON)
    desk.wait_for_log(RESTORED)
    assert_entry(desk)


def test_the_registry_overrides_the_file_and_the_next_save_stores_it(start_with):
    desk = start_with(PROGRAM, OFF)
    desk.loaded()
    assert repair_lines(desk) == []
    assert_entry(desk)
    time.sleep(0.8)  # Longer than the delay of a save: the repair saves nothing.
    assert desk.saves() == 0
    assert desk.settings()["LaunchAtStart"] == "0"
    desk.press_power()
    desk.wait_for_saves(1)
    assert desk.settings()["LaunchAtStart"] == "1"
    desk.menu(MENU_ITEM)
    desk.wait_for_saves(2)
    assert raw_entry(desk) is None
    assert desk.settings()["LaunchAtStart"] == "0"


def test_without_option_and_entry_nothing_happens(start_with):
    desk = start_with(settings=OFF)
    desk.wait_for_log("Gamma range: Windows default")
    assert raw_entry(desk) is None
    assert repair_lines(desk) == []


@pytest.mark.parametrize("path", [PROGRAM.upper(), PROGRAM.lower()])
def test_another_letter_case_is_rewritten_without_a_log_line(start_with, path):
    desk = start_with(path, OFF)
    desk.wait_for_log("Gamma range: Windows default")
    assert_entry(desk)
    assert repair_lines(desk) == []


@pytest.mark.parametrize("value, logged", [
    pytest.param("D:\\Old place\\ambrel.exe", "D:\\Old place\\ambrel.exe", id="another folder"),
    pytest.param(f'"{PROGRAM}"', f'"{PROGRAM}"', id="quotes"),
    pytest.param(PROGRAM + " --hidden", PROGRAM + " --hidden", id="arguments"),
    pytest.param("C:\\\u6a5f\u68b0\\\U0001f5a5.exe", "C:\\\u6a5f\u68b0\\\U0001f5a5.exe", id="other characters"),
    pytest.param((EXPANDABLE_TEXT, wide("%windir%\\x.exe\0")), "%windir%\\x.exe", id="not expanded"),
    pytest.param((TEXT, wide("C:\\open end")), "C:\\open end", id="unterminated"),
    pytest.param((TEXT, wide("C:\\a%s%n\0")), "C:\\a%s%n", id="formats"),
])
def test_an_entry_that_points_elsewhere_is_logged_and_rewritten(start_with, value, logged):
    desk = start_with(value, OFF)
    desk.wait_for_log(pointed_at(logged))
    assert repair_lines(desk) == [pointed_at(logged)]
    assert_entry(desk)


@pytest.mark.parametrize("value", [
    pytest.param(7, id="number"),
    pytest.param((LONG_NUMBER, bytes(8)), id="long number"),
    pytest.param((BINARY, wide(PROGRAM + "\0")), id="binary"),
    pytest.param("", id="empty"),
    pytest.param((TEXT, b""), id="no byte"),
    pytest.param("C:\\" + "x" * 2045, id="4 KB"),
    pytest.param("C:\\" + "x" * 1020, id="one letter more than is read"),
])
def test_an_entry_that_is_no_path_counts_as_missing_also_with_the_file_saying_off(start_with, value):
    desk = start_with(value, OFF)
    desk.wait_for_log(RESTORED)
    assert repair_lines(desk) == [RESTORED]
    assert_entry(desk)


def test_the_longest_entry_is_logged_up_to_the_maximum_line_length(start_with):
    # 1,023 characters including the terminating zero; a line of the log has at most 511.
    desk = start_with("C:\\" + "x" * 1019, OFF)
    desk.wait_for_log(("Autostart entry pointed at 'C:\\" + "x" * 1019)[:511])
    assert_entry(desk)


def test_without_a_run_key_the_option_is_stored_in_the_file_only(start_with, file_desk):
    desk = file_desk
    if desk.program_running():
        desk.kill_program()
    desk.registry_delete(RUN_KEY)
    try:
        desk.start_fresh(ON)
        desk.wait_for_log(RESTORED)
        assert raw_entry(desk) is None
        for flag in ("0", "1"):
            switch(desk, "row")
            assert desk.settings()["LaunchAtStart"] == flag
            assert raw_entry(desk) is None
        assert desk.message_boxes() == []
    finally:
        desk.registry_set(RUN_KEY, "Temporary", 1)
        desk.registry_delete(RUN_KEY, "Temporary")


@pytest.mark.parametrize("control", ["row", "menu"])
def test_with_a_read_only_run_key_the_option_is_stored_in_the_file_only(start_with, control):
    desk = start_with()
    with read_only_run_key(desk):
        for flag in ("1", "0", "1"):
            switch(desk, control)
            assert desk.settings()["LaunchAtStart"] == flag
            assert raw_entry(desk) is None
        assert repair_lines(desk) == []
        assert desk.message_boxes() == []
        # The program continues to work.
        if control == "row":
            desk.close_settings()
        desk.press_power()
        desk.wait_for_colour(0.385, 1.0)
        desk.wait_for_saves(4)
    # Now that the key is writable, the option writes the entry when it is turned on again.
    switch(desk, "menu")
    switch(desk, "menu")
    assert_entry(desk)


def test_an_entry_in_a_read_only_run_key_stays_and_turns_the_option_on_again(start_with):
    desk = start_with()
    desk.registry_set(RUN_KEY, RUN_VALUE, ELSEWHERE)
    with read_only_run_key(desk):
        for _ in range(2):
            desk.restart()
            desk.wait_for_log(pointed_at(ELSEWHERE))
            desk.press_power()
            desk.wait_for_saves(1)
            assert desk.settings()["LaunchAtStart"] == "1"
            switch(desk, "menu")
            assert desk.settings()["LaunchAtStart"] == "0"
            assert raw_entry(desk) == (TEXT, wide(ELSEWHERE + "\0"))
        assert repair_lines(desk) == [pointed_at(ELSEWHERE)]
        assert desk.message_boxes() == []
    desk.restart()
    desk.wait_for_log(pointed_at(ELSEWHERE))
    assert_entry(desk)


def test_with_a_read_only_run_key_a_missing_entry_stays_missing_and_the_option_stays_on(start_with):
    desk = start_with(settings=ON)
    desk.wait_for_log(RESTORED)
    desk.registry_delete(RUN_KEY, RUN_VALUE)
    with read_only_run_key(desk):
        desk.restart()
        desk.wait_for_log(RESTORED)
        assert raw_entry(desk) is None
        desk.press_power()
        desk.wait_for_saves(1)
        assert desk.settings()["LaunchAtStart"] == "1"
        assert desk.message_boxes() == []
