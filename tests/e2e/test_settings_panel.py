"""The settings panel: what it shows, what its rows switch, and Legacy Mode from the row and from the tray menu."""

import time

import pytest

import model
from bundle import while_copied
from ambrel_lab.layout import HEADER_COLOUR as HEADER, ROW_COLOUR as ROW, SETTINGS_ROW_TOPS as ROW_TOPS
from desk import CLOSE, GEAR, MENU_LEGACY_MODE, PRESET_POSITIONS, SETTINGS_ROWS, SLIDER_X, wait_until
from text_recognition import LABEL, SMALL, TITLE, closest, picture_of, span, matches_text
from panels import panel_of, wait_for_panel

WM_LBUTTONDOWN, WM_CLOSE = 0x201, 0x10
BACKGROUND, OUTLINE, RED = (13, 13, 13), (0x2C,) * 3, (255, 0, 0)
KEYS = {"LAUNCH AT STARTUP": "LaunchAtStart", "ALLOW EXTREME DIM": "AllowExtremeDim", "LEGACY MODE": "UseLegacyGamma"}
# On the main panel the power button is here; the support button ends above.
POWER_BELOW_SUPPORT = (160, 522)
RUN_KEY, RUN_VALUE = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run", "Ambrel2"
DAY, NIGHT = model.PRESETS["DAY"][:2], model.PRESETS["NIGHT"][:2]
FALLEN_BACK = "Auto-fallback to Legacy Mode after 2 consecutive error 87s"
# Longer than the half second by which other changes delay their save.
LATE_SAVE = 0.8


@pytest.fixture(name="start_with")
def start_with_fixture(file_desk):
    """Starts the program with settings. Deletes its autostart entry before and afterwards."""
    def start(settings=None, **library):
        if file_desk.program_running():
            file_desk.kill_program()
        file_desk.registry_delete(RUN_KEY, RUN_VALUE)
        return file_desk.start_fresh(settings, **library)
    yield start
    file_desk.registry_delete(RUN_KEY, RUN_VALUE)


@pytest.fixture(name="panel")
def panel_fixture(start_with):
    """The program directly after its start with the settings panel open."""
    desk = start_with()
    desk.show_settings()
    wait_for_panel(desk, "settings")
    return desk


def value_of(desk, row):
    """The value that a row shows, ON or OFF; None if neither is recognised."""
    top = ROW_TOPS[row]
    found = span(desk.popup_picture(), (226, top + 4, 290, top + 38), ROW)
    text = found and closest(desk, found, ("ON", "OFF"), LABEL)
    return text if text and matches_text(desk, found, text, LABEL, right=284) else None


def wait_for_value(desk, row, text):
    wait_until(lambda: value_of(desk, row) == text, f"{row} {text}")


def press(desk, x, y):
    """Presses the mouse button by a message. Returns after the program has handled it."""
    desk.send_message(WM_LBUTTONDOWN, 1, x | y << 16)


def assert_no_message_box(desk):
    time.sleep(0.3)  # A message box opens only after the click that causes it has been handled.
    assert desk.message_boxes() == []


# The panel

def test_the_gear_opens_the_panel_and_close_returns(desk):
    desk.show()
    wait_for_panel(desk, "main")
    before = picture_of(desk)
    desk.click_unit(*GEAR)
    wait_for_panel(desk, "settings")
    desk.close_settings()
    wait_for_panel(desk, "main")
    wait_until(lambda: picture_of(desk) == before, "the main panel as it was")
    assert desk.saves() == 0
    assert desk.magnification_calls()[1:] == []


