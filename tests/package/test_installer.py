"""The installer and its uninstaller in the lab: what they add, keep, replace and remove, and how they fail."""

import re
import time

import pytest

import model
from ambrel_lab.hardware import Monitor
from ambrel_lab.waiting import LIMIT
from desk import MARKER, wait_until
from failures import open_desk
from house import (APPROVED_KEY, FAILED, OTHER_SETUP, OTHER_VERSION, PUBLISHER, RUN_KEY, RUN_VALUE, SETUP, STAND_IN,
                   UNINSTALL_KEY, UNINSTALLER, VERSION, House, difference)

WINDOWS_KEY = "HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion"
EVENING = model.PRESETS["EVENING"][:2]
MENU = "AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs\\Ambrel.lnk"
LAUNCH, START = "Launch Ambrel at startup", "Start Ambrel now"
INSTALLED = [UNINSTALLER, "ambrel.exe"]
ACCENTS = "C:\\Mes programmes\\Caf\u00e9 \u00e0 la cr\u00e8me\\Ambrel"


@pytest.fixture(scope="module", name="shared")
def shared_fixture(request, tmp_path_factory):
    with open_desk(House, request) as house:
        house.desktop.open()
        house.make_setups(tmp_path_factory.mktemp("setups"))
        # Windows itself has these keys.
        house.registry_set(UNINSTALL_KEY.rpartition("\\")[0] + "\\Other", "DisplayName", "Other")
        house.registry_set(APPROVED_KEY, "Other", bytes(12))
        yield house


@pytest.fixture(name="house")
def house_fixture(shared):
    """The shared desktop with nothing of Ambrel's on it."""
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


def menu(house):
    return house.prefix.path(f"{house.user_folder}\\{MENU}")


def switch_on_evening(house):
    house.choose("EVENING")
    house.wait_for_colour(*EVENING)
    house.wait_for_saves(1)


def starts(house):
    return house.events_text().count(MARKER)


def wait_for_new_start(house, count):
    wait_until(lambda: starts(house) == count, f"start {count} of the program")
    house.wait_for_icon()


# A first install

def test_an_install_adds_its_own_entries_and_the_uninstaller_removes_them_all(house):
    before = house.files(), house.registry("HKCU"), house.registry("HKLM")
    assert house.setup() == 0
    files, values = house.files(), house.registry("HKCU")
    new, gone = difference(before[0], files)
    folder = house.home[3:].replace("\\", "/")
    program, uninstaller = len(house.programs[VERSION]), files[f"{folder}/{UNINSTALLER}"]
    assert gone == {}
    shortcut = f"{house.user_folder}\\{MENU}"[3:].replace("\\", "/")
    assert set(new) == {folder.rpartition("/")[0], folder, f"{folder}/ambrel.exe", f"{folder}/{UNINSTALLER}", shortcut}
    assert new[f"{folder}/ambrel.exe"] == program

    new, gone = difference(before[1], values)
    key = "HKEY_CURRENT_USER" + UNINSTALL_KEY[4:]
    escaped = house.home.replace("\\", "\\\\")
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
    assert f"{house.home}\\ambrel.exe".encode("ascii") in menu(house).read_bytes()
    assert house.program_pids() == []

    house.uninstall()
    assert difference(before[0], without_temporary(house.files())) == ({}, {})
    assert difference(before[1], house.registry("HKCU")) == ({}, {})
    assert difference(without_pending(before[2]), without_pending(house.registry("HKLM"))) == ({}, {})


def without_temporary(files):
    """Leaves out the uninstaller's copy, which stays in the temporary folder until Windows cleans that up."""
    return {path: size for path, size in files.items() if "/Temp/~nsu" not in path}


def without_pending(values):
    """Leaves out two values: Wine updates its driver's date, and lets any user request deletions at the next start."""
    volatile = ("DriverDateData", "PendingFileRenameOperations")
    return {place: text for place, text in values.items() if place[1] not in volatile}


