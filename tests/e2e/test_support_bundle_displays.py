"""The DISPLAYS and the PWM-SAFE MODE sections of the support report, on simulated monitors and panels."""

import pytest

from backlight import POLL, VERIFY, Monitor, Panel
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401
from bundle import copy, copy_by_message
from desk import wait_until
from panels import show_settings, wait_for_panel

DEVICE = "\\\\.\\DISPLAY1"
MODE = "    Mode:          1920x1080 @ 60Hz, 32-bit"
ADAPTER = "Adapter:        Wine Adapter"
BUILT_IN_ONLY = "built-in panel(s) only (WMI) - externals not controllable"
EXTERNAL = "includes external display(s) (DDC/CI)"
SLOWED = "Retry pace:       slowed to 30s (display would not hold 100%)"
SNAPSHOTS = "Brightness snapshots taken on enable:"


def shown(name, *brightness):
    """The section with the lab's one display on it."""
    return ["Total:          1", f"[0] {name}  (PRIMARY)", f"    Device:        {DEVICE}", MODE, *brightness, ADAPTER]


def supported(current, low, high):
    return ["    DDC/CI bright: supported", f"    HW brightness: {current} (range {low}..{high})"]


NOT_SUPPORTED = ["    DDC/CI bright: not supported"]


def mode(toggle="OFF", available="no", locked="no", pending="no", at_full="0 of 0"):
    return [f"Toggle:           {toggle}", f"Available:        {available}", f"Locked at 100%:   {locked}",
            f"Pending verify:   {pending}", f"At 100% / total:  {at_full}"]


def target_type(text):
    return [f"Target type:      {text}"]


def displays(backlight):
    return copy(backlight.desk).section("DISPLAYS")


def pwm(backlight):
    return copy(backlight.desk).section("PWM-SAFE MODE")


def unlock(backlight):
    """Closes the settings panel, which a copy leaves open, and unlocks."""
    backlight.desk.close_settings()
    wait_for_panel(backlight.desk, "main")
    backlight.unlock()


# DISPLAYS

def test_a_display_without_a_responding_monitor_is_listed_by_device_name_without_brightness(backlight):
    assert displays(backlight.start()) == shown(DEVICE, *NOT_SUPPORTED)


@pytest.mark.parametrize("current, low, high", [
    (40, 0, 100), (0, 0, 0), (100, 0, 100), (37, 10, 90), (70000, 5, 100000), (5, 90, 10),
    pytest.param(0xFFFFFFFF, 0x80000000, 0xFFFFFFFE, id="more than 31 bits"),
])
def test_a_controllable_monitor_is_listed_with_its_raw_values(backlight, current, low, high):
    backlight.start([Monitor("left", current, low, high, description="Desk monitor")])
    assert displays(backlight) == shown("Desk monitor", *supported(current, low, high))


def test_the_values_are_current(backlight):
    backlight.start([Monitor("left", 40)])
    copy(backlight.desk)
    backlight.hardware.set_by_user("left", 63)
    assert displays(backlight) == shown("Generic PnP Monitor", *supported(63, 0, 100))


def test_a_monitor_without_the_capability_has_no_brightness_line(backlight):
    backlight.start([Monitor("left", 40, capable=False, description="Old screen")])
    assert displays(backlight) == shown("Old screen", *NOT_SUPPORTED)


def test_a_monitor_whose_capabilities_cannot_be_read_is_listed_as_not_supported(backlight):
    backlight.start([Monitor("left", 40, fails="capabilities", description="Deaf screen")])
    assert displays(backlight) == shown("Deaf screen", *NOT_SUPPORTED)


def test_a_capable_monitor_that_cannot_be_read_shows_zeros(backlight):
    backlight.start([Monitor("left", 40, fails="read", description="Shy screen")])
    assert displays(backlight) == shown("Shy screen", *supported(0, 0, 0))


