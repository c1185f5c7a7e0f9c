"""The FILTER STATE section of the support report: the state of the filter and its pipeline."""

import math
import time

import pytest

import model
from bundle import copy
from desk import wait_until
from panels import panel_of

ICM_KEY, ICM_VALUE = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM", "GdiIcmGammaRange"
LEGACY_PIPELINE = "Pipeline:       Legacy gamma (SetDeviceGammaRamp)"
REJECTED = "  ** LAST APPLY REJECTED by Windows - range-limited **"
DEFAULT_RANGE = "Gamma range:    Windows default (strong ramps blocked until expanded)"
EXPANDED = "Gamma range:    expanded (GdiIcmGammaRange=256)"
NO_HELP = "Gamma fix:      applied + restart done, ramps STILL rejected (driver level limit?) - banner demoted"
DAY_LINES = ["Intensity:      0.385  (warmth slider)", "-> Kelvin:      4000K",
             "-> Target RGB:  (1.000, 0.939, 0.515)", "Brightness:     1.000  (100%)", "Allow ext. dim: OFF",
             "Active preset:  DAY (~4000K)"]
EVENING_LINES = ["Intensity:      0.585  (warmth slider)", "-> Kelvin:      2700K",
                 "-> Target RGB:  (1.000, 0.818, 0.186)", "Brightness:     0.850  (85%)", "Allow ext. dim: OFF",
                 "Active preset:  EVENING (~2700K)"]
NIGHT_LINES = ["Intensity:      1.000  (warmth slider)", "-> Kelvin:      0K",
               "-> Target RGB:  (1.000, 0.000, 0.000)", "Brightness:     0.700  (70%)", "Allow ext. dim: OFF",
               "Active preset:  NIGHT (0K, pure red)"]
PRESET_LINES = {"DAY": DAY_LINES, "EVENING": EVENING_LINES, "NIGHT": NIGHT_LINES}
ON, OFF = "Enabled (KIVO):  ON", "Enabled (KIVO):  OFF"
MAGNIFICATION = "Pipeline:       Magnification API"


def applies(accepted, rejected):
    return f"Ramp applies:   accepted {accepted} / rejected {rejected} this session"


@pytest.fixture(name="start_with")
def start_with_fixture(file_desk):
    """Starts the program with a registry value and settings."""
    def start(gamma_range=None, **settings):
        if file_desk.program_running():
            file_desk.kill_program()
        file_desk.registry_delete(ICM_KEY, ICM_VALUE)
        if gamma_range is not None:
            file_desk.registry_set(ICM_KEY, ICM_VALUE, gamma_range)
        return file_desk.start_fresh(settings)
    yield start
    file_desk.registry_delete(ICM_KEY, ICM_VALUE)


def choose(desk, *presets):
    """Chooses presets one after the other from the main panel and waits for each save."""
    for preset in presets:
        desk.show()
        if wait_until(lambda: panel_of(desk), "a panel") == "settings":
            desk.close_settings()
            wait_until(lambda: panel_of(desk) == "main", "the main panel")
        desk.choose(preset)
        desk.wait_for_setting("Intensity", str(model.per_mille(model.PRESETS[preset].intensity)))


def filter_state(desk):
    return copy(desk).section("FILTER STATE")


def pipeline(desk):
    lines = filter_state(desk)
    return lines[next(index for index, line in enumerate(lines) if line.startswith("Pipeline:")):]


# The filter

@pytest.mark.parametrize("preset", model.PRESETS)
def test_each_preset_is_reported_with_its_derived_values(start_with, preset):
    desk = start_with()
    choose(desk, preset)
    assert filter_state(desk) == [ON, *PRESET_LINES[preset], MAGNIFICATION]


def test_a_filter_that_is_turned_off_keeps_its_values(start_with):
    desk = start_with()
    choose(desk, "EVENING")
    desk.press_power()
    desk.wait_for_plain_screen()
    assert filter_state(desk) == [OFF, *EVENING_LINES, MAGNIFICATION]


@pytest.mark.parametrize("per_mille", [0, 1, 200, 500, 692, 693, 800, 950, 999, 1000])
def test_kelvin_and_colour_follow_the_intensity(start_with, per_mille):
    report = copy(start_with(Intensity=per_mille))
    intensity = per_mille / 1000
    assert report.value("FILTER STATE", "Intensity:      ") == f"{intensity:.3f}  (warmth slider)"
    assert report.value("FILTER STATE", "-> Kelvin:      ") == f"{math.floor((1 - intensity) * 6500 + 0.5)}K"
    red, green, blue = model.filter_colour(intensity)
    assert report.value("FILTER STATE", "-> Target RGB:  ") == f"({red:.3f}, {green:.3f}, {blue:.3f})"


@pytest.mark.parametrize("per_mille, kelvin", [(385, "3998K"), (1, "6494K"), (3, "6481K"), (999, "7K")])
def test_kelvin_is_rounded_half_up_without_a_separator(start_with, per_mille, kelvin):
    # 6493.5, 6480.5 and 6.5 are halves.
    assert copy(start_with(Intensity=per_mille)).value("FILTER STATE", "-> Kelvin:      ") == kelvin


