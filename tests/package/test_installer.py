"""The installer and its uninstaller in the lab: what they add, keep, replace and remove, and how they fail."""

import re
import time

import pytest

import model
from ambrel_lab.hardware import Monitor
from ambrel_lab.waiting import TIMEOUT
from desk import MARKER, wait_for_value, wait_until
from failures import open_desk
from installer_desk import (APPROVED_KEY, FAILED, OTHER_SETUP, OTHER_VERSION, PUBLISHER, RUN_KEY, RUN_VALUE, STAND_IN,
                            UNINSTALL_KEY, UNINSTALLER, VERSION, InstallerDesk, difference)

WINDOWS_KEY = "HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion"
EVENING = model.PRESETS["EVENING"][:2]
MENU = "AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\Ambrel.lnk"
LAUNCH, START = "Launch Ambrel at startup", "Start Ambrel now"
INSTALLED = [UNINSTALLER, "ambrel.exe"]
ACCENTS = "C:\\Mes programmes\\Caf\u00e9 \u00e0 la cr\u00e8me\\Ambrel"


@pytest.fixture(scope="module", name="shared")
def shared_fixture(request, tmp_path_factory):
    with open_desk(InstallerDesk, request) as desk:
        desk.desktop.open()
        desk.make_setups(tmp_path_factory.mktemp("setups"))
        # Windows itself has these keys.
        desk.registry_set(UNINSTALL_KEY.rpartition("\\")[0] + "\\Other", "DisplayName", "Other")
        desk.registry_set(APPROVED_KEY, "Other", bytes(12))
        yield desk


@pytest.fixture(name="desk")
def desk_fixture(shared):
    """The shared desk without Ambrel's files and registry entries."""
    shared.clear()
    shared.hardware.monitors([])
    for folder in (shared.home, ACCENTS, "C:\\Elsewhere"):
        remove_folder(shared.prefix.path(folder))
    menu(shared).unlink(missing_ok=True)
    shared.registry_delete(UNINSTALL_KEY)
    shared.registry_delete(RUN_KEY, RUN_VALUE)
    shared.registry_delete(APPROVED_KEY, RUN_VALUE)
    shared.program_path = f"{shared.home}\\ambrel.exe"
    return shared


def remove_folder(path):
    if path.exists():
        for file in path.iterdir():
            file.unlink()
        path.rmdir()


def menu(desk):
    return desk.prefix.path(f"{desk.user_folder}\\{MENU}")


def switch_on_evening(desk):
    desk.choose("EVENING")
    desk.wait_for_colour(*EVENING)
    desk.wait_for_saves(1)


def starts(desk):
    return desk.events_text().count(MARKER)


def wait_for_new_start(desk, count):
    wait_until(lambda: starts(desk) == count, f"start {count} of the program")
    desk.wait_for_icon()


# A first install