def test_a_display_with_several_monitors_is_represented_by_the_first(backlight):
    backlight.start([Monitor("left", 40, description="First"), Monitor("right", 70, description="Second")])
    assert displays(backlight) == shown("First", *supported(40, 0, 100))


def test_a_monitor_without_a_description_is_listed_by_device_name(backlight):
    backlight.start([Monitor("left", 40, description="")])
    assert displays(backlight) == shown(DEVICE, *supported(40, 0, 100))


def test_a_description_with_any_characters_is_unchanged(backlight):
    backlight.start([Monitor("left", 40, description="\u6a5f\u68b0 %s%n \u00f6")])
    assert displays(backlight) == shown("\u6a5f\u68b0 %s%n \u00f6", *supported(40, 0, 100))


def test_a_control_character_in_a_description_starts_no_line(backlight):
    backlight.start([Monitor("left", 40, description="Shy\r\n=== EVENT LOG ===\u2029screen")])
    assert displays(backlight) == shown("Shy\ufffd\ufffd=== EVENT LOG ===\ufffdscreen", *supported(40, 0, 100))


@pytest.mark.parametrize("failing", [{"count_error": 5}, {"fetch_error": 5}, {"count": 0}], ids=str)
def test_a_display_whose_monitors_cannot_be_opened_is_still_listed(backlight, failing):
    backlight.start([Monitor("left", 40)])
    backlight.hardware.display(**failing)
    assert displays(backlight) == shown(DEVICE, *NOT_SUPPORTED)


def test_a_monitor_library_that_lacks_a_function_only_omits_the_brightness(backlight):
    backlight.hardware.install_monitors(without=["GetMonitorBrightness"])
    try:
        assert displays(backlight.start([Monitor("left", 40)])) == shown(DEVICE, *NOT_SUPPORTED)
    finally:
        backlight.desk.kill_program()
        backlight.hardware.install_monitors()


def test_a_panel_is_not_listed_as_a_monitor(backlight):
    backlight.start(panels=[Panel("laptop", 60)])
    assert displays(backlight) == shown(DEVICE, *NOT_SUPPORTED)


def test_the_mode_is_current(make_desk):
    desk = make_desk().start_fresh()
    show_settings(desk)
    desk.change_mode(1280, 720)
    wait_until(lambda: desk.metrics()["height"] == 720, "the new mode")
    copy_by_message(desk)  # The button is below the smaller screen now.
    assert "\r\n    Mode:          1280x720 @ 60Hz, 32-bit\r\n" in desk.clipboard_text()


def test_the_report_sets_no_display_and_releases_every_monitor(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30)], [Panel("laptop", 60)])
    backlight.hardware.clear_calls()
    copy(backlight.desk)
    assert backlight.sets() == []
    # Opening the popup may query the displays; the report itself queries the first monitor and no panel.
    assert backlight.record()[-5:] == ["count display0", "fetch display0", "capabilities left", "read left",
                                       "destroy left,right"]
    assert backlight.hardware.outstanding() == 0


# PWM-SAFE MODE

def test_without_a_display_nothing_is_available_and_no_type_is_listed(backlight):
    assert pwm(backlight.start()) == mode()


@pytest.mark.parametrize("monitors, panels, kind, at_full", [
    ([], [Panel("laptop", 60)], BUILT_IN_ONLY, "0 of 1"),
    ([], [Panel("laptop", 60), Panel("lid", 100)], BUILT_IN_ONLY, "1 of 2"),
    ([Monitor("left", 40)], [], EXTERNAL, "0 of 1"),
    ([Monitor("left", 100), Monitor("right", 100)], [], EXTERNAL, "2 of 2"),
    ([Monitor("left", 100)], [Panel("laptop", 60)], EXTERNAL, "1 of 2"),
    ([Monitor("left", 40, capable=False)], [Panel("laptop", 60)], BUILT_IN_ONLY, "0 of 1"),
], ids=["panel", "two panels", "monitor", "two monitors", "both", "panel and a monitor that cannot"])
def test_the_controllable_displays_are_counted_and_their_type_is_listed(backlight, monitors, panels, kind, at_full):
    backlight.start(monitors, panels)
    assert pwm(backlight) == mode(available="yes", at_full=at_full) + target_type(kind)


