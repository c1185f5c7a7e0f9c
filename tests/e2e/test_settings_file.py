"""settings.ini: which values are read and written, and when."""

import time

import pytest

import model
from desk import MENU_LEGACY_MODE, POWER, act_before_the_save, wait_until

DEFAULTS = "intensity=0.385 brightness=1.000 extremeDim=0 legacy=0 pwmSafe=0"
KEYS = ["[Filter]", "Intensity", "Brightness", "[Settings]", "LaunchAtStart", "AllowExtremeDim", "UseLegacyGamma",
        "LegacyModeAutoSet", "PWMSafeMode", "GammaFixEpoch"]
CLICKS = 5  # an odd number leaves the filter on


def save_by_menu_twice(desk):
    """Makes the program save without changing anything."""
    saves = desk.saves()
    desk.menu(MENU_LEGACY_MODE)
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(saves + 2)


def test_without_a_file_the_defaults_apply_and_nothing_is_written(desk):
    assert desk.loaded() == DEFAULTS
    desk.open_popup()
    time.sleep(0.8)  # Longer than the delay of a save.
    assert not desk.settings_path.exists()
    assert desk.settings_folder.is_dir()


def test_the_first_save_writes_every_key_in_order(desk):
    desk.press_power()
    desk.wait_for_saves(1)
    lines = [line for line in desk.settings_text().splitlines() if line]
    assert [line.partition("=")[0] for line in lines] == KEYS
    assert desk.settings() == {
        "Intensity": "385", "Brightness": "1000", "LaunchAtStart": "0", "AllowExtremeDim": "0", "UseLegacyGamma": "0",
        "LegacyModeAutoSet": "0", "PWMSafeMode": "0", "GammaFixEpoch": "0"}


def test_the_state_of_the_filter_is_not_saved(desk):
    desk.press_power()
    desk.wait_for_saves(1)
    settings = desk.settings_text()
    desk.press_power()
    desk.wait_for_saves(2)
    assert desk.settings_text() == settings


# A negative number is read as an unsigned number above the maximum.
@pytest.mark.parametrize("text, intensity", [
    ("0", "0.000"), ("1", "0.001"), ("585", "0.585"), ("1000", "1.000"), ("1200", "1.000"), ("4000000000", "1.000"),
    ("-5", "1.000"), ("-1", "1.000"), ("abc", "0.000"), ("0.5", "0.000"), ("700abc", "0.700"), ("  250", "0.250"),
    ("", "0.385"),
])
def test_any_text_for_the_warmth_is_read_as_a_value_in_range(file_desk, text, intensity):
    desk = file_desk.start_fresh({"Intensity": text})
    assert desk.loaded() == DEFAULTS.replace("0.385", intensity)


@pytest.mark.parametrize("text, extreme, brightness", [
    ("50", 0, "0.100"), ("50", 1, "0.050"), ("0", 0, "0.100"), ("0", 1, "0.000"), ("99", 0, "0.100"),
    ("101", 0, "0.101"), ("5000", 0, "1.000"), ("-1", 1, "1.000"), ("dark", 0, "0.100"), ("dark", 1, "0.000"),
    ("", 0, "1.000"), ("0.7", 0, "0.100"),
])
def test_any_text_for_the_brightness_is_read_as_a_value_in_range(file_desk, text, extreme, brightness):
    desk = file_desk.start_fresh({"AllowExtremeDim": extreme, "Brightness": text})
    assert desk.loaded() == f"intensity=0.385 brightness={brightness} extremeDim={extreme} legacy=0 pwmSafe=0"


@pytest.mark.parametrize("text, value", [("1", 1), ("7", 1), ("-1", 1), ("0", 0), ("yes", 0), ("", 0), ("1000000", 1)])
def test_any_text_for_a_flag_is_read_as_0_or_1(file_desk, text, value):
    desk = file_desk.start_fresh({"AllowExtremeDim": text, "UseLegacyGamma": text, "PWMSafeMode": text})
    assert desk.loaded() == f"intensity=0.385 brightness=1.000 extremeDim={value} legacy={value} pwmSafe={value}"


def test_flags_are_written_as_0_or_1(file_desk):
    desk = file_desk.start_fresh({"LaunchAtStart": 7, "AllowExtremeDim": -3, "LegacyModeAutoSet": "on",
                                  "PWMSafeMode": 2})
    desk.press_power()
    desk.wait_for_saves(1)
    saved = desk.settings()
    assert saved["LaunchAtStart"] == saved["AllowExtremeDim"] == saved["PWMSafeMode"] == "1"
    assert saved["LegacyModeAutoSet"] == "0"