def test_an_install_adds_only_its_entries_and_the_uninstaller_removes_them(desk):
    before = desk.files(), desk.registry("HKCU"), desk.registry("HKLM")
    assert desk.setup() == 0
    files, values = desk.files(), desk.registry("HKCU")
    new, gone = difference(before[0], files)
    folder = desk.home[3:].replace("\\", "/")
    program, uninstaller = len(desk.programs[VERSION]), files[f"{folder}/{UNINSTALLER}"]
    assert gone == {}
    shortcut = f"{desk.user_folder}\\{MENU}"[3:].replace("\\", "/")
    assert set(new) == {folder.rpartition("/")[0], folder, f"{folder}/ambrel.exe", f"{folder}/{UNINSTALLER}", shortcut}
    assert new[f"{folder}/ambrel.exe"] == program

    new, gone = difference(before[1], values)
    key = "HKEY_CURRENT_USER" + UNINSTALL_KEY[4:]
    escaped = desk.home.replace("\\", "\\\\")
    assert gone == {}
    assert new == {
        (key, None): "",
        (key, "DisplayName"): '"Ambrel"',
        (key, "DisplayVersion"): f'"{VERSION}"',
        (key, "DisplayIcon"): f'"{escaped}\\\\ambrel.exe"',
        (key, "Publisher"): f'"{PUBLISHER.name}"',
        (key, "URLInfoAbout"): f'"{PUBLISHER.homepage}"',
        (key, "HelpLink"): f'"{PUBLISHER.support}"',
        (key, "InstallLocation"): f'"{escaped}"',
        (key, "UninstallString"): f'"\\"{escaped}\\\\{UNINSTALLER}\\""',
        (key, "QuietUninstallString"): f'"\\"{escaped}\\\\{UNINSTALLER}\\" /S"',
        (key, "EstimatedSize"): f"dword:{(program + uninstaller) // 1024:08x}",
        (key, "NoModify"): "dword:00000001",
        (key, "NoRepair"): "dword:00000001",
    }
    assert f"{desk.home}\\ambrel.exe".encode("ascii") in menu(desk).read_bytes()
    assert desk.program_pids() == []

    desk.uninstall()
    assert difference(before[0], without_temporary(desk.files())) == ({}, {})
    assert difference(before[1], desk.registry("HKCU")) == ({}, {})
    assert difference(without_pending(before[2]), without_pending(desk.registry("HKLM"))) == ({}, {})


def without_temporary(files):
    """Leaves out the uninstaller's copy, which stays in the temporary folder until Windows cleans that up."""
    return {path: size for path, size in files.items() if "/Temp/~nsu" not in path}


def without_pending(values):
    """Leaves out two values: Wine updates its driver's date, and lets any user request deletions at the next start."""
    volatile = ("DriverDateData", "PendingFileRenameOperations")
    return {key: text for key, text in values.items() if key[1] not in volatile}


def test_the_pages_offer_a_start_now_and_a_launch_at_startup(desk):
    for change in (False, True):
        setup = desk.start_setup()
        first = desk.page("without administrator rights")
        assert first.buttons[1] == "&Next >"
        desk.press_page_button(first)
        desk.press_page_button(desk.page("suggested folder"))
        finish = desk.finish_page()
        assert desk.box(LAUNCH) == (False, True)
        assert desk.box(START) == (True, True)
        if change:
            desk.box(LAUNCH, True)
            desk.box(START, False)
        desk.press_page_button(finish)
        assert setup.wait(TIMEOUT) == 0
        assert desk.installed_version() == VERSION
        assert desk.run_entry() == (f"{desk.home}\\ambrel.exe" if change else None)
        if change:
            assert desk.program_pids() == []
        else:
            desk.wait_for_icon()
            desk.kill_program()
            desk.uninstall()


def test_the_program_recognises_the_installers_run_entry(desk):
    assert desk.setup("/AUTOSTART", "/RUN") == 0
    desk.wait_for_icon()
    assert desk.run_entry() == f"{desk.home}\\ambrel.exe"
    assert desk.desktop.request("registry-get", RUN_KEY, RUN_VALUE)["type"] == 1
    switch_on_evening(desk)
    assert desk.settings()["LaunchAtStart"] == "1"
    assert not [line for line in desk.log() if "utostart" in line]


def test_ambrel_can_be_installed_in_a_folder_with_spaces_and_accents(desk):
    assert desk.setup(folder=ACCENTS) == 0
    assert desk.listing(ACCENTS) == INSTALLED
    assert desk.listed("InstallLocation") == ACCENTS
    desk.program_path = f"{ACCENTS}\\ambrel.exe"
    desk.start()
    # An upgrade uses the existing folder.
    assert desk.setup(setup=OTHER_SETUP) == 0
    assert desk.installed_version(ACCENTS) == OTHER_VERSION
    assert desk.listing() is None
    wait_for_new_start(desk, 2)
    desk.uninstall(ACCENTS)
    assert desk.listing(ACCENTS) is None
    assert desk.program_pids() == []


# Upgrade and downgrade