def test_an_active_lock_is_listed_with_its_snapshots_and_an_ended_lock_is_not(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    assert pwm(backlight) == (mode("ON", "yes", locked="yes", at_full="1 of 1") + target_type(EXTERNAL)
                              + [SNAPSHOTS, f"  DXVA2:{DEVICE}#0 -> 40"])
    unlock(backlight)
    assert pwm(backlight) == mode(available="yes", at_full="0 of 1") + target_type(EXTERNAL)


def test_a_lock_that_is_not_verified_is_listed_as_pending(backlight):
    backlight.start([Monitor("left", 40)], on=True)
    show_settings(backlight.desk)
    backlight.hardware.change("left", behaviour="ignores")
    backlight.hardware.set_by_user("left", 40)
    # The poll asserts 100 % again; its verification is held back.
    backlight.tick(VERIFY, POLL)
    copy_by_message(backlight.desk)
    assert backlight.desk.clipboard_text().split("=== PWM-SAFE MODE ===\r\n")[1].split("\r\n")[:5] == mode(
        "ON", "yes", pending="yes", at_full="0 of 1")


def test_the_snapshots_are_sorted_by_display_name(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 35)],
                    [Panel("laptop", 60, instance="e\u0301cran"), Panel("lid", 70, instance="DISPLAY\\LID_0"),
                     Panel("outer", 80, instance="Display\\Outer_0"), Panel("full", 100, instance="\u6a5f")])
    backlight.lock("laptop", "lid", "outer", "full", "left", "right")
    lines = pwm(backlight)
    assert lines == (mode("ON", "yes", locked="yes", at_full="6 of 6") + target_type(EXTERNAL) + [
        SNAPSHOTS, "  DISPLAY\\LID_0 -> 70", f"  DXVA2:{DEVICE}#0 -> 40", f"  DXVA2:{DEVICE}#1 -> 35",
        "  Display\\Outer_0 -> 80", "  e\u0301cran -> 60", "  \u6a5f -> 100"])
    unlock(backlight)


def test_a_disconnected_display_keeps_its_snapshot(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.hardware.unplug("left")
    backlight.tick(POLL)
    assert pwm(backlight) == mode("ON") + [SNAPSHOTS, f"  DXVA2:{DEVICE}#0 -> 40"]
    backlight.hardware.plug("left")
    backlight.tick(POLL, VERIFY)
    unlock(backlight)


def test_slowed_retries_are_listed_until_the_display_holds_again(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.hardware.change("left", behaviour="ignores")
    backlight.hardware.set_by_user("left", 40)
    backlight.tick(*[POLL, VERIFY] * 9)
    assert SLOWED not in pwm(backlight)
    backlight.tick(*[POLL, VERIFY] * 2)
    assert pwm(backlight) == (mode("ON", "yes", at_full="0 of 1") + target_type(EXTERNAL)
                              + [SLOWED, SNAPSHOTS, f"  DXVA2:{DEVICE}#0 -> 40"])
    backlight.hardware.change("left", behaviour="ok")
    backlight.tick(POLL, VERIFY)
    assert SLOWED not in pwm(backlight)
    unlock(backlight)


def test_the_pwm_safe_section_shows_the_result_of_the_last_poll(backlight):
    backlight.start([Monitor("left", 40)])
    show_settings(backlight.desk)
    backlight.hardware.set_by_user("left", 100)
    backlight.hardware.clear_calls()
    assert pwm(backlight) == mode(available="yes", at_full="0 of 1") + target_type(EXTERNAL)
    assert displays(backlight) == shown("Generic PnP Monitor", *supported(100, 0, 100))