def test_it_shows_title_close_rows_and_support_button(panel):
    picture = panel.popup_picture()
    assert matches_text(panel, span(picture, (10, 4, 240, 52), HEADER), "SETTINGS", TITLE, left=22)
    close = span(picture, (252, 18, 300, 42), HEADER)
    assert matches_text(panel, close, "CLOSE", SMALL) and abs(sum(close) / 2 - 276) <= 1
    assert any(picture.pixel(x, y) == RED for x in range(252, 300) for y in range(18, 42))
    for row, top in ROW_TOPS.items():
        assert matches_text(panel, span(picture, (28, top + 4, 226, top + 38), ROW), row, LABEL, left=36), row
        assert value_of(panel, row) == "OFF"
        assert picture.pixel(160, top) == picture.pixel(24, top + 20) == picture.pixel(295, top + 20) == OUTLINE
        assert picture.pixel(160, top + 1) == ROW and picture.pixel(160, top - 1) == BACKGROUND
    support = span(picture, (30, 466, 290, 512), ROW)
    assert matches_text(panel, support, "COPY FEEDBACK FOR SUPPORT", LABEL) and abs(sum(support) / 2 - 160) <= 1
    assert picture.crop(0, 274, 320, 462).colours() == 1 and picture.pixel(160, 300) == BACKGROUND


def test_it_shows_the_flags_of_the_settings_file(start_with):
    desk = start_with({"AllowExtremeDim": 1, "UseLegacyGamma": 1})
    desk.show_settings()
    wait_for_panel(desk, "settings")
    assert [value_of(desk, row) for row in ROW_TOPS] == ["OFF", "ON", "ON"]


@pytest.mark.parametrize("row", SETTINGS_ROWS)
def test_a_row_switches_its_flag_saves_it_and_shows_it_immediately(panel, row):
    before = picture_of(panel)
    panel.flip(row)
    wait_for_value(panel, row, "ON")
    assert {key: panel.settings()[key] for key in KEYS.values()} == {
        key: "1" if name == row else "0" for name, key in KEYS.items()}
    assert [value_of(panel, other) for other in ROW_TOPS if other != row] == ["OFF", "OFF"]
    panel.wait_for_tooltip(model.TOOLTIP_OFF)
    panel.flip(row)
    wait_until(lambda: picture_of(panel) == before, "the panel as it was")
    assert [panel.settings()[key] for key in KEYS.values()] == ["0", "0", "0"]
    assert panel.saves() == 2


@pytest.mark.parametrize("row", SETTINGS_ROWS)
def test_a_click_saves_before_it_returns_and_only_once(panel, row):
    press(panel, *SETTINGS_ROWS[row])
    assert panel.saves() == 1
    assert f"{KEYS[row]}=1" in panel.settings_text().splitlines()
    time.sleep(LATE_SAVE)
    assert panel.saves() == 1


def test_a_quit_directly_after_a_click_keeps_the_setting_for_the_next_start(panel):
    for row in ("ALLOW EXTREME DIM", "LEGACY MODE"):
        panel.flip(row)
    assert panel.quit() == 0
    panel.start()
    assert panel.loaded() == "intensity=0.385 brightness=1.000 extremeDim=1 legacy=1 pwmSafe=0"


def test_the_rows_react_up_to_their_edges_and_not_beyond(panel):
    for row, top in ROW_TOPS.items():
        for x, y in ((24, top), (295, top), (24, top + 41), (295, top + 41)):
            saves = panel.saves()
            press(panel, x, y)
            assert panel.saves() == saves + 1, (row, x, y)
    saves, log = panel.saves(), panel.log()
    for top in ROW_TOPS.values():
        for x, y in ((23, top + 20), (296, top + 20), (160, top - 1), (160, top + 42)):
            press(panel, x, y)
    for x, y in ((160, 300), (160, 450), (5, 5), (160, 28), (251, 30), (300, 30), (276, 17), (276, 42)):
        press(panel, x, y)
    assert (panel.saves(), panel.log()) == (saves, log)
    assert panel_of(panel) == "settings"
    for x, y in ((252, 18), (299, 41)):
        press(panel, x, y)
        wait_for_panel(panel, "main")
        press(panel, *GEAR)
        wait_for_panel(panel, "settings")


def test_controls_of_the_main_panel_do_not_react_on_the_settings_panel(panel):
    before = picture_of(panel)
    for position in (POWER_BELOW_SUPPORT, *PRESET_POSITIONS.values()):
        panel.click_unit(*position)
    panel.drag_unit(SLIDER_X["WARMTH"], 290, SLIDER_X["WARMTH"], 120)
    time.sleep(LATE_SAVE)
    assert panel.saves() == 0
    assert panel.effects() == []
    assert picture_of(panel) == before


