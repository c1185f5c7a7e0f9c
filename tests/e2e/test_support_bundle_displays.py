"""The DISPLAYS and the PWM-SAFE MODE sections of the support report, on simulated monitors and panels."""

import pytest

from backlight import POLL, VERIFY, Monitor, Panel
from backlight import backlight_desk_fixture, bench_fixture  # noqa: F401
from bundle import SUPPORT, copy
from desk import wait_until
from panels import show_settings, wait_for_panel

WM_LBUTTONDOWN = 0x201
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


def displays(bench):
    return copy(bench.desk).section("DISPLAYS")


def pwm(bench):
    return copy(bench.desk).section("PWM-SAFE MODE")


def unlock(bench):
    """From the settings panel, in which a copy leaves the popup."""
    bench.desk.close_settings()
    wait_for_panel(bench.desk, "main")
    bench.unlock()


def press_by_message(desk):
    """The support button's press and all that it does: the report is on the clipboard when this returns."""
    desk.send_message(WM_LBUTTONDOWN, 1, SUPPORT[0] | SUPPORT[1] << 16)


# DISPLAYS

def test_a_display_without_a_responding_monitor_is_listed_by_device_name_without_brightness(bench):
    assert displays(bench.begin()) == shown(DEVICE, *NOT_SUPPORTED)


@pytest.mark.parametrize("current, low, high", [
    (40, 0, 100), (0, 0, 0), (100, 0, 100), (37, 10, 90), (70000, 5, 100000), (5, 90, 10),
    pytest.param(0xFFFFFFFF, 0x80000000, 0xFFFFFFFE, id="more than 31 bits"),
])
def test_a_controllable_monitor_is_listed_with_its_raw_values(bench, current, low, high):
    bench.begin([Monitor("left", current, low, high, description="Desk monitor")])
    assert displays(bench) == shown("Desk monitor", *supported(current, low, high))


def test_the_values_are_current(bench):
    bench.begin([Monitor("left", 40)])
    copy(bench.desk)
    bench.hardware.turn("left", 63)
    assert displays(bench) == shown("Generic PnP Monitor", *supported(63, 0, 100))


def test_a_monitor_without_the_capability_has_no_brightness_line(bench):
    bench.begin([Monitor("left", 40, capable=False, description="Old screen")])
    assert displays(bench) == shown("Old screen", *NOT_SUPPORTED)


def test_a_monitor_whose_capabilities_cannot_be_read_is_listed_as_not_supported(bench):
    bench.begin([Monitor("left", 40, fails="capabilities", description="Deaf screen")])
    assert displays(bench) == shown("Deaf screen", *NOT_SUPPORTED)


def test_a_capable_monitor_that_cannot_be_read_shows_zeros(bench):
    bench.begin([Monitor("left", 40, fails="read", description="Shy screen")])
    assert displays(bench) == shown("Shy screen", *supported(0, 0, 0))


def test_a_display_with_several_monitors_is_represented_by_the_first(bench):
    bench.begin([Monitor("left", 40, description="First"), Monitor("right", 70, description="Second")])
    assert displays(bench) == shown("First", *supported(40, 0, 100))


def test_a_monitor_without_a_description_is_listed_by_device_name(bench):
    bench.begin([Monitor("left", 40, description="")])
    assert displays(bench) == shown(DEVICE, *supported(40, 0, 100))


def test_a_description_with_any_characters_is_unchanged(bench):
    bench.begin([Monitor("left", 40, description="\u6a5f\u68b0 %s%n \u00f6")])
    assert displays(bench) == shown("\u6a5f\u68b0 %s%n \u00f6", *supported(40, 0, 100))


@pytest.mark.parametrize("failing", [{"count_error": 5}, {"fetch_error": 5}, {"count": 0}], ids=str)
def test_a_display_whose_monitors_cannot_be_opened_is_still_listed(bench, failing):
    bench.begin([Monitor("left", 40)])
    bench.hardware.display(**failing)
    assert displays(bench) == shown(DEVICE, *NOT_SUPPORTED)


def test_a_monitor_library_that_lacks_a_function_only_omits_the_brightness(bench):
    bench.hardware.install_monitors(without=["GetMonitorBrightness"])
    try:
        assert displays(bench.begin([Monitor("left", 40)])) == shown(DEVICE, *NOT_SUPPORTED)
    finally:
        bench.desk.kill_program()
        bench.hardware.install_monitors()


def test_a_panel_is_not_listed_as_a_monitor(bench):
    bench.begin(panels=[Panel("laptop", 60)])
    assert displays(bench) == shown(DEVICE, *NOT_SUPPORTED)


def test_the_mode_is_current(make_desk):
    desk = make_desk().start_fresh()
    show_settings(desk)
    desk.change_mode(1280, 720)
    wait_until(lambda: desk.metrics()["height"] == 720, "the new mode")
    press_by_message(desk)  # The button is below the smaller screen now.
    assert "\r\n    Mode:          1280x720 @ 60Hz, 32-bit\r\n" in desk.clipboard_text()


