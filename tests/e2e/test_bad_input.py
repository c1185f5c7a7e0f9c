"""Damaged files, unusable libraries and unusual command lines cause no crash and no loss of data."""

import shutil

import pytest

import model
from desk import MARKER, MENU_LEGACY_MODE, settings_file, wait_until
from faults import MEGABYTE, held_by_another_program, noise, put_on_a_full_disk, read_only

EVENING = model.PRESETS["EVENING"][:2]
FOLDERS = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\"
GOOD = settings_file(Intensity=700, Brightness=900, AllowExtremeDim=1)
LOADED_GOOD = "intensity=0.700 brightness=0.900 extremeDim=1 legacy=0 pwmSafe=0"


def works(desk):
    """Asserts that the filter works: EVENING reaches the screen, and the filter turns off again."""
    desk.choose("EVENING")
    desk.wait_for_colour(*EVENING)
    desk.wait_for_tooltip("Ambrel - ON (2700K, 85%)")
    desk.press_power()
    desk.wait_for_plain_screen()
    return True


@pytest.fixture(name="desk_without_traces")
def desk_without_traces_fixture(file_desk):
    """The file's desk without a running program and without the program's folder, also afterwards."""
    end_without_traces(file_desk)
    yield file_desk
    end_without_traces(file_desk)


def end_without_traces(desk):
    if desk.program_running():
        desk.kill_program()
    shutil.rmtree(desk.settings_folder, ignore_errors=True)
    desk.clear()
    desk.settings_folder.rmdir()
    desk.remove_dead_icons()


# settings.ini

@pytest.mark.parametrize("content", [
    pytest.param(None, id="missing"),
    pytest.param(b"", id="empty"),
    pytest.param(b"[Filter]\r\nIntensity", id="truncated within a key"),
    pytest.param(b"[Filt", id="truncated within a section"),
    pytest.param(b"\r\n" * 1000, id="blank lines"),
    pytest.param(b"\0" * 4096, id="zero bytes"),
    pytest.param(noise(4096), id="4 KB of noise"),
    pytest.param(noise(10 * MEGABYTE), id="10 MB of noise"),
    pytest.param(b"x" * MEGABYTE, id="one long line"),
    pytest.param(b"[Filter]\r\n" * 20000, id="a repeated section"),
    pytest.param(b"\xff\xfe\x00", id="half a UTF-16 character"),
    pytest.param(noise(10 * MEGABYTE) + GOOD.encode(), id="settings after 10 MB of noise"),
])
def test_the_program_works_and_saves_with_any_content_of_the_settings_file(file_desk, content):
    desk = file_desk.start_fresh(content)
    assert desk.loaded()
    assert works(desk)
    desk.wait_for_saves(1)
    desk.save_now()  # The second change may not be saved yet.
    desk.restart()
    assert desk.loaded().startswith("intensity=0.584 brightness=0.850 ")


@pytest.mark.parametrize("content, loaded", [
    (b"[Filter]\r\nIntensity=7", "intensity=0.007 brightness=1.000"),
    (b"[Filter]\nIntensity=700\nBrightness=500", "intensity=0.700 brightness=0.500"),
    (b"\xef\xbb\xbf[Filter]\r\nIntensity=700\r\n", "intensity=0.700 brightness=1.000"),
])
def test_readable_values_of_a_damaged_file_are_used(file_desk, content, loaded):
    desk = file_desk.start_fresh(content)
    assert desk.loaded().startswith(loaded)


def test_a_settings_file_in_utf_16_is_read_and_written(file_desk):
    desk = file_desk.start_fresh(b"\xff\xfe" + GOOD.encode("utf-16-le"))
    assert desk.loaded() == LOADED_GOOD
    assert works(desk)
    desk.wait_for_saves(1)
    desk.save_now()
    desk.restart()
    assert desk.loaded().startswith("intensity=0.584 brightness=0.850 extremeDim=1")


def test_the_program_works_with_a_folder_named_settings_ini(desk_without_traces):
    desk = desk_without_traces
    desk.settings_path.mkdir(parents=True)
    (desk.settings_path / "precious.txt").write_text("kept", encoding="ascii")
    desk.start()
    assert desk.loaded().startswith("intensity=0.385 brightness=1.000")
    assert works(desk)
    desk.wait_for_saves(1)
    assert desk.quit() == 0
    assert (desk.settings_path / "precious.txt").read_text(encoding="ascii") == "kept"


def test_a_read_only_settings_file_is_read_and_kept(desk_without_traces):
    desk = desk_without_traces
    desk.write_settings(GOOD)
    with read_only(desk.settings_path):
        desk.start()
        assert desk.loaded() == LOADED_GOOD
        assert works(desk)
        desk.wait_for_saves(1)
        assert desk.settings_text() == GOOD.replace("\r\n", "\n")
    desk.press_power()
    desk.wait_for_saves(2)
    desk.wait_for_setting("Intensity", "584")


