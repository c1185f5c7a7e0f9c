"""The SETTINGS section of the support report: the switches, the autostart entry and the settings file."""

import pytest

from bundle import copy, copy_without_log
from desk import wait_until

RUN_KEY, RUN_VALUE = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run", "Ambrel2"
FOLDERS = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\"
PROGRAM = "C:\\Ambrel\\ambrel.exe"
SETTINGS_FILE = "Settings file:    C:\\users\\ambrel\\AppData\\Roaming\\Ambrel2\\settings.ini"
NOT_SET = ["Autostart key:    not set"]
STALE, OTHER = "NO - STALE PATH", "NO - DIFFERENT COPY"
EXPANDABLE_TEXT, TEXT, BINARY, NUMBER = 2, 1, 3, 7


def switches(launch="OFF", extreme="OFF", legacy="OFF", pwm="OFF"):
    return [f"Launch at start:  {launch}", f"Allow extreme dim:{extreme}", f"Legacy gamma:     {legacy}",
            f"PWM-Safe mode:    {pwm}"]


def entry(value, exists="yes", own="yes"):
    return [f"Autostart key:    {value}", f"  target exists:  {exists}", f"  is this exe:    {own}"]


def settings(desk):
    return copy(desk).section("SETTINGS")


@pytest.fixture(name="start_with")
def start_with_fixture(file_desk):
    """Starts the program with settings and without an autostart entry."""
    def start(**values):
        if file_desk.program_running():
            file_desk.kill_program()
        file_desk.registry_delete(RUN_KEY, RUN_VALUE)
        return file_desk.start_fresh(values or None)
    yield start
    file_desk.registry_delete(RUN_KEY, RUN_VALUE)


# The switches

def test_after_a_first_start_every_switch_is_off(start_with):
    assert settings(start_with()) == [*switches(), *NOT_SET, SETTINGS_FILE]


@pytest.mark.parametrize("values, lines", [
    ({"AllowExtremeDim": 1}, switches(extreme="ON")),
    ({"UseLegacyGamma": 1}, switches(legacy="ON  (user-chosen)")),
    ({"UseLegacyGamma": 1, "LegacyModeAutoSet": 1}, switches(legacy="ON  (auto-fallback on this hardware)")),
    ({"LegacyModeAutoSet": 1}, switches()),
    ({"PWMSafeMode": 1}, switches(pwm="ON")),
], ids=str)
def test_each_switch_of_the_settings_file_is_reported(start_with, values, lines):
    assert settings(start_with(**values)) == [*lines, *NOT_SET, SETTINGS_FILE]


def test_launch_at_start_is_reported_with_its_entry(start_with):
    desk = start_with()
    desk.show_settings()
    desk.flip("LAUNCH AT STARTUP")
    assert settings(desk) == [*switches(launch="ON"), *entry(PROGRAM), SETTINGS_FILE]
    desk.flip("LAUNCH AT STARTUP")
    assert settings(desk) == [*switches(), *NOT_SET, SETTINGS_FILE]


def test_a_row_that_was_just_clicked_is_reported(start_with):
    desk = start_with()
    desk.show_settings()
    desk.flip("ALLOW EXTREME DIM")
    desk.flip("LEGACY MODE")
    assert settings(desk) == [*switches(extreme="ON", legacy="ON  (user-chosen)"), *NOT_SET, SETTINGS_FILE]
    desk.flip("LEGACY MODE")
    assert settings(desk) == [*switches(extreme="ON"), *NOT_SET, SETTINGS_FILE]


def test_a_fallback_in_this_run_is_reported_as_automatic(file_desk):
    desk = file_desk.start_fresh(effect=(87,))
    for preset in ("DAY", "EVENING"):
        desk.choose(preset)
    desk.press_button(desk.wait_for_message_box())
    desk.wait_for_setting("LegacyModeAutoSet", "1")
    report = copy(desk)
    assert report.value("SETTINGS", "Legacy gamma:     ") == "ON  (auto-fallback on this hardware)"
    assert report.value("FILTER STATE", "Pipeline:       ") == "Legacy gamma (SetDeviceGammaRamp)"


# The autostart entry. The start repairs it, so the tests change it while the program runs.