def test_the_main_panel_has_no_rows(desk):
    desk.show()
    for position in (*SETTINGS_ROWS.values(), CLOSE):
        desk.click_unit(*position)
    desk.press_power()
    desk.wait_for_saves(1)
    time.sleep(0.2)  # No row may save.
    assert desk.saves() == 1
    assert panel_of(desk) == "main"
    assert [desk.settings()[key] for key in KEYS.values()] == ["0", "0", "0"]


def test_the_settings_panel_is_still_open_after_the_popup_was_hidden(panel):
    panel.flip("ALLOW EXTREME DIM")
    wait_for_value(panel, "ALLOW EXTREME DIM", "ON")
    before = picture_of(panel)
    panel.post_message(WM_CLOSE)
    panel.wait_for_popup(False)
    panel.open_popup()
    wait_until(lambda: picture_of(panel) == before, "the panel as it was")
    panel.close_settings()
    wait_for_panel(panel, "main")


def test_the_next_start_shows_the_main_panel(panel):
    panel.restart()
    panel.show()
    wait_for_panel(panel, "main")


def test_the_support_button_copies_the_report_and_changes_nothing_else(panel):
    before, settings = picture_of(panel), panel.settings()
    report, after = while_copied(panel, lambda report: (report, picture_of(panel)))
    assert report.text.startswith("TO: support@ambrel.example\r\nSUBJECT: Ambrel Windows 2.23 - Feedback (")
    assert report.text.endswith("\r\n=== END DIAGNOSTICS ===\r\n")
    button = (0, 460, 320, 518)
    assert after.crop(0, 0, 320, button[1]) == before.crop(0, 0, 320, button[1])
    assert after.crop(*button) != before.crop(*button)
    assert after.crop(0, button[3], 320, after.height) == before.crop(0, button[3], 320, before.height)
    time.sleep(LATE_SAVE)
    assert panel.saves() == 0 and panel.settings() == settings
    assert panel.effects() == [] and panel.screen_is_plain()
    assert panel.message_boxes() == []


def test_the_rows_react_where_they_are_drawn_at_a_larger_scaling(make_desk):
    desk = make_desk(dpi=192, size=(1920, 1200))
    desk.start_fresh()
    desk.show_settings()
    wait_until(lambda: desk.popup_picture().pixel(400, 272) == ROW, "the settings panel")
    for row in ("ALLOW EXTREME DIM", "LEGACY MODE"):
        top = ROW_TOPS[row]
        for x, y, hit in ((24, top, True), (295, top + 41, True), (23, top + 20, False), (160, top + 42, False)):
            saves = desk.saves()
            press(desk, 2 * x, 2 * y)
            assert desk.saves() == saves + hit, (row, x, y)
    desk.flip("LEGACY MODE")
    desk.wait_for_setting("UseLegacyGamma", "1")
    desk.close_settings()
    desk.choose("DAY")
    desk.wait_for_legacy_colour(*DAY)


# Extreme dim

def test_extreme_dim_allows_less_than_10_percent_and_turning_it_off_raises_the_brightness(panel):
    panel.flip("ALLOW EXTREME DIM")
    panel.close_settings()
    panel.press_power()
    panel.wait_for_saves(2)
    panel.slide("BRIGHTNESS", -188)
    dark = model.dragged(1.0, -188)
    assert dark < 0.06
    panel.wait_for_tooltip(model.tooltip_on(0.385, dark))
    panel.wait_for_colour(0.385, dark)
    panel.wait_for_saves(3)
    assert panel.settings()["Brightness"] == str(model.per_mille(dark))
    panel.show_settings()
    panel.flip("ALLOW EXTREME DIM")
    panel.wait_for_tooltip(model.tooltip_on(0.385, 0.1))
    panel.wait_for_colour(0.385, 0.1)
    assert panel.settings()["Brightness"] == "100"