def test_the_pages_offer_a_start_now_and_a_launch_at_startup(house):
    for change in (False, True):
        setup = house.start_setup()
        first = house.page("without administrator rights")
        assert first.buttons[1] == "&Next >"
        house.go_on(first)
        house.go_on(house.page("suggested folder"))
        finish = house.finish_page()
        assert house.box(LAUNCH) == (False, True)
        assert house.box(START) == (True, True)
        if change:
            house.box(LAUNCH, True)
            house.box(START, False)
        house.go_on(finish)
        assert setup.wait(LIMIT) == 0
        assert house.installed_version() == VERSION
        assert house.run_entry() == (f"{house.home}\\ambrel.exe" if change else None)
        if change:
            assert house.program_pids() == []
        else:
            house.wait_for_icon()
            house.kill_program()
            house.uninstall()


def test_launched_at_startup_the_program_finds_its_own_entry(house):
    assert house.setup("/AUTOSTART", "/RUN") == 0
    house.wait_for_icon()
    assert house.run_entry() == f"{house.home}\\ambrel.exe"
    assert house.desktop.request("registry-get", RUN_KEY, RUN_VALUE)["type"] == 1
    switch_on_evening(house)
    assert house.settings()["LaunchAtStart"] == "1"
    assert not [line for line in house.log() if "utostart" in line]


def test_a_folder_with_blanks_and_accents(house):
    assert house.setup(folder=ACCENTS) == 0
    assert house.listing(ACCENTS) == INSTALLED
    assert house.listed("InstallLocation") == ACCENTS
    house.program_path = f"{ACCENTS}\\ambrel.exe"
    house.start()
    # An upgrade goes where Ambrel is.
    assert house.setup(setup=OTHER_SETUP) == 0
    assert house.installed_version(ACCENTS) == OTHER_VERSION
    assert house.listing() is None
    wait_for_new_start(house, 2)
    house.uninstall(ACCENTS)
    assert house.listing(ACCENTS) is None
    assert house.program_pids() == []


# Upgrade and downgrade

def test_an_upgrade_over_a_running_copy_restores_the_screen_and_the_backlight_and_starts_it_again(house):
    house.hardware.monitors([Monitor("left", current=40)])
    house.setup("/AUTOSTART")
    house.write_settings("[Settings]\r\nPWMSafeMode=1\r\nAllowExtremeDim=1\r\n")
    house.start()
    wait_until(lambda: house.hardware.value("left") == 100, "the lock")
    switch_on_evening(house)
    settings, entry = house.settings(), house.run_entry()
    first = house.program_pids()

    assert house.setup(setup=OTHER_SETUP) == 0
    wait_for_new_start(house, 2)
    assert house.installed_version() == OTHER_VERSION
    assert house.listed("DisplayVersion") == OTHER_VERSION
    assert house.listing() == INSTALLED
    assert len(house.program_pids()) == 1 and house.program_pids() != first
    # The first copy restored the display's brightness, and the second one locked it again.
    wait_until(lambda: house.hardware.value("left") == 100, "the lock")
    assert [call.arguments["value"] for call in house.hardware.calls("SetMonitorBrightness")] == [100, 40, 100]
    ended = [call for call in house.magnification_calls() if call.function == "MagUninitialize"]
    assert len(ended) == 1 and ended[0].result == 1
    assert house.screen_is_plain()
    assert house.settings() == settings
    assert house.run_entry() == entry == f"{house.home}\\ambrel.exe"


def test_a_downgrade(house):
    assert house.setup(setup=OTHER_SETUP) == 0
    assert house.installed_version() == OTHER_VERSION
    assert house.setup() == 0
    assert house.installed_version() == VERSION
    assert house.listed("DisplayVersion") == VERSION
    assert house.program_pids() == []


def test_the_pages_of_an_upgrade_ask_for_no_folder_and_keep_the_run_entry(house):
    house.setup("/AUTOSTART")
    house.start()
    setup = house.start_setup(setup=OTHER_SETUP)
    first = house.page("without administrator rights")
    assert first.buttons[1] == "&Install"
    house.go_on(first)
    finish = house.finish_page()
    # It is already running again and launches at startup: nothing is offered.
    wait_for_new_start(house, 2)
    assert START not in finish.buttons.values()
    assert house.box(LAUNCH) == (True, False)
    house.go_on(finish)
    assert setup.wait(LIMIT) == 0
    assert house.installed_version() == OTHER_VERSION
    assert house.run_entry() == f"{house.home}\\ambrel.exe"
    assert starts(house) == 2