def test_values_out_of_range_are_written_back_clamped(file_desk):
    desk = file_desk.start_fresh({"Intensity": 1200, "Brightness": 50})
    desk.press_power()
    desk.wait_for_saves(1)
    assert (desk.settings()["Intensity"], desk.settings()["Brightness"]) == ("1000", "100")


# Each run checks a time of the gamma fix and two values in thousandths, which are saved together.
@pytest.mark.parametrize("epoch, saved_epoch, intensity, brightness", [
    ("1700000000", "1700000000", 1, 289), ("18446744073709551615", "18446744073709551615", 29, 571),
    ("never", "0", 57, 577), ("", "0", 999, 999), ("123abc", "123", 290, 115),
])
def test_thousandths_and_the_time_of_the_gamma_fix_survive_a_load_and_a_save(
        file_desk, epoch, saved_epoch, intensity, brightness):
    desk = file_desk.start_fresh({"Intensity": intensity, "Brightness": brightness, "GammaFixEpoch": epoch})
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(1)
    assert desk.settings()["GammaFixEpoch"] == saved_epoch
    assert desk.settings()["Intensity"] == str(intensity)
    assert desk.settings()["Brightness"] == str(brightness)


@pytest.mark.parametrize("up, saved", [(50, "637"), (40, "587"), (-37, "198")])
def test_a_value_between_two_thousandths_is_truncated_not_rounded(desk, up, saved):
    desk.slide("WARMTH", up)  # 0.385 plus 50, 40 and -37 of 198 units: 0.63753, 0.58702, 0.19813
    desk.wait_for_saves(1)
    assert desk.settings()["Intensity"] == saved


def test_other_sections_keys_and_comments_are_preserved(file_desk):
    before = ("; a comment\r\n[Other]\r\nIntensity=7\r\nName=caf\u00e9\r\n"
              "[Filter]\r\nHue=12\r\nIntensity=500\r\n[Settings]\r\nFuture=1\r\n")
    desk = file_desk.start_fresh(before.encode("cp1252"))
    assert desk.loaded().startswith("intensity=0.500")
    desk.choose("EVENING")
    desk.wait_for_saves(1)
    text = desk.settings_path.read_bytes().decode("cp1252").replace("\r\n", "\n")
    assert "; a comment\n" in text
    assert "[Other]\nIntensity=7\nName=caf\u00e9\n" in text
    assert "Hue=12\n" in text and "Future=1\n" in text and "Intensity=584\n" in text


def test_keys_are_found_regardless_of_case_and_order(file_desk):
    desk = file_desk.start_fresh("[SETTINGS]\r\nalloweXtremedim = 1\r\n"
                                 "[filter]\r\nbrightness = 40\r\nINTENSITY = 300\r\n")
    assert desk.loaded() == "intensity=0.300 brightness=0.040 extremeDim=1 legacy=0 pwmSafe=0"


def test_a_burst_of_clicks_is_saved_once(file_desk):
    desk = file_desk

    def show():
        desk.start_fresh().show()
        x, y = desk.unit_to_screen(*POWER)
        return lambda: click(x, y)

    def click(x, y):
        desk.input.click_repeatedly(x, y, CLICKS, 0.06)
        wait_until(lambda: len(desk.effects()) == CLICKS, "the clicks to be handled")
    act_before_the_save(desk, show)
    desk.wait_for_saves(1)
    time.sleep(0.8)  # No second save may follow.
    assert desk.saves() == 1
    desk.wait_for_tooltip(model.tooltip_on(model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS))


def test_the_tray_menu_saves_immediately(desk):
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(1)
    desk.wait_for_setting("UseLegacyGamma", "1")
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(2)
    assert desk.settings()["UseLegacyGamma"] == "0"


def test_the_next_start_reads_the_saved_values(desk):
    desk.choose("EVENING")
    desk.wait_for_saves(1)
    assert desk.quit() == 0
    desk.start()
    assert desk.loaded() == "intensity=0.584 brightness=0.850 extremeDim=0 legacy=0 pwmSafe=0"
    save_by_menu_twice(desk)
    assert (desk.settings()["Intensity"], desk.settings()["Brightness"]) == ("584", "850")


def test_a_missing_folder_is_created(desk):
    desk.kill_program()
    for path in desk.settings_folder.iterdir():
        path.unlink()
    desk.settings_folder.rmdir()
    desk.start()
    desk.press_power()
    desk.wait_for_saves(1)
    assert desk.settings()["Intensity"] == "385"


def test_values_edited_while_the_program_runs_are_overwritten_by_the_next_save(desk):
    desk.write_settings("[Filter]\r\nIntensity=900\r\n[Settings]\r\nUseLegacyGamma=1\r\n")
    desk.press_power()
    desk.wait_for_saves(1)
    assert (desk.settings()["Intensity"], desk.settings()["UseLegacyGamma"]) == ("385", "0")
