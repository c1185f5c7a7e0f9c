"""The complete support report, compared byte for byte; its head and its APP section."""

import re
import time

import pytest

import model
from backlight import POLL, VERIFY, Backlight, Monitor, Panel
from bundle import (COPIED_LINE, LAB_MACHINE, LAB_TAG, STAMP, Machine, Report, copy, copy_by_message, fnv_1a, memory,
                    processors)
from desk import MARKER, act_within, wait_until
from panels import show_settings

ICM_KEY, ICM_VALUE = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM", "GdiIcmGammaRange"
RUN_KEY, RUN_VALUE = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run", "Ambrel2"
UPTIME = r"(\d+m )?[0-5]?\ds"  # of less than an hour
HEAD = f"""\
TO: support@ambrel.example
SUBJECT: Ambrel Windows 2.23 - Feedback ({LAB_TAG}, Windows 11 Pro b22631)

===============================================================
  PASTE THIS INTO A NEW EMAIL TO support@ambrel.example
===============================================================

>> DESCRIBE WHAT'S HAPPENING ABOVE THIS LINE <<



>> AUTOMATIC DIAGNOSTICS - DO NOT EDIT BELOW THIS LINE <<

"""
APP_AND_SYSTEM = """\
=== APP ===
Version:        2.23
Now:            {now}
Session uptime: {uptime}

=== SYSTEM ===
Platform:       Windows
OS:             Windows 11 Pro
Edition:        23H2
Version:        10.0.22631.3007
Hardware:       Lab Works Bench 7
CPU:            Lab Processor 9000 (x64, {cores} cores)
Memory:         {memory}
Locale:         en-US
Timezone:       Greenwich Standard Time
UI DPI:         96 dpi
DWM composition: enabled

"""
QUIET = HEAD + APP_AND_SYSTEM + """\
=== DISPLAYS ===
Total:          1
[0] \\\\.\\DISPLAY1  (PRIMARY)
    Device:        \\\\.\\DISPLAY1
    Mode:          1920x1080 @ 60Hz, 32-bit
    DDC/CI bright: not supported
Adapter:        Wine Adapter

=== FILTER STATE ===
Enabled (KIVO):  OFF
Intensity:      0.385  (warmth slider)
-> Kelvin:      3998K
-> Target RGB:  (1.000, 0.939, 0.515)
Brightness:     1.000  (100%)
Allow ext. dim: OFF
Active preset:  DAY (~4000K)
Pipeline:       Magnification API

=== PWM-SAFE MODE ===
Toggle:           OFF
Available:        no
Locked at 100%:   no
Pending verify:   no
At 100% / total:  0 of 0

=== SETTINGS ===
Launch at start:  OFF
Allow extreme dim:OFF
Legacy gamma:     OFF
PWM-Safe mode:    OFF
Autostart key:    not set
Settings file:    C:\\users\\ambrel\\AppData\\Roaming\\Ambrel2\\settings.ini

=== EVENT LOG (most recent 5, oldest first) ===
{ring}

=== PERSISTED LOG (last 40 lines; survives restarts, so boot
    sessions are visible; may repeat current-session lines) ===
{tail}

=== END DIAGNOSTICS ===
"""
EVERYTHING = HEAD + APP_AND_SYSTEM + """\
=== DISPLAYS ===
Total:          1
[0] Desk monitor  (PRIMARY)
    Device:        \\\\.\\DISPLAY1
    Mode:          1920x1080 @ 60Hz, 32-bit
    DDC/CI bright: supported
    HW brightness: 40 (range 10..90)
Adapter:        Wine Adapter

=== FILTER STATE ===
Enabled (KIVO):  ON
Intensity:      1.000  (warmth slider)
-> Kelvin:      0K
-> Target RGB:  (1.000, 0.000, 0.000)
Brightness:     0.700  (70%)
Allow ext. dim: ON
Active preset:  NIGHT (0K, pure red)
Pipeline:       Legacy gamma (SetDeviceGammaRamp)  ** LAST APPLY REJECTED by Windows - range-limited **
Ramp applies:   accepted 1 / rejected 1 this session
Gamma range:    expanded (GdiIcmGammaRange=256)
Gamma fix:      applied + restart done, ramps STILL rejected (driver level limit?) - banner demoted

=== PWM-SAFE MODE ===
Toggle:           ON
Available:        yes
Locked at 100%:   no
Pending verify:   no
At 100% / total:  1 of 2
Target type:      includes external display(s) (DDC/CI)
Retry pace:       slowed to 30s (display would not hold 100%)
Brightness snapshots taken on enable:
  DISPLAY\\LAB_0 -> 60
  DXVA2:\\\\.\\DISPLAY1#0 -> 38

=== SETTINGS ===
Launch at start:  ON
Allow extreme dim:ON
Legacy gamma:     ON  (user-chosen)
PWM-Safe mode:    ON
Autostart key:    C:\\Ambrel\\ambrel.exe
  target exists:  yes
  is this exe:    yes
Settings file:    C:\\users\\ambrel\\AppData\\Roaming\\Ambrel2\\settings.ini

=== EVENT LOG (most recent {lines}, oldest first) ===
{ring}

=== PERSISTED LOG (last 40 lines; survives restarts, so boot
    sessions are visible; may repeat current-session lines) ===
{tail}

=== END DIAGNOSTICS ===
"""
START_LINES = ["Ambrel Windows v2.23 starting", "OS: Windows 11 Pro 23H2 (10.0.22631)",
               "Hardware: Lab Works Bench 7 / Lab Processor 9000"]