def test_an_unticked_box_deletes_no_run_entry(house):
    house.setup()
    house.registry_set(RUN_KEY, RUN_VALUE, "C:\\Other place\\ambrel.exe")
    setup = house.start_setup(setup=OTHER_SETUP)
    house.go_on(house.page("without administrator rights"))
    finish = house.finish_page()
    assert house.box(LAUNCH) == (False, True)
    house.box(START, False)
    house.go_on(finish)
    assert setup.wait(LIMIT) == 0
    assert house.run_entry() == "C:\\Other place\\ambrel.exe"
    assert house.program_pids() == []


def test_an_install_into_another_folder_removes_the_old_files_and_updates_the_run_entry(house):
    house.setup("/AUTOSTART")
    assert house.setup(setup=OTHER_SETUP, folder="C:\\Elsewhere") == 0
    assert house.listing() is None
    assert house.listing("C:\\Elsewhere") == INSTALLED
    assert house.run_entry() == "C:\\Elsewhere\\ambrel.exe"
    house.uninstall("C:\\Elsewhere")
    assert house.run_entry() is None


def test_an_install_into_the_same_folder_in_another_spelling_keeps_the_new_files(house):
    house.setup("/AUTOSTART", folder="C:\\Elsewhere")
    assert house.setup(setup=OTHER_SETUP, folder="C:\\windows\\..\\Elsewhere") == 0
    assert house.listing("C:\\Elsewhere") == INSTALLED
    assert house.installed_version("C:\\Elsewhere") == OTHER_VERSION
    assert house.run_entry() == "C:\\Elsewhere\\ambrel.exe"


# A copy that blocks the installer

def put_stand_in(house, name="ambrel.exe"):
    """Installs Ambrel and puts a stand-in in the place of its program file; the stand-in's path."""
    house.setup()
    program = f"{house.home}\\{name}"
    house.prefix.put(house.prefix.path(STAND_IN), program)
    return program


def test_a_copy_that_refuses_is_named_and_a_silent_run_changes_nothing(house):
    program = put_stand_in(house)
    before = house.prefix.path(program).read_bytes()
    with house.stand_in("refuse", program=program) as copy:
        assert house.setup(setup=OTHER_SETUP) == FAILED
        setup = house.start_setup(setup=OTHER_SETUP)
        house.go_on(house.page("without administrator rights"))
        box = house.page("cannot be closed from here")
        assert program in box.text and re.search(r"\(process \d+\)", box.text)
        assert "Quit from the menu of its tray icon" in box.text
        house.press_button(box, 2)  # Cancel
        house.press_button(house.page("Nothing was changed"), 1)
        house.go_on(house.page("Not installed"), 2)
        assert setup.wait(LIMIT) == FAILED
        assert copy.poll() is None
        assert house.prefix.path(program).read_bytes() == before
        assert house.listing() == INSTALLED
        assert house.listed("DisplayVersion") == VERSION


def test_the_installer_continues_once_the_user_has_quit_the_copy(house):
    program = put_stand_in(house)
    with house.stand_in("refuse", program=program) as copy:
        setup = house.start_setup(setup=OTHER_SETUP)
        house.go_on(house.page("without administrator rights"))
        box = house.page("cannot be closed from here")
        copy.kill()
        copy.wait()
        house.press_button(box, 4)  # Retry
        finish = house.finish_page()
        assert house.installed_version() == OTHER_VERSION
        house.box(START, False)
        house.go_on(finish)
        assert setup.wait(LIMIT) == 0


def test_a_copy_that_has_no_window_yet_is_waited_for(house):
    program = put_stand_in(house)
    with house.stand_in("starting", program=program) as copy:
        setup = house.start_setup("/S", setup=OTHER_SETUP)
        time.sleep(1.5)
        assert setup.poll() is None
        assert house.listing() == sorted([*INSTALLED, *(f"{file}.new" for file in INSTALLED)])
        copy.stdin.close()
        assert setup.wait(LIMIT) == 0
    assert house.installed_version() == OTHER_VERSION