def test_with_a_locked_settings_file_the_defaults_are_used_and_the_file_is_unchanged(desk_without_traces):
    desk = desk_without_traces
    desk.write_settings(GOOD)
    with held_by_another_program(desk, desk.settings_path):
        desk.start()
        assert desk.loaded().startswith("intensity=0.385 brightness=1.000")
        assert works(desk)
        desk.wait_for_saves(1)
        assert desk.settings_text() == GOOD.replace("\r\n", "\n")
    assert desk.program_running()


def test_settings_can_be_saved_again_after_another_program_releases_the_file(desk_without_traces):
    desk = desk_without_traces
    desk.write_settings(GOOD)
    desk.start()
    with held_by_another_program(desk, desk.settings_path):
        desk.choose("EVENING")
        desk.wait_for_saves(1)
        assert desk.settings()["Intensity"] == "700"
    desk.press_power()
    desk.wait_for_saves(2)
    desk.wait_for_setting("Intensity", "584")
    desk.wait_for_setting("AllowExtremeDim", "1")


# events.log

@pytest.mark.parametrize("content", [
    pytest.param(b"", id="empty"),
    pytest.param(b"\0" * 1000, id="zero bytes"),
    pytest.param(noise(5000, 2), id="noise"),
    pytest.param("\ufeffold line\r\n".encode("utf-16-le"), id="UTF-16"),
    pytest.param(b"x" * 100000, id="one long line"),
])
def test_any_content_of_a_small_event_log_is_kept_and_appended_to(file_desk, content):
    desk = file_desk
    desk.clear()
    desk.write_events(content)
    desk.start()
    desk.loaded()
    assert desk.events_path.read_bytes().startswith(content + MARKER.encode() + b"\r\n")
    assert works(desk)


def test_an_event_log_of_ten_megabytes_of_noise_is_truncated_to_its_last_part(file_desk):
    desk, content = file_desk, noise(10 * MEGABYTE, 3)
    desk.clear()
    desk.write_events(content)
    desk.start()
    desk.loaded()
    assert desk.events_path.read_bytes().startswith(content[-65536:] + MARKER.encode() + b"\r\n")
    assert desk.events_path.stat().st_size < 65536 + 2000
    assert works(desk)


def test_the_program_works_with_a_folder_named_events_log(desk_without_traces):
    desk = desk_without_traces
    desk.events_path.mkdir(parents=True)
    desk.start()
    assert works(desk)
    desk.wait_for_setting("Intensity", "584")
    assert desk.quit() == 0
    assert list(desk.events_path.iterdir()) == []


def test_a_read_only_event_log_is_kept(desk_without_traces):
    desk = desk_without_traces
    desk.write_events("old\r\n")
    with read_only(desk.events_path):
        desk.start()
        assert works(desk)
        desk.wait_for_setting("Intensity", "584")
        assert desk.events_text() == "old\n"


def test_the_event_log_continues_after_another_program_releases_the_file(desk_without_traces):
    desk = desk_without_traces
    desk.write_events(b"x" * 300000)
    with held_by_another_program(desk, desk.events_path):
        desk.start()
        assert works(desk)
        desk.wait_for_setting("Intensity", "584")
        assert desk.events_path.read_bytes() == b"x" * 300000
    desk.choose("DAY")
    wait_until(lambda: desk.events_text().endswith("Saved settings\n"), "the line after the file was released")


# The folder, the disk, the command line

def test_a_full_disk_loses_only_the_failed_writes(desk_without_traces):
    desk = desk_without_traces
    put_on_a_full_disk(desk.settings_path)
    put_on_a_full_disk(desk.events_path)
    desk.start()
    assert works(desk)
    desk.save_now()
    # The save has failed: Windows has not replaced the files.
    assert desk.settings_path.is_symlink() and desk.events_path.is_symlink()
    desk.settings_path.unlink()
    desk.events_path.unlink()
    desk.press_power()
    desk.wait_for_setting("Intensity", "584")
    wait_until(lambda: desk.events_text().endswith("Saved settings\n"), "the line after space is available")
    assert desk.quit() == 0


@pytest.fixture(name="desk_without_folder", scope="module")
def desk_without_folder_fixture(make_file_desk):
    """A desk whose application-data folder the tests move in the registry."""
    return make_file_desk()