def test_the_report_sets_no_display_and_releases_every_monitor(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30)], [Panel("laptop", 60)])
    bench.hardware.forget()
    copy(bench.desk)
    assert bench.sets() == []
    # Opening the popup may look at the displays; the report itself asks the first monitor, and no panel.
    assert bench.record()[-5:] == ["count display0", "fetch display0", "ask left", "read left", "destroy left,right"]
    assert bench.hardware.outstanding() == 0


# PWM-SAFE MODE

def test_without_a_display_nothing_is_available_and_no_type_is_listed(bench):
    assert pwm(bench.begin()) == mode()


@pytest.mark.parametrize("monitors, panels, kind, at_full", [
    ([], [Panel("laptop", 60)], BUILT_IN_ONLY, "0 of 1"),
    ([], [Panel("laptop", 60), Panel("lid", 100)], BUILT_IN_ONLY, "1 of 2"),
    ([Monitor("left", 40)], [], EXTERNAL, "0 of 1"),
    ([Monitor("left", 100), Monitor("right", 100)], [], EXTERNAL, "2 of 2"),
    ([Monitor("left", 100)], [Panel("laptop", 60)], EXTERNAL, "1 of 2"),
    ([Monitor("left", 40, capable=False)], [Panel("laptop", 60)], BUILT_IN_ONLY, "0 of 1"),
], ids=["panel", "two panels", "monitor", "two monitors", "both", "panel and a monitor that cannot"])
def test_the_controllable_displays_are_counted_and_their_type_is_listed(bench, monitors, panels, kind, at_full):
    bench.begin(monitors, panels)
    assert pwm(bench) == mode(available="yes", at_full=at_full) + target_type(kind)


def test_an_active_lock_is_listed_with_its_snapshots_and_an_ended_lock_is_not(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    assert pwm(bench) == (mode("ON", "yes", locked="yes", at_full="1 of 1") + target_type(EXTERNAL)
                          + [SNAPSHOTS, f"  DXVA2:{DEVICE}#0 -> 40"])
    unlock(bench)
    assert pwm(bench) == mode(available="yes", at_full="0 of 1") + target_type(EXTERNAL)


def test_a_lock_that_is_not_verified_is_listed_as_pending(bench):
    bench.begin([Monitor("left", 40)], on=True)
    show_settings(bench.desk)
    bench.hardware.change("left", behaviour="ignores")
    bench.hardware.turn("left", 40)
    # By messages one right after the other: the verification of what the poll asks follows three quarters of a second
    # later.
    bench.tick(VERIFY, POLL)
    press_by_message(bench.desk)
    assert bench.desk.clipboard_text().split("=== PWM-SAFE MODE ===\r\n")[1].split("\r\n")[:5] == mode(
        "ON", "yes", pending="yes", at_full="0 of 1")


def test_the_snapshots_are_sorted_by_display_name(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 35)],
                [Panel("laptop", 60, instance="e\u0301cran"), Panel("lid", 70, instance="DISPLAY\\LID_0"),
                 Panel("outer", 80, instance="Display\\Outer_0"), Panel("full", 100, instance="\u6a5f")])
    bench.lock("laptop", "lid", "outer", "full", "left", "right")
    lines = pwm(bench)
    assert lines == (mode("ON", "yes", locked="yes", at_full="6 of 6") + target_type(EXTERNAL) + [
        SNAPSHOTS, "  DISPLAY\\LID_0 -> 70", f"  DXVA2:{DEVICE}#0 -> 40", f"  DXVA2:{DEVICE}#1 -> 35",
        "  Display\\Outer_0 -> 80", "  e\u0301cran -> 60", "  \u6a5f -> 100"])
    unlock(bench)


def test_a_disconnected_display_keeps_its_snapshot(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.hardware.unplug("left")
    bench.tick(POLL)
    assert pwm(bench) == mode("ON") + [SNAPSHOTS, f"  DXVA2:{DEVICE}#0 -> 40"]
    bench.hardware.plug("left")
    bench.tick(POLL, VERIFY)
    unlock(bench)


def test_slowed_retries_are_listed_until_the_display_holds_again(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.hardware.change("left", behaviour="ignores")
    bench.hardware.turn("left", 40)
    bench.tick(*[POLL, VERIFY] * 9)
    assert SLOWED not in pwm(bench)
    bench.tick(*[POLL, VERIFY] * 2)
    assert pwm(bench) == (mode("ON", "yes", at_full="0 of 1") + target_type(EXTERNAL)
                          + [SLOWED, SNAPSHOTS, f"  DXVA2:{DEVICE}#0 -> 40"])
    bench.hardware.change("left", behaviour="ok")
    bench.tick(POLL, VERIFY)
    assert SLOWED not in pwm(bench)
    unlock(bench)


def test_the_pwm_safe_section_shows_the_result_of_the_last_poll(bench):
    bench.begin([Monitor("left", 40)])
    show_settings(bench.desk)
    bench.hardware.turn("left", 100)
    bench.hardware.forget()
    assert pwm(bench) == mode(available="yes", at_full="0 of 1") + target_type(EXTERNAL)
    assert displays(bench) == shown("Generic PnP Monitor", *supported(100, 0, 100))