def test_a_copy_that_gets_no_window_stops_a_silent_run(house):
    program = put_stand_in(house)
    with house.stand_in("starting", program=program) as copy:
        assert house.setup(setup=OTHER_SETUP) == FAILED
        assert copy.poll() is None
        assert house.listing() == INSTALLED
        assert house.listed("DisplayVersion") == VERSION


# Failures leave the old version as it was

def assert_old_version(house):
    assert house.installed_version() == VERSION
    assert house.listing() == INSTALLED
    assert house.listed("DisplayVersion") == VERSION


@pytest.mark.parametrize("file", INSTALLED)
def test_a_full_disk_leaves_the_running_version_alone(house, file):
    house.setup()
    house.start()
    switch_on_evening(house)
    full = house.prefix.path(f"{house.home}\\{file}.new")
    full.symlink_to("/dev/full")
    assert house.setup(setup=OTHER_SETUP) == FAILED
    full.unlink(missing_ok=True)
    assert_old_version(house)
    # It was not even closed.
    assert starts(house) == 1
    house.wait_for_colour(*EVENING)


def test_a_program_file_that_cannot_be_replaced_is_started_again(house):
    house.setup()
    house.start()
    uninstaller = house.prefix.path(f"{house.home}\\{UNINSTALLER}").read_bytes()
    with house.stand_in("hold", f"{house.home}\\ambrel.exe"):
        assert house.setup(setup=OTHER_SETUP) == FAILED
    wait_for_new_start(house, 2)
    assert_old_version(house)
    assert house.prefix.path(f"{house.home}\\{UNINSTALLER}").read_bytes() == uninstaller


def test_an_uninstaller_that_cannot_be_replaced_stays_and_removes_the_new_version(house):
    house.setup()
    with house.stand_in("hold", f"{house.home}\\{UNINSTALLER}"):
        assert house.setup(setup=OTHER_SETUP) == 0
    assert house.installed_version() == OTHER_VERSION
    assert house.listing() == INSTALLED
    house.uninstall()
    assert house.listing() is None


def test_a_read_only_target(house):
    # The kernel lets nobody create anything in this folder.
    (house.prefix.folder / "dosdevices" / "r:").symlink_to("/sys/kernel")
    before = house.files()
    assert house.setup(folder="R:\\Ambrel") == FAILED
    assert difference(before, house.files()) == ({}, {})
    assert house.registry_get(UNINSTALL_KEY, "DisplayName") is None


def test_a_cancelled_install_changes_nothing(house):
    before = house.files()
    setup = house.start_setup()
    house.go_on(house.page("without administrator rights"))
    house.go_on(house.page("suggested folder"), 2)
    assert setup.wait(LIMIT) == 1
    assert difference(before, house.files()) == ({}, {})
    assert house.registry_get(UNINSTALL_KEY, "DisplayName") is None


@pytest.mark.parametrize("build, code", [(14392, FAILED), (14393, 0)])
def test_an_older_windows_than_the_program_needs_is_refused(house, build, code):
    number = house.registry_get(WINDOWS_KEY, "CurrentBuildNumber")
    house.registry_set(WINDOWS_KEY, "CurrentBuildNumber", str(build))
    try:
        assert house.setup() == code
    finally:
        house.registry_set(WINDOWS_KEY, "CurrentBuildNumber", number)
    assert house.listing() == (INSTALLED if code == 0 else None)


def test_only_one_setup_runs_at_a_time(house):
    setup = house.start_setup()
    page = house.page("without administrator rights")
    assert house.setup(setup=OTHER_SETUP) == FAILED
    house.go_on(page, 2)
    assert setup.wait(LIMIT) == 1
    assert house.listing() is None


# Removing

def test_uninstalling_a_running_copy_restores_the_screen_and_keeps_the_settings(house):
    house.setup("/AUTOSTART", "/RUN")
    house.wait_for_icon()
    switch_on_evening(house)
    settings = house.settings()
    house.registry_set(APPROVED_KEY, RUN_VALUE, bytes([3] + [0] * 11))
    house.uninstall()
    assert house.program_pids() == []
    assert house.screen_is_plain()
    assert house.listing() is None
    assert not menu(house).exists()
    assert house.run_entry() is None
    assert house.registry_get(APPROVED_KEY, RUN_VALUE) is None
    assert settings["LaunchAtStart"] == "1"
    assert house.settings() == {**settings, "LaunchAtStart": "0"}
    assert house.events_path.exists()