@pytest.mark.parametrize("folder", [
    "Q:\\nowhere", "C:\\no\\such\\folder", "\\\\nobody\\nothing", "C:\\windows\\win.ini",
])
def test_without_an_application_data_folder_the_program_works_with_the_defaults(desk_without_folder, folder):
    desk = desk_without_folder
    desk.clear(GOOD)
    for key in ("User Shell Folders", "Shell Folders"):
        desk.registry_set(FOLDERS + key, "AppData", folder)
    desk.start()
    desk.press_power()
    desk.wait_for_colour(model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
    assert works(desk)
    desk.click_menu_row(desk.open_menu(), MENU_LEGACY_MODE)
    desk.wait_for_menu_end()
    desk.press_power()
    desk.wait_for_legacy_colour(*EVENING)
    assert desk.quit() == 0
    assert desk.settings_text() == GOOD.replace("\r\n", "\n")
    assert not desk.events_path.exists()


@pytest.mark.parametrize("arguments", [
    pytest.param(["x" * 30000], id="30,000 characters"),
    pytest.param(["a b"] * 5000, id="many words"),
    pytest.param(["\"", "%s%s%s%n", "\\\\\\", ""], id="quotes, formats, backslashes"),
    pytest.param(["caf\u00e9 \u6a5f\u68b0"], id="characters of other languages"),
])
def test_the_program_starts_with_any_command_line(file_desk, arguments):
    desk = file_desk
    desk.clear()
    desk.start_program(*arguments)
    desk.wait_for_icon()
    assert works(desk)


# Magnification.dll

@pytest.fixture(name="desk_with_library")
def desk_with_library_fixture(desk_without_traces):
    """desk_without_traces with a library of one kind: desk_with_library(kind)."""
    def install(kind):
        desk_without_traces.magnification.install(kind)
        return desk_without_traces
    yield install
    desk_without_traces.magnification.install("ok")


@pytest.mark.parametrize("library, text", [
    ("missing", "Failed to load Magnification.dll\nError code: 126"),
    ("without-initialize", "Failed to get Magnification API functions.\n\nThis requires Windows 8 or later."),
    ("without-uninitialize", "Failed to get Magnification API functions.\n\nThis requires Windows 8 or later."),
    ("without-effect", "Failed to get Magnification API functions.\n\nThis requires Windows 8 or later."),
])
def test_an_unusable_library_is_reported_once_and_legacy_mode_works(desk_with_library, library, text):
    desk = desk_with_library(library)
    desk.start_program()
    box = desk.wait_for_message_box()
    assert (box.title, box.text) == ("Ambrel", text)
    desk.press_button(box)
    desk.wait_for_icon()
    desk.choose("EVENING")
    desk.wait_for_tooltip("Ambrel - ON (2700K, 85%)")
    assert desk.screen_is_plain()
    assert desk.message_boxes() == []
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_legacy_colour(*EVENING)
    assert desk.quit() == 0
    assert desk.screen_is_plain()
    assert desk.magnification_calls() == []


def test_a_damaged_library_is_reported_like_a_missing_one(desk_with_library):
    desk = desk_with_library("missing")
    desk.prefix.path("C:\\windows\\system32\\Magnification.dll").write_bytes(noise(5000))
    desk.start_program()
    box = desk.wait_for_message_box()
    assert box.text.startswith("Failed to load Magnification.dll\nError code: ")
    desk.press_button(box)
    desk.wait_for_icon()


@pytest.fixture(name="libraries_beside_the_program")
def libraries_beside_the_program_fixture(file_desk):
    # Shcore.dll is not among them: it is a known DLL on Windows, but Wine has no list of known DLLs.
    names = ("Magnification.dll", "dwmapi.dll", "msimg32.dll", "dxva2.dll", "windowscodecs.dll")
    put = [file_desk.prefix.put(file_desk.build_dir / "lab" / "magnification.dll", f"C:\\Ambrel\\{name}")
           for name in names]
    yield put
    for path in put:
        path.unlink()


@pytest.mark.usefixtures("libraries_beside_the_program")
def test_a_library_in_the_program_folder_is_not_loaded(desk_with_library):
    desk = desk_with_library("missing")
    desk.start_program()
    assert desk.wait_for_message_box().text == "Failed to load Magnification.dll\nError code: 126"
    with open(f"/proc/{desk.program_pids()[0]}/maps", encoding="utf-8") as maps:
        assert not [line for line in maps if "/Ambrel/" in line and "ambrel.exe" not in line]


@pytest.mark.parametrize("error", [5, 87, 1168])
def test_a_library_that_fails_to_initialise_is_reported_once(file_desk, error):
    desk = file_desk
    desk.clear(initialize=error)
    desk.start_program()
    box = desk.wait_for_message_box()
    assert (box.title, box.text) == ("Ambrel", f"MagInitialize failed.\nError code: {error}")
    desk.press_button(box)
    desk.wait_for_icon()
    desk.choose("EVENING")
    desk.wait_for_tooltip("Ambrel - ON (2700K, 85%)")
    assert desk.message_boxes() == []
    assert desk.effects() == []
    assert desk.quit() == 0
    assert [call.function for call in desk.magnification_calls()] == ["MagInitialize"]


def test_leaving_legacy_mode_retries_a_failed_library_and_reports_a_failure_again(file_desk):
    desk = file_desk
    desk.start_fresh({"UseLegacyGamma": 1}, initialize=5)
    assert desk.message_boxes() == []
    desk.menu(MENU_LEGACY_MODE)
    desk.press_button(desk.wait_for_message_box())
    desk.wait_for_saves(1)
    desk.magnification_script(initialize=0)
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(2)
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(3)
    assert works(desk)