def test_an_upgrade_closes_and_restarts_a_running_copy_and_restores_screen_and_backlight(desk):
    desk.hardware.monitors([Monitor("left", current=40)])
    desk.setup("/AUTOSTART")
    desk.write_settings("[Settings]\r\nPWMSafeMode=1\r\nAllowExtremeDim=1\r\n")
    desk.start()
    wait_until(lambda: desk.hardware.value("left") == 100, "the lock")
    switch_on_evening(desk)
    settings, entry = desk.settings(), desk.run_entry()
    first = desk.program_pids()

    assert desk.setup(setup=OTHER_SETUP) == 0
    wait_for_new_start(desk, 2)
    assert desk.installed_version() == OTHER_VERSION
    assert desk.listed("DisplayVersion") == OTHER_VERSION
    assert desk.listing() == INSTALLED
    assert len(desk.program_pids()) == 1 and desk.program_pids() != first
    # The first copy restored the display's brightness, and the second one locked it again.
    wait_until(lambda: desk.hardware.value("left") == 100, "the lock")
    assert [call.arguments["value"] for call in desk.hardware.calls("SetMonitorBrightness")] == [100, 40, 100]
    ended = [call for call in desk.magnification_calls() if call.function == "MagUninitialize"]
    assert len(ended) == 1 and ended[0].result == 1
    assert desk.screen_is_plain()
    assert desk.settings() == settings
    assert desk.run_entry() == entry == f"{desk.home}\\ambrel.exe"


def test_a_downgrade_installs_the_older_version(desk):
    assert desk.setup(setup=OTHER_SETUP) == 0
    assert desk.installed_version() == OTHER_VERSION
    assert desk.setup() == 0
    assert desk.installed_version() == VERSION
    assert desk.listed("DisplayVersion") == VERSION
    assert desk.program_pids() == []


def test_an_upgrade_asks_for_no_folder_and_keeps_the_run_entry(desk):
    desk.setup("/AUTOSTART")
    desk.start()
    setup = desk.start_setup(setup=OTHER_SETUP)
    first = desk.page("without administrator rights")
    assert first.buttons[1] == "&Install"
    desk.press_page_button(first)
    finish = desk.finish_page()
    # It is already running again and launches at startup: nothing is offered.
    wait_for_new_start(desk, 2)
    assert START not in finish.buttons.values()
    assert desk.box(LAUNCH) == (True, False)
    desk.press_page_button(finish)
    assert setup.wait(TIMEOUT) == 0
    assert desk.installed_version() == OTHER_VERSION
    assert desk.run_entry() == f"{desk.home}\\ambrel.exe"
    assert starts(desk) == 2


def test_an_unchecked_box_deletes_no_run_entry(desk):
    desk.setup()
    desk.registry_set(RUN_KEY, RUN_VALUE, "C:\\Other place\\ambrel.exe")
    setup = desk.start_setup(setup=OTHER_SETUP)
    desk.press_page_button(desk.page("without administrator rights"))
    finish = desk.finish_page()
    assert desk.box(LAUNCH) == (False, True)
    desk.box(START, False)
    desk.press_page_button(finish)
    assert setup.wait(TIMEOUT) == 0
    assert desk.run_entry() == "C:\\Other place\\ambrel.exe"
    assert desk.program_pids() == []


def test_an_install_into_another_folder_removes_the_old_files_and_updates_the_run_entry(desk):
    desk.setup("/AUTOSTART")
    assert desk.setup(setup=OTHER_SETUP, folder="C:\\Elsewhere") == 0
    assert desk.listing() is None
    assert desk.listing("C:\\Elsewhere") == INSTALLED
    assert desk.run_entry() == "C:\\Elsewhere\\ambrel.exe"
    desk.uninstall("C:\\Elsewhere")
    assert desk.run_entry() is None


def test_an_install_into_the_same_folder_in_another_spelling_keeps_the_new_files(desk):
    desk.setup("/AUTOSTART", folder="C:\\Elsewhere")
    assert desk.setup(setup=OTHER_SETUP, folder="C:\\windows\\..\\Elsewhere") == 0
    assert desk.listing("C:\\Elsewhere") == INSTALLED
    assert desk.installed_version("C:\\Elsewhere") == OTHER_VERSION
    assert desk.run_entry() == "C:\\Elsewhere\\ambrel.exe"