@pytest.mark.parametrize("value, lines", [
    pytest.param(PROGRAM, entry(PROGRAM), id="this program"),
    pytest.param(PROGRAM.upper(), entry(PROGRAM.upper()), id="this program in upper case"),
    pytest.param(PROGRAM.lower(), entry(PROGRAM.lower()), id="this program in lower case"),
    pytest.param("C:\\windows\\notepad.exe", entry("C:\\windows\\notepad.exe", own=OTHER), id="another program"),
    pytest.param("D:\\Old place\\ambrel.exe", entry("D:\\Old place\\ambrel.exe", STALE, OTHER), id="stale"),
    pytest.param("C:\\Ambrel", entry("C:\\Ambrel", own=OTHER), id="a folder"),
    pytest.param("C:\\Ambrel\\.\\ambrel.exe", entry("C:\\Ambrel\\.\\ambrel.exe", own=OTHER), id="another path to it"),
    pytest.param(f'"{PROGRAM}"', entry(f'"{PROGRAM}"', STALE, OTHER), id="quotes"),
    pytest.param(PROGRAM + " --hidden", entry(PROGRAM + " --hidden", STALE, OTHER), id="arguments"),
    pytest.param("C:\\\u6a5f\u68b0\\\U0001f5a5 %s%n.exe",
                 entry("C:\\\u6a5f\u68b0\\\U0001f5a5 %s%n.exe", STALE, OTHER), id="other characters and formats"),
    pytest.param((EXPANDABLE_TEXT, "%windir%\\notepad.exe\0".encode("utf-16-le")),
                 entry("%windir%\\notepad.exe", STALE, OTHER), id="not expanded"),
    pytest.param((TEXT, PROGRAM.encode("utf-16-le")), entry(PROGRAM), id="unterminated"),
    pytest.param("C:\\" + "x" * 1019, entry("C:\\" + "x" * 1019, STALE, OTHER), id="the maximum length"),
    pytest.param("C:\\" + "x" * 1020, NOT_SET, id="one character more"),
    pytest.param("C:\\" + "x" * 2045, NOT_SET, id="4 KB"),
    pytest.param(NUMBER, NOT_SET, id="number"),
    pytest.param((BINARY, (PROGRAM + "\0").encode("utf-16-le")), NOT_SET, id="binary"),
    pytest.param("", NOT_SET, id="empty"),
])
def test_the_current_entry_is_reported(start_with, value, lines):
    desk = start_with()
    desk.registry_set(RUN_KEY, RUN_VALUE, value)
    assert settings(desk) == [*switches(), *lines, SETTINGS_FILE]


def test_another_copy_of_the_program_is_reported_as_different(start_with):
    desk = start_with()
    elsewhere = "C:\\Downloads\\ambrel.exe"
    desk.prefix.put(desk.build_dir / "ambrel.exe", elsewhere)
    desk.registry_set(RUN_KEY, RUN_VALUE, elsewhere)
    assert settings(desk) == [*switches(), *entry(elsewhere, own=OTHER), SETTINGS_FILE]


def test_an_entry_for_a_moved_program_file_is_reported_as_stale(start_with):
    desk = start_with()
    desk.registry_set(RUN_KEY, RUN_VALUE, PROGRAM)
    path = desk.prefix.path(PROGRAM)
    aside = path.with_suffix(".aside")
    path.rename(aside)
    try:
        assert settings(desk) == [*switches(), *entry(PROGRAM, STALE), SETTINGS_FILE]
    finally:
        aside.rename(path)


def test_without_a_run_key_the_entry_is_reported_as_not_set(start_with):
    desk = start_with()
    desk.registry_delete(RUN_KEY)
    try:
        assert settings(desk) == [*switches(), *NOT_SET, SETTINGS_FILE]
    finally:
        desk.registry_set(RUN_KEY, "Temporary", 1)
        desk.registry_delete(RUN_KEY, "Temporary")


# The settings file

@pytest.mark.parametrize("folder", ["Q:\\nowhere", "\\\\nobody\\nothing"])
def test_without_a_settings_folder_there_is_no_settings_line_and_no_log_file(make_desk, folder):
    desk = make_desk()
    for key in ("User Shell Folders", "Shell Folders"):
        desk.registry_set(FOLDERS + key, "AppData", folder)
    desk.start()
    report = copy_without_log(desk)
    assert report.section("SETTINGS") == [*switches(), *NOT_SET]
    assert list(report.sections())[-2:] == ["SETTINGS", "EVENT LOG"]
    assert "PERSISTED" not in report.text
    lines = report.section("EVENT LOG")
    assert lines[0].endswith("] Ambrel Windows v2.23 starting")
    assert lines[-1].endswith("] Gamma range: Windows default") and not any("settings" in line for line in lines)
    assert f"=== EVENT LOG (most recent {len(lines)}, oldest first) ===\r\n" in report.text
    assert report.text.endswith(lines[-1] + "\r\n\r\n=== END DIAGNOSTICS ===\r\n")


def test_a_settings_path_with_any_characters_is_unchanged(make_desk):
    desk = make_desk()
    folder = "C:\\Utilisateurs\\Zo\u00eb \u6a5f"
    desk.prefix.path(folder).mkdir(parents=True)
    for key in ("User Shell Folders", "Shell Folders"):
        desk.registry_set(FOLDERS + key, "AppData", folder)
    desk.start()
    report = copy_without_log(desk)
    assert report.section("SETTINGS")[-1] == f"Settings file:    {folder}\\Ambrel2\\settings.ini"
    wait_until((desk.prefix.path(folder) / "Ambrel2" / "events.log").exists, "the log in the same folder")