def test_without_extreme_dim_the_slider_ends_at_10_percent(desk):
    desk.press_power()
    desk.slide("BRIGHTNESS", -188)
    desk.wait_for_tooltip(model.tooltip_on(0.385, 0.1))
    desk.wait_for_colour(0.385, 0.1)


def test_turning_extreme_dim_off_with_the_filter_off_raises_the_value_only(start_with):
    desk = start_with({"AllowExtremeDim": 1, "Brightness": 30})
    desk.show_settings()
    desk.flip("ALLOW EXTREME DIM")
    assert desk.settings()["Brightness"] == "100"
    assert desk.effects() == []
    assert desk.screen_is_plain()


@pytest.mark.parametrize("legacy", [0, 1])
def test_with_the_filter_on_each_click_applies_the_filter_again(start_with, legacy):
    desk = start_with({"UseLegacyGamma": legacy})
    desk.choose("DAY")
    desk.wait_for_saves(1)
    wait = desk.wait_for_legacy_colour if legacy else desk.wait_for_colour
    for _ in range(2):
        wait(*DAY)
        applied = len(desk.effects())
        if legacy:
            desk.set_ramp(model.ramp(model.IDENTITY))  # As if another program removed the colour.
        if desk.popup_visible() and panel_of(desk) == "main":
            desk.show_settings()
            wait_for_panel(desk, "settings")
        desk.flip("ALLOW EXTREME DIM")
        assert len(desk.effects()) == applied + (0 if legacy else 1)
    wait(*DAY)


# Legacy Mode, from the row and from the tray menu

def switch_legacy_mode(desk, control):
    saves = desk.saves()
    if control == "menu":
        desk.menu(MENU_LEGACY_MODE)
    else:
        if panel_of(desk) != "settings" or not desk.popup_visible():
            desk.show_settings()
            wait_for_panel(desk, "settings")
        desk.click_unit(*SETTINGS_ROWS["LEGACY MODE"])
    desk.wait_for_saves(saves + 1)


EACH_CONTROL = pytest.mark.parametrize("control", ["row", "menu"])


@EACH_CONTROL
def test_legacy_mode_moves_an_active_filter_to_the_ramp_and_back(desk, control):
    desk.choose("DAY")
    desk.wait_for_colour(*DAY)
    desk.wait_for_saves(1)
    switch_legacy_mode(desk, control)
    desk.wait_for_legacy_colour(*DAY)
    assert desk.effects()[-1].matrix == model.matrix(model.IDENTITY)
    assert (desk.settings()["UseLegacyGamma"], desk.settings()["LegacyModeAutoSet"]) == ("1", "0")
    applied = len(desk.effects())
    switch_legacy_mode(desk, control)
    desk.wait_for_colour(*DAY)
    assert len(desk.effects()) == applied + 1
    assert desk.effects()[-1].diagonal == pytest.approx(model.factors(*DAY), abs=1e-6)
    assert (desk.settings()["UseLegacyGamma"], desk.settings()["LegacyModeAutoSet"]) == ("0", "0")
    assert desk.tray_tooltip() == "Ambrel - ON (4000K, 100%)"
    assert desk.saves() == 3


@EACH_CONTROL
def test_switching_legacy_mode_with_the_filter_off_sets_no_colour(desk, control):
    for flag in ("1", "0"):
        switch_legacy_mode(desk, control)
        assert desk.settings()["UseLegacyGamma"] == flag
        assert desk.effects() == []
        assert desk.screen_is_plain()
    assert [call.function for call in desk.magnification_calls()] == ["MagInitialize"]


@EACH_CONTROL
def test_leaving_legacy_mode_loads_the_library(start_with, control):
    desk = start_with({"UseLegacyGamma": 1})
    desk.choose("DAY")
    desk.wait_for_saves(1)
    assert desk.magnification_calls() == []
    switch_legacy_mode(desk, control)
    desk.wait_for_colour(*DAY)
    functions = [call.function for call in desk.magnification_calls()]
    assert functions[:2] == ["MagInitialize", "MagSetFullscreenColorEffect"]