@pytest.mark.parametrize("per_mille, preset", [
    (364, "custom"), (365, "DAY (~4000K)"), (404, "DAY (~4000K)"), (405, "custom"),
    (564, "custom"), (565, "EVENING (~2700K)"), (604, "EVENING (~2700K)"), (605, "custom"),
    (979, "custom"), (981, "NIGHT (0K, pure red)"), (1000, "NIGHT (0K, pure red)"), (0, "custom"), (700, "custom"),
])
def test_an_intensity_close_to_a_preset_is_reported_as_that_preset(start_with, per_mille, preset):
    assert copy(start_with(Intensity=per_mille)).value("FILTER STATE", "Active preset:  ") == preset


@pytest.mark.parametrize("per_mille, extreme, shown", [
    (1000, 0, "1.000  (100%)"), (855, 0, "0.855  (86%)"), (854, 0, "0.854  (85%)"), (296, 0, "0.296  (30%)"),
    (995, 0, "0.995  (100%)"), (100, 0, "0.100  (10%)"), (4, 0, "0.100  (10%)"),
    (0, 1, "0.000  (0%)"), (4, 1, "0.004  (0%)"), (6, 1, "0.006  (1%)"),
])
def test_the_brightness_is_rounded_to_whole_percent(start_with, per_mille, extreme, shown):
    report = copy(start_with(Brightness=per_mille, AllowExtremeDim=extreme))
    assert report.value("FILTER STATE", "Brightness:     ") == shown
    assert report.value("FILTER STATE", "Allow ext. dim: ") == ("ON" if extreme else "OFF")


# The pipeline

def test_after_a_start_in_legacy_mode_the_counters_are_zero(start_with):
    desk = start_with(UseLegacyGamma=1)
    assert filter_state(desk) == [
        OFF, "Intensity:      0.385  (warmth slider)", "-> Kelvin:      3998K", "-> Target RGB:  (1.000, 0.939, 0.515)",
        "Brightness:     1.000  (100%)", "Allow ext. dim: OFF", "Active preset:  DAY (~4000K)", LEGACY_PIPELINE,
        applies(0, 0), DEFAULT_RANGE]


def test_accepted_and_rejected_ramps_are_counted_and_the_last_result_is_reported(start_with):
    desk = start_with(UseLegacyGamma=1)
    choose(desk, "DAY")
    assert pipeline(desk) == [LEGACY_PIPELINE, applies(1, 0), DEFAULT_RANGE]
    choose(desk, "NIGHT")
    assert pipeline(desk) == [LEGACY_PIPELINE + REJECTED, applies(1, 1), DEFAULT_RANGE]
    choose(desk, "NIGHT")
    assert pipeline(desk) == [LEGACY_PIPELINE + REJECTED, applies(1, 2), DEFAULT_RANGE]
    choose(desk, "EVENING")
    assert filter_state(desk) == [ON, *EVENING_LINES, LEGACY_PIPELINE, applies(2, 2), DEFAULT_RANGE]


def test_a_rejected_ramp_is_not_reported_outside_legacy_mode(start_with):
    desk = start_with(UseLegacyGamma=1)
    choose(desk, "NIGHT")
    assert pipeline(desk)[0] == LEGACY_PIPELINE + REJECTED
    desk.flip("LEGACY MODE")
    assert filter_state(desk) == [ON, *NIGHT_LINES, MAGNIFICATION]


def started_at():
    """The start of this machine in seconds since 1970."""
    return int(time.time() - time.clock_gettime(time.CLOCK_MONOTONIC))


@pytest.mark.parametrize("gamma_range, epoch, lines", [
    pytest.param(None, 0, [DEFAULT_RANGE], id="no fix"),
    pytest.param(255, 0, [DEFAULT_RANGE], id="a smaller range"),
    pytest.param(256, 0, [EXPANDED], id="expanded by another program"),
    pytest.param(1024, 0, [EXPANDED], id="expanded further"),
    pytest.param(256, 10**11, [EXPANDED], id="fixed after the start of the machine"),
    pytest.param(256, 1, [EXPANDED, NO_HELP], id="restarted since"),
    pytest.param(256, -60, [EXPANDED, NO_HELP], id="restarted a minute later"),
    pytest.param(256, 60, [EXPANDED], id="restarted a minute before"),
    pytest.param(None, 1, [DEFAULT_RANGE], id="taken back since"),
])
def test_a_rejected_ramp_is_reported_with_the_state_of_the_fix(start_with, gamma_range, epoch, lines):
    epoch = started_at() + epoch if abs(epoch) == 60 else epoch
    desk = start_with(gamma_range, UseLegacyGamma=1, GammaFixEpoch=epoch)
    choose(desk, "NIGHT")
    assert pipeline(desk) == [LEGACY_PIPELINE + REJECTED, applies(0, 1), *lines]


def test_a_fix_after_which_ramps_are_accepted_is_not_reported_as_ineffective(start_with):
    desk = start_with(256, UseLegacyGamma=1, GammaFixEpoch=1)
    assert pipeline(desk) == [LEGACY_PIPELINE, applies(0, 0), EXPANDED]
    choose(desk, "NIGHT", "DAY")
    assert pipeline(desk) == [LEGACY_PIPELINE, applies(1, 1), EXPANDED]


def test_outside_legacy_mode_the_fix_is_not_reported(start_with):
    desk = start_with(256, GammaFixEpoch=1)
    choose(desk, "NIGHT")
    assert pipeline(desk) == [MAGNIFICATION]