@pytest.fixture(name="lab_desk")
def lab_desk_fixture(make_desk):
    """A separate desk with the lab's machine description; the program is not started."""
    desk = make_desk()
    Machine(desk).set(**LAB_MACHINE)
    return desk


def filled_in(text, report, log):
    """The expected text with the values of the clock and this computer. `log` is events.log before the copy."""
    lines = log.splitlines()
    ring = lines[len(lines) - lines[::-1].index(MARKER):]
    uptime = report.value("APP", "Session uptime: ")
    assert re.fullmatch(UPTIME, uptime)
    values = {"now": report.now(), "uptime": uptime, "cores": processors(), "memory": memory(),
              "ring": "\n".join(ring), "lines": len(ring), "tail": "\n".join(lines[-40:])}
    return text.format(**values).replace("\n", "\r\n")


def assert_same(text, expected):
    # Line by line first, for a better description of a difference.
    assert text.split("\r\n") == expected.split("\r\n")
    assert text.encode("utf-16-le") == expected.encode("utf-16-le")


def test_the_complete_report_directly_after_a_start(lab_desk):
    desk = lab_desk.start_fresh()
    log = ["Loaded settings: intensity=0.385 brightness=1.000 extremeDim=0 legacy=0 pwmSafe=0",
           "Gamma range: Windows default"]
    desk.wait_for_log(log[-1])
    assert desk.log() == START_LINES + log
    events = desk.events_text()
    report = copy(desk)
    assert_same(report.text, filled_in(QUIET, report, events))


def test_the_complete_report_with_all_optional_lines(lab_desk):
    desk, backlight = lab_desk, Backlight(lab_desk)
    backlight.hardware.monitors([Monitor("desk", 40, 10, 90, description="Desk monitor")])
    backlight.hardware.panels([Panel("laptop", 60, instance="DISPLAY\\LAB_0")])
    backlight.hardware.hold_timers(POLL, VERIFY)
    desk.registry_set(ICM_KEY, ICM_VALUE, 256)
    desk.registry_set(RUN_KEY, RUN_VALUE, "C:\\Ambrel\\ambrel.exe")
    desk.start_fresh({"AllowExtremeDim": 1, "UseLegacyGamma": 1, "GammaFixEpoch": 1})
    backlight.lock("laptop", "desk")
    backlight.hardware.change("desk", behaviour="ignores")
    backlight.hardware.set_by_user("desk", 40)
    backlight.tick(*[POLL, VERIFY] * 10)
    desk.choose("DAY")
    desk.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])
    desk.choose("NIGHT")
    desk.wait_for_setting("Brightness", "700")
    wait_until(lambda: desk.log()[-1] == "Saved settings", "the line of the last save")
    log = ["Loaded settings: intensity=0.385 brightness=1.000 extremeDim=1 legacy=1 pwmSafe=0",
           "Gamma range: expanded (GdiIcmGammaRange)",
           "PWM-safe targets: 2 controllable (was 0)",
           "PWM-safe toggled ON by user",
           "Saved settings",
           "PWM-safe: 2 display(s) confirmed locked at 100%",
           "PWM-safe: lock pending (1 of 2 at 100%) - poll will re-assert",
           "PWM-safe: display will not hold 100% after 10 attempts - slowing retries to 30s",
           "Legacy ramp REJECTED (intensity=1.000 brightness=0.700) - Windows range limit "
           "(registry expanded - restart pending?)",
           "Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted",
           "Saved settings"]
    assert [line for line in desk.log() if line != "Saved settings"] == [
        line for line in START_LINES + log if line != "Saved settings"]
    events = desk.events_text()
    report = copy(desk)
    assert_same(report.text, filled_in(EVERYTHING, report, events))