# A copy that blocks the installer

def install_stand_in(desk, name="ambrel.exe"):
    """Installs Ambrel and replaces its program file with a stand-in. Returns the path."""
    desk.setup()
    program = f"{desk.home}\\{name}"
    desk.prefix.put(desk.prefix.path(STAND_IN), program)
    return program


def test_a_copy_that_refuses_to_close_is_shown_and_a_silent_run_changes_nothing(desk):
    program = install_stand_in(desk)
    before = desk.prefix.path(program).read_bytes()
    with desk.stand_in("refuse", program=program) as copy:
        assert desk.setup(setup=OTHER_SETUP) == FAILED
        setup = desk.start_setup(setup=OTHER_SETUP)
        desk.press_page_button(desk.page("without administrator rights"))
        box = desk.page("cannot be closed from here")
        assert program in box.text and re.search(r"\(process \d+\)", box.text)
        assert "Quit from the menu of its tray icon" in box.text
        desk.press_button(box, 2)  # Cancel
        desk.press_button(desk.page("Nothing was changed"), 1)
        desk.press_page_button(desk.page("Not installed"), 2)
        assert setup.wait(TIMEOUT) == FAILED
        assert copy.poll() is None
        assert desk.prefix.path(program).read_bytes() == before
        assert desk.listing() == INSTALLED
        assert desk.listed("DisplayVersion") == VERSION


def test_the_installer_continues_once_the_user_has_quit_the_copy(desk):
    program = install_stand_in(desk)
    with desk.stand_in("refuse", program=program) as copy:
        setup = desk.start_setup(setup=OTHER_SETUP)
        desk.press_page_button(desk.page("without administrator rights"))
        box = desk.page("cannot be closed from here")
        copy.kill()
        copy.wait()
        desk.press_button(box, 4)  # Retry
        finish = desk.finish_page()
        assert desk.installed_version() == OTHER_VERSION
        desk.box(START, False)
        desk.press_page_button(finish)
        assert setup.wait(TIMEOUT) == 0


def test_the_installer_waits_for_a_copy_that_is_still_starting(desk):
    program = install_stand_in(desk)
    with desk.stand_in("starting", program=program) as copy:
        setup = desk.start_setup("/S", setup=OTHER_SETUP)
        unpacked = sorted([*INSTALLED, *(f"{file}.new" for file in INSTALLED)])
        wait_for_value(desk.listing, unpacked, "the files in the folder")
        time.sleep(1.0)  # The installer must not continue.
        assert setup.poll() is None
        assert desk.listing() == unpacked
        copy.stdin.close()
        assert setup.wait(TIMEOUT) == 0
    assert desk.installed_version() == OTHER_VERSION


def test_a_copy_that_never_opens_a_window_stops_a_silent_run(desk):
    program = install_stand_in(desk)
    with desk.stand_in("starting", program=program) as copy:
        assert desk.setup(setup=OTHER_SETUP) == FAILED
        assert copy.poll() is None
        assert desk.listing() == INSTALLED
        assert desk.listed("DisplayVersion") == VERSION


# Failures do not change the old version

def assert_old_version(desk):
    assert desk.installed_version() == VERSION
    assert desk.listing() == INSTALLED
    assert desk.listed("DisplayVersion") == VERSION


@pytest.mark.parametrize("file", INSTALLED)
def test_on_a_full_disk_the_running_version_keeps_running(desk, file):
    desk.setup()
    desk.start()
    switch_on_evening(desk)
    full = desk.prefix.path(f"{desk.home}\\{file}.new")
    full.symlink_to("/dev/full")
    assert desk.setup(setup=OTHER_SETUP) == FAILED
    full.unlink(missing_ok=True)
    assert_old_version(desk)
    # The running copy was not closed.
    assert starts(desk) == 1
    desk.wait_for_colour(*EVENING)


