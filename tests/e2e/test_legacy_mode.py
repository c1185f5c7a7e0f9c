"""Legacy Mode applies the filter as a gamma ramp. The screen really refuses some ramps."""

import pytest

import model
from ambrel_lab.layout import STRIP_TEXT
from desk import MENU_LEGACY_MODE, wait_until

START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
REFUSED = "Legacy ramp REJECTED (intensity=1.000 brightness=0.700) - Windows range limit"
RED, AMBER = (255, 0, 0), (255, 210, 0)


@pytest.fixture(name="legacy")
def legacy_fixture(file_desk):
    return file_desk.start_fresh({"UseLegacyGamma": 1})


def banner_shown(desk):
    """Whether the strip between sliders and presets contains red text."""
    return desk.popup_picture().crop(*STRIP_TEXT).contains(RED)


def test_a_start_in_legacy_mode_does_not_call_the_magnification_library(legacy):
    legacy.press_power()
    legacy.wait_for_legacy_colour(*START)
    assert legacy.magnification_calls() == []


@pytest.mark.parametrize("intensity, brightness", [
    (0, 1000), (200, 800), (385, 1000), (585, 850), (692, 500), (800, 1000),
])
def test_the_ramp_is_a_straight_line_for_each_channel(file_desk, intensity, brightness):
    desk = file_desk.start_fresh({"UseLegacyGamma": 1, "Intensity": intensity, "Brightness": brightness})
    desk.press_power()
    desk.wait_for_tooltip(model.tooltip_on(intensity / 1000.0, brightness / 1000.0))
    desk.wait_for_legacy_colour(intensity / 1000.0, brightness / 1000.0)
    assert not [line for line in desk.log() if line.startswith("Legacy ramp")]


def test_the_power_button_restores_the_screen(legacy):
    legacy.press_power()
    legacy.wait_for_legacy_colour(*START)
    legacy.press_power()
    legacy.wait_for_plain_screen()
    legacy.wait_for_tooltip(model.TOOLTIP_OFF)


def test_the_sliders_behave_as_with_the_matrix(legacy):
    legacy.press_power()
    legacy.slide("WARMTH", 30)
    legacy.slide("BRIGHTNESS", -40)
    warmth, brightness = model.dragged(0.385, 30), model.dragged(1.0, -40, 0.1)
    legacy.wait_for_tooltip(model.tooltip_on(warmth, brightness))
    legacy.wait_for_legacy_colour(warmth, brightness)


@pytest.mark.parametrize("name", ["DAY", "EVENING"])
def test_presets_behave_as_with_the_matrix(legacy, name):
    preset = model.PRESETS[name]
    legacy.choose(name)
    legacy.wait_for_legacy_colour(preset.intensity, preset.brightness)


def test_the_menu_moves_an_active_filter_to_the_ramp_and_saves_immediately(desk):
    desk.choose("DAY")
    desk.wait_for_colour(*model.PRESETS["DAY"][:2])
    desk.wait_for_saves(1)
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(2)
    assert desk.effects()[-1].matrix == model.matrix(model.IDENTITY)
    desk.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])
    assert desk.settings()["UseLegacyGamma"] == "1"
    assert desk.settings()["LegacyModeAutoSet"] == "0"
    assert desk.tray_tooltip() == "Ambrel - ON (4000K, 100%)"


def test_the_menu_moves_an_active_filter_back_to_the_matrix(desk):
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(1)
    desk.choose("DAY")
    desk.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])
    assert desk.effects() == []
    desk.menu(MENU_LEGACY_MODE)
    wait_until(desk.effects, "the colour matrix")
    desk.wait_for_colour(*model.PRESETS["DAY"][:2])
    assert desk.effects()[-1].diagonal == pytest.approx(model.factors(*model.PRESETS["DAY"][:2]), abs=1e-6)
    assert [call.function for call in desk.magnification_calls()].count("MagInitialize") == 1
    desk.wait_for_setting("UseLegacyGamma", "0")


