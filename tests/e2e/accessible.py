"""What an accessibility client reads of the popup, and the fixtures of the tests that use such a client."""

import pytest

from ambrel_lab.accessibility import OK
from backlight import BUILD
from desk import wait_for_value, wait_until

HINT = "\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%"
BLOCKED = "\u26a0 COLORS BLOCKED BY WINDOWS. CLICK TO FIX"
RUN_KEY = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run"


def read_panel(desk):
    """The panel as a client reads it: (role, name, and whatever else it has) of each control."""
    rows = []
    for control in desk.accessible_controls():
        more = [*sorted(control.state - {"read-only"}), control.value, control.description, control.action]
        rows.append((control.role, control.name, *filter(None, more)))
    return rows


def preset(name, selected):
    return ("radio button", name, *(["checked"] if name == selected else []), "Check")


def check(name, on, description=None):
    return ("check button", name, *(["checked"] if on else []), *([description] if description else []),
            "Uncheck" if on else "Check")


def main_panel(warmth, brightness, strip, selected=None, on=False):
    return [("text", "AMBREL"), ("button", "SETTINGS", "Press"),
            ("text", "WARMTH"), ("slider", "WARMTH", warmth),
            ("text", "BRIGHTNESS"), ("slider", "BRIGHTNESS", brightness),
            strip, *(preset(name, selected) for name in ("DAY", "EVENING", "NIGHT")), check("KIVO", on)]


def settings_panel(launch=False, dim=False, legacy=False, support=("button", "COPY FEEDBACK FOR SUPPORT", "Press")):
    return [("text", "SETTINGS"), ("button", "CLOSE", "Press"), check("LAUNCH AT STARTUP", launch),
            check("ALLOW EXTREME DIM", dim), check("LEGACY MODE", legacy), support]


def wait_for_panel_read(desk, expected):
    wait_for_value(lambda: read_panel(desk), expected, "the panel that a client reads")


def press(desk, name):
    result = desk.accessible_press(desk.accessible_control(name))
    assert result == OK, (name, result)


def put(desk, slider, text):
    return desk.accessible_set(desk.accessible_control(slider), text)


@pytest.fixture(name="popup")
def popup_fixture(file_desk):
    """The file's desk with the popup open, the filter off at 6500 K, every setting off."""
    file_desk.registry_delete(RUN_KEY, "Ambrel2")
    file_desk.start_fresh({"Intensity": 0, "Brightness": 1000})
    file_desk.open_popup()
    file_desk.wait_for_foreground()
    return file_desk


@pytest.fixture(name="blocked")
def blocked_fixture(file_desk):
    """The file's desk with the popup open and a ramp that Windows refuses."""
    file_desk.start_fresh({"UseLegacyGamma": 1, "Intensity": 1000, "Brightness": 700})
    file_desk.press_power()
    wait_until(lambda: ("button", BLOCKED, "Press") in read_panel(file_desk), "the banner",
               state=lambda: read_panel(file_desk))
    return file_desk


@pytest.fixture(name="hardware_desk", scope="module")
def hardware_desk_fixture(make_file_desk):
    return make_file_desk(build_dir=BUILD)


@pytest.fixture(name="start_with_displays")
def start_with_displays_fixture(hardware_desk):
    """A function that opens the popup of a program with these displays, and the filter off at DAY."""
    def begin(monitors=(), panels=()):
        if hardware_desk.program_running():
            hardware_desk.kill_program()
        hardware_desk.hardware.monitors(monitors)
        hardware_desk.hardware.panels(panels)
        hardware_desk.hardware.wmi()
        hardware_desk.hardware.hold_timers()
        hardware_desk.start_fresh()
        hardware_desk.show()
        return hardware_desk
    return begin