def test_a_program_whose_file_cannot_be_replaced_is_started_again(desk):
    desk.setup()
    desk.start()
    uninstaller = desk.prefix.path(f"{desk.home}\\{UNINSTALLER}").read_bytes()
    with desk.stand_in("hold", f"{desk.home}\\ambrel.exe"):
        assert desk.setup(setup=OTHER_SETUP) == FAILED
    wait_for_new_start(desk, 2)
    assert_old_version(desk)
    assert desk.prefix.path(f"{desk.home}\\{UNINSTALLER}").read_bytes() == uninstaller


def test_an_uninstaller_that_cannot_be_replaced_stays_and_removes_the_new_version(desk):
    desk.setup()
    with desk.stand_in("hold", f"{desk.home}\\{UNINSTALLER}"):
        assert desk.setup(setup=OTHER_SETUP) == 0
    assert desk.installed_version() == OTHER_VERSION
    assert desk.listing() == INSTALLED
    desk.uninstall()
    assert desk.listing() is None


def test_an_install_in_a_read_only_folder_fails_without_changes(desk):
    # No file can be created in this folder of the kernel.
    (desk.prefix.folder / "dosdevices" / "r:").symlink_to("/sys/kernel")
    before = desk.files()
    assert desk.setup(folder="R:\\Ambrel") == FAILED
    assert difference(before, desk.files()) == ({}, {})
    assert desk.registry_get(UNINSTALL_KEY, "DisplayName") is None


def test_a_cancelled_install_changes_nothing(desk):
    before = desk.files()
    setup = desk.start_setup()
    desk.press_page_button(desk.page("without administrator rights"))
    desk.press_page_button(desk.page("suggested folder"), 2)
    assert setup.wait(TIMEOUT) == 1
    assert difference(before, desk.files()) == ({}, {})
    assert desk.registry_get(UNINSTALL_KEY, "DisplayName") is None


@pytest.mark.parametrize("build, code", [(14392, FAILED), (14393, 0)])
def test_an_older_windows_than_the_program_needs_is_refused(desk, build, code):
    number = desk.registry_get(WINDOWS_KEY, "CurrentBuildNumber")
    desk.registry_set(WINDOWS_KEY, "CurrentBuildNumber", str(build))
    try:
        assert desk.setup() == code
    finally:
        desk.registry_set(WINDOWS_KEY, "CurrentBuildNumber", number)
    assert desk.listing() == (INSTALLED if code == 0 else None)


def test_only_one_setup_runs_at_a_time(desk):
    setup = desk.start_setup()
    page = desk.page("without administrator rights")
    assert desk.setup(setup=OTHER_SETUP) == FAILED
    desk.press_page_button(page, 2)
    assert setup.wait(TIMEOUT) == 1
    assert desk.listing() is None


# Removing

def test_uninstalling_a_running_copy_restores_the_screen_and_keeps_the_settings(desk):
    desk.setup("/AUTOSTART", "/RUN")
    desk.wait_for_icon()
    switch_on_evening(desk)
    settings = desk.settings()
    desk.registry_set(APPROVED_KEY, RUN_VALUE, bytes([3] + [0] * 11))
    desk.uninstall()
    assert desk.program_pids() == []
    assert desk.screen_is_plain()
    assert desk.listing() is None
    assert not menu(desk).exists()
    assert desk.run_entry() is None
    assert desk.registry_get(APPROVED_KEY, RUN_VALUE) is None
    assert settings["LaunchAtStart"] == "1"
    assert desk.settings() == {**settings, "LaunchAtStart": "0"}
    assert desk.events_path.exists()


