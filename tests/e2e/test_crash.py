"""Crashes of the program in its window's thread: the screen and the cursors are restored, and the log says where.

Wine does not replace system cursors: their reset is checked by the call.
"""

import re
import sys

import pytest

import model
from ambrel_lab.layout import SUPPORT
from ambrel_lab.popup import WINDOW_CLASS
from desk import ROOT, wait_until
from panels import show_settings

sys.path.insert(0, str(ROOT / "tests" / "program_file"))

from link_map import link_map  # noqa: E402  pylint: disable=wrong-import-position

RECORD = "-all,+system"
# Wine refuses to reset the cursors, so the program tries twice.
RESETS = 2
RESET = re.compile(r"NtUserSystemParametersInfo \(87, 0, \(nil\), 0\)")
WM_NULL = 0
CODES = {"access": "C0000005", "illegal": "C000001D", "divide": "C0000094", "overflow": "C00000FD"}
MODES = pytest.mark.parametrize("legacy", [0, 1], ids=["magnification", "legacy"])
LINE = re.compile(r"Crashed: exception ([0-9A-F]{8}) at (.*)\+([0-9A-F]+)")
START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)


@pytest.fixture(scope="module", name="crash_desk")
def crash_desk_fixture(make_file_desk):
    desk = make_file_desk(debug=RECORD)
    desk.desktop.open()
    return desk


def start_coloured(desk, legacy):
    """Starts the program and turns the filter on."""
    desk.start_fresh({"UseLegacyGamma": legacy})
    desk.press_power()
    if legacy:
        desk.wait_for_legacy_colour(*START)
    else:
        desk.wait_for_colour(*START)


def resets(desk):
    return len(RESET.findall(desk.wine_log()))


def crash_lines(desk):
    return [line for line in desk.log() if line.startswith("Crashed")]


def location(function):
    """(module, offset) of a function of the program."""
    return "ambrel.exe", link_map().symbols[function]


def crash(desk, kind, function="HandleWindowMessage", refused=()):
    """Makes the function crash in the window's thread, with other faults in `refused`. Returns the exit code and the
    fields of the one line in the log: code, (module, offset)."""
    desk.faults.inject(*refused, desk.faults.crashing(kind, link_map().symbols[function]))
    # The window may be gone: any other message crashes the program too.
    desk.desktop.tool("message", WINDOW_CLASS, "post", WM_NULL, 0, 0)
    exit_code = desk.wait_for_exit()
    assert len(crash_lines(desk)) == 1, desk.log()
    code, module, offset = LINE.fullmatch(crash_lines(desk)[0]).groups()
    return exit_code, code, (module, int(offset, 16))


@MODES
@pytest.mark.parametrize("kind", ["access", "illegal", "divide"])
def test_a_crash_restores_the_screen_and_the_cursors_and_logs_its_location(crash_desk, kind, legacy):
    desk = crash_desk
    start_coloured(desk, legacy)
    before = resets(desk)
    # Linux passes on eight bits of the exit code.
    assert crash(desk, kind) == (int(CODES[kind], 16) & 0xFF, CODES[kind], location("HandleWindowMessage"))
    assert desk.ramp_is_plain()
    assert resets(desk) == before + RESETS


@MODES
def test_a_stack_overflow_restores_the_screen_within_the_reserved_stack(crash_desk, legacy):
    desk = crash_desk
    start_coloured(desk, legacy)
    before = resets(desk)
    exit_code, code, _ = crash(desk, "overflow")
    assert (exit_code, code) == (0xFD, CODES["overflow"])
    assert desk.ramp_is_plain()
    assert resets(desk) == before + RESETS


def test_a_refused_ramp_and_cursor_reset_are_tried_once_more_in_a_crash(crash_desk):
    desk = crash_desk
    start_coloured(desk, 1)
    before = resets(desk)
    assert not desk.ramp_is_plain()
    crash(desk, "access", refused=[desk.faults.failing(name, times=1)
                                   for name in ("SetDeviceGammaRamp", "SystemParametersInfoW")])
    assert desk.ramp_is_plain()
    assert resets(desk) == before + 1


def test_a_crash_outside_the_window_procedures_frame_is_guarded_too(crash_desk):
    start_coloured(crash_desk, 1)
    assert crash(crash_desk, "access", "MainWindowProc") == (0x05, CODES["access"], location("MainWindowProc"))
    assert crash_desk.ramp_is_plain()


def test_a_ramp_of_another_program_survives_a_crash(crash_desk):
    desk = crash_desk
    desk.start_fresh({"UseLegacyGamma": 0})
    calibrated = model.ramp((1.0, 0.9, 0.8))
    desk.set_ramp(calibrated)
    before = desk.ramp()
    crash(desk, "access")
    assert desk.ramp() == before
    assert not desk.ramp_is_plain()


def test_a_program_without_memory_restores_the_screen_before_it_ends(crash_desk):
    desk = crash_desk
    start_coloured(desk, 1)
    before = resets(desk)
    show_settings(desk)
    x, y = desk.unit_to_screen(*SUPPORT)
    desk.move(x, y)
    desk.wait_for_window_at(x, y, WINDOW_CLASS)
    desk.faults.inject(desk.faults.failing("malloc"))
    # The window may be gone: other messages may need memory too.
    desk.click(x, y)
    assert desk.wait_for_exit() == 0x09  # of 0xC0000409
    assert desk.ramp_is_plain()
    assert resets(desk) == before + RESETS
    assert [LINE.fullmatch(line).groups()[:2] for line in crash_lines(desk)] == [("C0000409", "ambrel.exe")]


def test_without_memory_for_the_report_the_program_goes_on(crash_desk):
    desk = crash_desk
    desk.start_fresh()
    show_settings(desk)
    desk.faults.inject(desk.faults.failing("VirtualAlloc", error=8))
    desk.click_unit(*SUPPORT)
    desk.wait_for_log("Support bundle copy failed")
    desk.close_settings()
    desk.press_power()
    desk.wait_for_colour(*START)


def test_after_a_crash_the_program_starts_normally(crash_desk):
    desk = crash_desk
    start_coloured(desk, 1)
    crash(desk, "access")
    desk.start()
    wait_until(lambda: "Gamma range: Windows default" in desk.log(), "a complete start", state=desk.log)
    assert not crash_lines(desk)
    assert desk.screen_is_plain()