def test_leaving_legacy_mode_after_the_start_loads_the_library(legacy):
    legacy.menu(MENU_LEGACY_MODE)
    legacy.wait_for_saves(1)
    assert [call.function for call in legacy.magnification_calls()] == ["MagInitialize"]
    legacy.press_power()
    legacy.wait_for_colour(*START)


def test_the_menu_with_the_filter_off_leaves_the_screen_plain(desk):
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(1)
    assert desk.effects() == []
    assert desk.screen_is_plain()


def test_the_menu_ticks_legacy_mode_while_it_is_on(desk):
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(1)
    ticked = desk.menu_picture()
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(2)
    plain = desk.menu_picture()
    assert ticked != plain
    # The tick is in the left column of the second row; everything else is equal.
    tick, middle = (20, 24, 41), plain.width
    assert ticked.crop(0, tick[1], tick[0], tick[2]) != plain.crop(0, tick[1], tick[0], tick[2])
    assert ticked.crop(tick[0], 0, middle, plain.height) == plain.crop(tick[0], 0, middle, plain.height)
    assert ticked.crop(0, 0, tick[0], tick[1]) == plain.crop(0, 0, tick[0], tick[1])


def test_a_refused_ramp_leaves_the_screen_unchanged_and_shows_the_banner(legacy):
    legacy.choose("DAY")
    legacy.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])
    assert not banner_shown(legacy)
    legacy.choose("NIGHT")
    legacy.wait_for_log(REFUSED)
    wait_until(lambda: banner_shown(legacy), "the banner")
    legacy.wait_for_tooltip("Ambrel - ON (0K, 70%)")
    legacy.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])
    assert legacy.message_boxes() == []


def test_the_banner_disappears_when_a_ramp_is_accepted_again(legacy):
    legacy.choose("NIGHT")
    wait_until(lambda: banner_shown(legacy), "the banner")
    legacy.choose("DAY")
    legacy.wait_for_log("Legacy ramp accepted again (intensity=0.385 brightness=1.000)")
    legacy.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])
    wait_until(lambda: not banner_shown(legacy), "the banner to disappear")


def test_a_series_of_refusals_is_logged_once(legacy):
    legacy.choose("NIGHT")
    legacy.wait_for_log(REFUSED)
    for brightness_way in (-5, -10, -15):
        legacy.slide("BRIGHTNESS", brightness_way)
    legacy.wait_for_tooltip(model.tooltip_on(1.0, 0.7 - 30 / model.TRAVEL))
    legacy.choose("NIGHT")
    legacy.wait_for_tooltip("Ambrel - ON (0K, 70%)")
    assert len([line for line in legacy.log() if "REJECTED" in line]) == 1


def test_every_change_of_the_ramp_result_is_logged_once(legacy):
    for times in (1, 2):
        legacy.choose("NIGHT")
        legacy.wait_for_log(REFUSED, times)
        legacy.choose("EVENING")
        legacy.wait_for_log("Legacy ramp accepted again (intensity=0.585 brightness=0.850)", times)
    assert len([line for line in legacy.log() if line.startswith("Legacy ramp")]) == 4


def test_refused_ramps_show_no_banner_outside_legacy_mode(legacy):
    legacy.choose("NIGHT")
    wait_until(lambda: banner_shown(legacy), "the banner")
    legacy.menu(MENU_LEGACY_MODE)
    wait_until(legacy.effects, "the colour matrix")
    legacy.wait_for_colour(*model.PRESETS["NIGHT"][:2])
    legacy.show()
    legacy.slide("BRIGHTNESS", 2)  # The menu does not redraw the panel; a change does.
    wait_until(lambda: not banner_shown(legacy), "the banner to disappear")
    assert legacy.popup_picture().crop(*STRIP_TEXT).contains(AMBER)


def test_the_next_start_does_not_remember_a_refusal(legacy):
    legacy.choose("NIGHT")
    legacy.wait_for_log(REFUSED)
    legacy.wait_for_saves(1)
    legacy.restart()
    legacy.show()
    wait_until(lambda: legacy.popup_picture().pixel(5, 5) == (0x19, 0x19, 0x19), "the panel")
    assert not banner_shown(legacy)