@pytest.mark.parametrize("answer, kept", [(6, False), (7, True)], ids=["yes", "no"])
def test_the_uninstaller_asks_before_it_removes_settings(house, answer, kept):
    house.setup("/AUTOSTART")
    house.write_settings("[Settings]\r\nLaunchAtStart=1\r\nPWMSafeMode=1\r\n")
    house.write_events("a line\r\n")
    foreign = house.settings_folder / "mine.txt"
    foreign.write_text("mine")
    neighbour = house.prefix.path(house.home) / "mine.txt"
    neighbour.write_text("mine")
    house.start_uninstaller()
    house.go_on(house.page("asked before your settings are removed"))
    box = house.page("Remove your settings and the event log too?")
    assert f"{house.user_folder}\\AppData\\Roaming\\Ambrel2".lower() in box.text.lower()
    house.press_button(box, answer)
    house.go_on(house.page("no longer on this computer"))
    house.wait_for_uninstaller()
    assert house.settings() == ({"LaunchAtStart": "0", "PWMSafeMode": "1"} if kept else {})
    assert house.events_path.exists() == kept
    assert house.run_entry() is None and house.listed("DisplayName") is None and not menu(house).exists()
    # Other files stay.
    assert foreign.read_text() == "mine"
    assert house.listing() == ["mine.txt"]
    foreign.unlink()


def test_another_program_s_files_in_the_folder_stay(house):
    folder = house.prefix.path("C:\\Elsewhere")
    folder.mkdir()
    (folder / "uninstall.exe").write_text("another program's")
    house.setup(folder="C:\\Elsewhere")
    house.uninstall("C:\\Elsewhere")
    assert house.listing("C:\\Elsewhere") == ["uninstall.exe"]
    assert (folder / "uninstall.exe").read_text() == "another program's"


def test_a_program_file_that_stays_open_stops_the_uninstaller_and_one_that_is_closed_soon_does_not(house):
    house.setup()
    house.start()
    with house.stand_in("hold", f"{house.home}\\ambrel.exe"):
        house.uninstall()
    wait_for_new_start(house, 2)
    assert_old_version(house)
    with house.stand_in("hold", f"{house.home}\\ambrel.exe") as holder:
        house.start_uninstaller("/S")
        wait_until(lambda: house.program_pids() == [], "the end of the program")
        time.sleep(0.5)
        assert house.installed_version() == VERSION
        holder.stdin.close()
        house.wait_for_uninstaller()
    assert house.listing() is None


def test_a_run_entry_of_another_folder_stays(house):
    house.setup()
    for entry in (f"{house.home} 2\\ambrel.exe", "C:\\Other place\\ambrel.exe"):
        house.registry_set(RUN_KEY, RUN_VALUE, entry)
        house.uninstall()
        assert house.listing() is None
        assert house.run_entry() == entry
        house.setup()


def test_a_copy_that_runs_elsewhere_survives_an_uninstall(house):
    house.setup()
    house.program_path = "C:\\Ambrel\\ambrel.exe"
    house.start()
    house.uninstall()
    assert house.listing() is None
    assert len(house.program_pids()) == 1
    house.wait_for_icon()


def test_a_copy_that_refuses_stops_the_uninstaller(house):
    program = put_stand_in(house)
    before = house.registry("HKCU")
    with house.stand_in("refuse", program=program) as copy:
        # Run in place, without its copy in the temporary folder, the uninstaller returns its own exit code.
        assert house.desktop.run([f"{house.home}\\{UNINSTALLER}", "/S", f"_?={house.home}"], timeout=60) == FAILED
        assert house.listing() == INSTALLED
        house.uninstall()
        assert copy.poll() is None
        assert house.listing() == INSTALLED
        assert difference(before, house.registry("HKCU")) == ({}, {})
        assert menu(house).exists()
        # Without /S the uninstaller reports it.
        house.start_uninstaller()
        house.go_on(house.page("asked before your settings are removed"))
        house.press_button(house.page("cannot be closed from here"), 2)  # Cancel
        house.go_on(house.page("Nothing was removed"), 2)
        house.wait_for_uninstaller()
        assert copy.poll() is None and house.listing() == INSTALLED
