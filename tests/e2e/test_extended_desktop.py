"""Legacy Mode on an extended desktop, where Windows refuses gamma ramps for the whole screen's device context."""

import pytest

import model
from desk import MENU_LEGACY_MODE, RAMP_TOLERANCE, ramp_distance, wait_until

DAY, EVENING = model.PRESETS["DAY"][:2], model.PRESETS["EVENING"][:2]
REFUSED = "Legacy ramp REJECTED (intensity=0.385 brightness=1.000) - Windows range limit"


@pytest.fixture(name="legacy")
def legacy_fixture(file_desk):
    return file_desk.start_fresh({"UseLegacyGamma": 1})


def wait_for_display(desk, number, factors):
    def shown():
        return ramp_distance(desk.displays.ramp(number), model.ramp(factors)) <= RAMP_TOLERANCE
    wait_until(shown, f"the colour of display {number}")


def rejections(desk):
    return [line for line in desk.log() if "REJECTED" in line]


def test_every_display_is_coloured_and_restored(legacy):
    legacy.displays.connect("everything", "everything", "everything")
    legacy.choose("EVENING")
    for number in (1, 2, 3):
        wait_for_display(legacy, number, model.factors(*EVENING))
    assert not rejections(legacy)
    legacy.press_power()
    for number in (1, 2, 3):
        wait_for_display(legacy, number, model.IDENTITY)


def test_a_display_that_refuses_every_ramp_is_skipped(legacy):
    legacy.displays.connect("everything", "nothing")
    legacy.choose("EVENING")
    legacy.wait_for_legacy_colour(*EVENING)
    wait_for_display(legacy, 2, model.IDENTITY)
    legacy.slide("WARMTH", 20)
    legacy.wait_for_saves(1)
    assert not rejections(legacy)


def test_a_display_that_refuses_only_the_filters_ramp_is_reported(legacy):
    legacy.displays.connect("everything", "identity")
    legacy.choose("DAY")
    legacy.wait_for_log(REFUSED)
    wait_for_display(legacy, 2, model.IDENTITY)


def test_a_desktop_whose_displays_all_refuse_every_ramp_is_reported(legacy):
    legacy.displays.connect("nothing", "nothing")
    legacy.choose("DAY")
    legacy.wait_for_log(REFUSED)
    assert legacy.screen_is_plain()


def test_a_display_connected_later_is_coloured_at_the_next_apply(legacy):
    legacy.displays.connect("everything")
    legacy.choose("DAY")
    legacy.wait_for_legacy_colour(*DAY)
    legacy.displays.change("everything", "everything")
    legacy.choose("EVENING")
    legacy.wait_for_legacy_colour(*EVENING)
    wait_for_display(legacy, 2, model.factors(*EVENING))


def test_leaving_legacy_mode_leaves_one_filter_on_every_display(legacy):
    legacy.displays.connect("everything", "everything")
    legacy.choose("EVENING")
    wait_for_display(legacy, 2, model.factors(*EVENING))
    legacy.menu(MENU_LEGACY_MODE)
    legacy.wait_for_colour(*EVENING)
    wait_for_display(legacy, 2, model.IDENTITY)


def test_quit_restores_every_display(legacy):
    legacy.displays.connect("everything", "everything")
    legacy.choose("EVENING")
    wait_for_display(legacy, 2, model.factors(*EVENING))
    assert legacy.quit() == 0
    assert legacy.screen_is_plain()
    wait_for_display(legacy, 2, model.IDENTITY)