@pytest.mark.parametrize("answer, kept", [(6, False), (7, True)], ids=["yes", "no"])
def test_the_uninstaller_asks_before_it_removes_settings(desk, answer, kept):
    desk.setup("/AUTOSTART")
    desk.write_settings("[Settings]\r\nLaunchAtStart=1\r\nPWMSafeMode=1\r\n")
    desk.write_events("a line\r\n")
    foreign = desk.settings_folder / "mine.txt"
    foreign.write_text("mine")
    neighbour = desk.prefix.path(desk.home) / "mine.txt"
    neighbour.write_text("mine")
    desk.start_uninstaller()
    desk.press_page_button(desk.page("asked before your settings are removed"))
    box = desk.page("Remove your settings and the event log too?")
    assert f"{desk.user_folder}\\AppData\\Roaming\\Ambrel2".lower() in box.text.lower()
    desk.press_button(box, answer)
    desk.press_page_button(desk.page("no longer on this computer"))
    desk.wait_for_uninstaller()
    assert desk.settings() == ({"LaunchAtStart": "0", "PWMSafeMode": "1"} if kept else {})
    assert desk.events_path.exists() == kept
    assert desk.run_entry() is None and desk.listed("DisplayName") is None and not menu(desk).exists()
    # Other files stay.
    assert foreign.read_text() == "mine"
    assert desk.listing() == ["mine.txt"]
    foreign.unlink()


def test_another_program_s_files_in_the_folder_stay(desk):
    folder = desk.prefix.path("C:\\Elsewhere")
    folder.mkdir()
    (folder / "uninstall.exe").write_text("another program's")
    desk.setup(folder="C:\\Elsewhere")
    desk.uninstall("C:\\Elsewhere")
    assert desk.listing("C:\\Elsewhere") == ["uninstall.exe"]
    assert (folder / "uninstall.exe").read_text() == "another program's"


def test_a_program_file_that_stays_open_stops_the_uninstaller_and_one_that_is_closed_soon_does_not(desk):
    desk.setup()
    desk.start()
    with desk.stand_in("hold", f"{desk.home}\\ambrel.exe"):
        desk.uninstall()
    wait_for_new_start(desk, 2)
    assert_old_version(desk)
    with desk.stand_in("hold", f"{desk.home}\\ambrel.exe") as holder:
        desk.start_uninstaller("/S")
        wait_until(lambda: desk.program_pids() == [], "the end of the program")
        time.sleep(0.5)  # The first attempts to delete the file fail; the uninstaller keeps trying for longer.
        assert desk.installed_version() == VERSION
        holder.stdin.close()
        desk.wait_for_uninstaller()
    assert desk.listing() is None


def test_a_run_entry_of_another_folder_stays(desk):
    desk.setup()
    for entry in (f"{desk.home} 2\\ambrel.exe", "C:\\Other place\\ambrel.exe"):
        desk.registry_set(RUN_KEY, RUN_VALUE, entry)
        desk.uninstall()
        assert desk.listing() is None
        assert desk.run_entry() == entry
        desk.setup()


def test_an_uninstall_does_not_close_a_copy_in_another_folder(desk):
    desk.setup()
    desk.program_path = "C:\\Ambrel\\ambrel.exe"
    desk.start()
    desk.uninstall()
    assert desk.listing() is None
    assert len(desk.program_pids()) == 1
    desk.wait_for_icon()


def test_a_copy_that_refuses_to_close_stops_the_uninstaller(desk):
    program = install_stand_in(desk)
    before = desk.registry("HKCU")
    with desk.stand_in("refuse", program=program) as copy:
        # Run in place, without its copy in the temporary folder, the uninstaller returns its own exit code.
        assert desk.desktop.run([f"{desk.home}\\{UNINSTALLER}", "/S", f"_?={desk.home}"], timeout=60) == FAILED
        assert desk.listing() == INSTALLED
        desk.uninstall()
        assert copy.poll() is None
        assert desk.listing() == INSTALLED
        assert difference(before, desk.registry("HKCU")) == ({}, {})
        assert menu(desk).exists()
        # Without /S the uninstaller reports it.
        desk.start_uninstaller()
        desk.press_page_button(desk.page("asked before your settings are removed"))
        desk.press_button(desk.page("cannot be closed from here"), 2)  # Cancel
        desk.press_page_button(desk.page("Nothing was removed"), 2)
        desk.wait_for_uninstaller()
        assert copy.poll() is None and desk.listing() == INSTALLED