# The head

def test_the_subject_line_contains_version_machine_and_system(lab_desk):
    report = copy(lab_desk.start_fresh())
    assert report.text.split("\r\n")[1] == (
        f"SUBJECT: Ambrel Windows 2.23 - Feedback ({LAB_TAG}, Windows 11 Pro b22631)")


@pytest.mark.parametrize("guid, tag", [
    pytest.param("01234567-89ab-cdef-0123-456789abcdef", "16ba809b973dd525", id="plain"),
    pytest.param("M\u00f6bel \U0001f5a5", None, id="other characters"),
    pytest.param(None, "0000000000000000", id="missing"),
    pytest.param("", "0000000000000000", id="empty"),
    pytest.param(7, "0000000000000000", id="number"),
    pytest.param((1, "unended".encode("utf-16-le")), None, id="unterminated"),
])
def test_the_tag_is_the_hash_of_the_machines_identifier(desk, guid, tag):
    machine = Machine(desk)
    try:
        machine.set(MachineGuid=guid)
        report = copy(desk)
    finally:
        machine.restore()
    if tag is None:
        wide = guid[1] if isinstance(guid, tuple) else guid.encode("utf-16-le")
        tag = f"{fnv_1a(wide):016x}"
    assert f" - Feedback ({tag}, " in report.text.split("\r\n")[1]


def test_the_tag_stays_the_same_over_two_starts(desk):
    first = copy(desk).text.split("\r\n")[1]
    desk.restart()
    assert copy(desk).text.split("\r\n")[1] == first


def test_the_sections_are_in_order(desk):
    assert list(copy(desk).sections()) == ["APP", "SYSTEM", "DISPLAYS", "FILTER STATE", "PWM-SAFE MODE", "SETTINGS",
                                           "EVENT LOG", "PERSISTED LOG"]


# APP

def test_the_app_section_contains_version_time_and_uptime(desk):
    report = copy(desk)
    version, now, uptime = report.section("APP")
    assert version == "Version:        2.23"
    assert now == "Now:            " + report.now()
    assert re.fullmatch("Session uptime: " + UPTIME, uptime)


def moment(line):
    """The time stamp of a line in seconds since midnight."""
    hours, minutes, seconds = line[1:13].split(":")
    return int(hours) * 3600 + int(minutes) * 60 + float(seconds)


def test_the_uptime_counts_from_the_start_of_the_program(desk):
    def stamped_lines():
        return [line for line in desk.events_text().splitlines() if STAMP.match(line)]

    def lived():
        return (moment(stamped_lines()[-1]) - moment(stamped_lines()[0])) % 86400
    # The first line is logged just after the start time is stored, the last one after the text is built. A copy that
    # begins and ends within the same second of uptime has only one answer.
    def prepare():
        show_settings(desk)
        started = time.monotonic() - (time.time() % 86400 - moment(stamped_lines()[0])) % 86400
        wait_until(lambda: (up := time.monotonic() - started) > 2.5 and 0.2 < up % 1 < 0.3, "a few seconds of uptime",
                   pause=0.01)
        return lambda: copy_by_message(desk)
    since = time.time()
    act_within(0.5, prepare)
    report = Report(desk.clipboard_text(), since, time.time())
    assert stamped_lines()[0].endswith(" starting") and COPIED_LINE.search(stamped_lines()[-1]) and lived() >= 2.5
    minutes, seconds = divmod(int(lived()), 60)
    assert report.value("APP", "Session uptime: ") == (f"{minutes}m {seconds}s" if minutes else f"{seconds}s")