def test_row_and_menu_switch_the_same_flag(panel):
    panel.flip("LEGACY MODE")
    wait_for_value(panel, "LEGACY MODE", "ON")
    panel.menu(MENU_LEGACY_MODE)
    panel.wait_for_setting("UseLegacyGamma", "0")
    panel.flip("LEGACY MODE")
    panel.wait_for_setting("UseLegacyGamma", "1")
    wait_for_value(panel, "LEGACY MODE", "ON")


def test_an_automatic_fallback_persists_is_shown_and_can_be_left_in_the_next_run(start_with):
    desk = start_with(effect=(87,))
    for preset in ("DAY", "EVENING"):
        desk.choose(preset)
    desk.wait_for_log(FALLEN_BACK)
    desk.press_button(desk.wait_for_message_box())
    assert (desk.settings()["UseLegacyGamma"], desk.settings()["LegacyModeAutoSet"]) == ("1", "1")
    desk.wait_for_saves(2)

    # The second run continues in Legacy Mode without a notice; the user leaves it with the row.
    desk.restart()
    desk.choose("DAY")
    desk.wait_for_legacy_colour(*DAY)
    desk.wait_for_saves(1)
    desk.show_settings()
    wait_for_panel(desk, "settings")
    assert value_of(desk, "LEGACY MODE") == "ON"
    assert_no_message_box(desk)
    switch_legacy_mode(desk, "row")
    box = desk.wait_for_message_box()
    assert box.text == "MagSetFullscreenColorEffect failed.\nError code: 87"
    desk.press_button(box)
    desk.wait_for_setting("LegacyModeAutoSet", "0")
    wait_for_value(desk, "LEGACY MODE", "OFF")
    desk.close_settings()
    for preset in ("DAY", "EVENING", "NIGHT"):
        desk.choose(preset)
    assert_no_message_box(desk)
    assert FALLEN_BACK not in desk.log()
    desk.wait_for_setting("Brightness", "700")
    assert desk.settings()["UseLegacyGamma"] == "0"

    # After the user has left Legacy Mode, a later fallback shows the notice again.
    desk.restart()
    for preset in ("DAY", "EVENING"):
        desk.choose(preset)
    desk.wait_for_log(FALLEN_BACK)
    assert desk.wait_for_message_box().text.startswith("Ambrel detected that your graphics hardware")
    assert desk.settings()["LegacyModeAutoSet"] == "1"


def test_the_row_shows_a_fallback_that_it_caused(start_with):
    desk = start_with({"AllowExtremeDim": 1}, effect=(0, 87))
    desk.press_power()
    desk.wait_for_colour(0.385, 1.0)
    desk.show_settings()
    wait_for_panel(desk, "settings")
    for _ in range(2):
        desk.click_unit(*SETTINGS_ROWS["ALLOW EXTREME DIM"])
    desk.press_button(desk.wait_for_message_box())
    wait_for_value(desk, "LEGACY MODE", "ON")
    desk.wait_for_legacy_colour(0.385, 1.0)


def test_an_accepted_ramp_after_a_refusal_is_logged_even_after_leaving_legacy_mode(start_with):
    desk = start_with({"UseLegacyGamma": 1})
    desk.choose("NIGHT")
    desk.wait_for_log("Legacy ramp REJECTED (intensity=1.000 brightness=0.700) - Windows range limit")
    desk.wait_for_saves(1)
    switch_legacy_mode(desk, "row")
    desk.wait_for_colour(*NIGHT)
    assert not [line for line in desk.log() if "accepted again" in line]
    desk.close_settings()
    wait_for_panel(desk, "main")
    desk.choose("DAY")
    desk.wait_for_colour(*DAY)
    desk.wait_for_saves(3)
    switch_legacy_mode(desk, "row")
    desk.wait_for_log("Legacy ramp accepted again (intensity=0.385 brightness=1.000)")
    desk.wait_for_legacy_colour(*DAY)
    assert len([line for line in desk.log() if line.startswith("Legacy ramp")]) == 2
