"""The program with simulated displays, and the exact calls that each of its operations makes to them."""

import os
from pathlib import Path

import pytest

from ambrel_lab import hardware as simulated
from ambrel_lab.hardware import UNTIL_ENDED, Panel  # noqa: F401
from ambrel_lab.layout import CARD, CLOSE, GEAR  # noqa: F401
from ambrel_lab.paths import DEFAULT_BUILD
from desk import MENU_QUIT, LabError, wait_for_value, wait_until

BUILD = Path(os.environ.get("AMBREL_BUILD_DIR", DEFAULT_BUILD))
WM_TIMER, WM_DISPLAYCHANGE, WM_POWERBROADCAST, WM_ENDSESSION = 0x113, 0x7E, 0x218, 0x16
SAVE, SETTLED, POLL, VERIFY = 1, 2, 4, 5
# Seconds.
POLL_PERIOD, VERIFY_DELAY = 2.0, 0.75
CONFIRMED = "PWM-safe: %d display(s) confirmed locked at 100%%"
SLOWDOWN = "PWM-safe: display will not hold 100% after 10 attempts - slowing retries to 30s"
# The short name of each call in the lists below, and the argument that is listed with it.
CALLS = {"GetNumberOfPhysicalMonitorsFromHMONITOR": ("count", None),
         "GetPhysicalMonitorsFromHMONITOR": ("fetch", None), "DestroyPhysicalMonitors": ("destroy", None),
         "GetMonitorCapabilities": ("capabilities", None), "GetMonitorBrightness": ("read", None),
         "SetMonitorBrightness": ("set", "value"), "Get": ("get", "property"), "Put": ("put", "property"),
         "ExecMethod": ("exec", "brightness"), "Released": ("release", None)}
CONNECT = ["CreateInstance locator", "ConnectServer locator", "SetBlanket services", "ExecQuery services"]
DISCONNECT = ["release services", "release locator"]
# Milliseconds, typical of real monitors.
MONITOR_DELAYS = {"capabilities_delay": 300, "read_delay": 40, "set_delay": 50}


def Monitor(name, current=50, *values, **options):  # pylint: disable=invalid-name
    """A monitor with the delays of a real one, unless `options` define others."""
    return simulated.Monitor(name, current, *values, **{**MONITOR_DELAYS, **options})


def without_delays(monitor):
    """The same monitor without delays, for tests with many monitors."""
    return simulated.replace(monitor, **dict.fromkeys(MONITOR_DELAYS, 0))


def describe(call):
    name, argument = CALLS.get(call.function, (call.function, None))
    return f"{name} {call.target}" + (f" {call.arguments.get(argument)}" if argument else "")


def panel_enumeration(count):
    one = ["Next enumerator", "get brightness InstanceName", "get brightness CurrentBrightness", "release brightness"]
    return [*CONNECT, *one * count, "Next enumerator", "release enumerator", *DISCONNECT]


def monitor_calls(monitors, *calls):
    """The calls that open and close the handles of the monitors, with `calls` in between."""
    if not monitors:
        return ["count display0"]
    return ["count display0", "fetch display0", *calls, "destroy " + ",".join(monitors)]


def enumeration(panels=0, monitors=(), unreadable=()):
    """The calls of one enumeration of `panels` panels and the named monitors. The capabilities of those in
    `unreadable` cannot be read, or lack brightness."""
    reading = [f"{verb} {name}" for name in monitors
               for verb in (("capabilities",) if name in unreadable else ("capabilities", "read"))]
    return panel_enumeration(panels) + monitor_calls(monitors, *reading)


def panel_set(percent, position=0):
    """The calls that set the panel at that position of the query's results."""
    skipped = ["Next enumerator", "get methods InstanceName", "release methods"]
    return [*CONNECT, *skipped * position, "Next enumerator", "get methods InstanceName", "get methods __PATH",
            "release methods", "release enumerator", "GetObject services", "GetMethod class",
            "SpawnInstance signature", "release signature", "release class", "put in-parameters Timeout",
            "put in-parameters Brightness", f"exec services {percent}", "release in-parameters", *DISCONNECT]


def monitor_set(name, value, monitors=None):
    return monitor_calls(monitors or [name], f"read {name}", f"set {name} {value}")


class Backlight:
    """The program on a desktop with simulated displays. `hardware` is the lab's."""

    def __init__(self, desk):
        self.desk, self.hardware = desk, desk.hardware

    def clear(self):
        """Ends the program, removes all displays and clears the record of calls."""
        if self.desk.program_running():
            self.desk.kill_program()
        self.hardware.monitors([])
        self.hardware.panels([])
        self.hardware.wmi()
        self.hardware.clear_calls()
        self.hardware.reset_outstanding()

    def start(self, monitors=(), panels=(), on=False, timers=False, **display):
        """Starts the program with these displays. Its enumeration at start-up is in the record.

        The poll and the verification run only in tick(), so that neither is ever due between two steps of a test. With
        `timers` they also run by themselves."""
        self.hardware.monitors(monitors, **display)
        self.hardware.panels(panels)
        self.hardware.hold_timers(*() if timers else (POLL, VERIFY))
        self.desk.start_fresh({"PWMSafeMode": int(on)})
        return self

    def run_timers(self, *timers):
        """From now on these timers of the program, or all of them, run by themselves once the program starts them."""
        self.hardware.hold_timers(*(timer for timer in (POLL, VERIFY) if timers and timer not in timers))

    def hold_timers(self):
        """From now on the poll and the verification of a lock run only in tick(). Reasserts the lock and verifies it."""
        self.hardware.hold_timers(POLL, VERIFY)
        self.tick(SETTLED, VERIFY)

    def verify(self, message, times):
        """Runs the verification of the lock, or waits for it if it runs by itself. It must log this message."""
        if VERIFY in self.hardware.held_timers:
            self.tick(VERIFY)
        else:
            self.wait_for_log(message, times)
        assert self.log().count(message) == times

    def show(self):
        """Opens the popup, then clears the record."""
        self.desk.show()
        self.hardware.clear_calls()
        return self

    def click_card(self):
        self.desk.click_unit(*CARD)

    def lock(self, *names):
        """Switches the mode on by a click and verifies the lock. All the named displays must be locked."""
        saves, confirmed = self.desk.saves(), CONFIRMED % len(names)
        confirmations = self.log().count(confirmed)
        self.show()
        self.click_card()
        self.desk.wait_for_saves(saves + 1)
        self.verify(confirmed, confirmations + 1)
        assert self.setting() == "1"

    def lock_and_expect_revert(self):
        """Switches the mode on by a click. The verification must revert it."""
        saves = self.desk.saves()
        self.show()
        self.click_card()
        self.desk.wait_for_saves(saves + 1)
        if VERIFY in self.hardware.held_timers:
            self.tick(VERIFY)
        self.desk.wait_for_saves(saves + 2)
        assert self.desk.saves() == saves + 2 and self.setting() == "0"

    def unlock(self):
        """Switches the mode off by a click and waits until the operation has ended."""
        saves = self.desk.saves()
        self.desk.show()
        self.click_card()
        self.desk.wait_for_saves(saves + 1)
        assert self.log()[-1] == "Saved settings" and self.setting() == "0"

    def tick(self, *timers):
        """Fires the program's timers now, and returns when the program has handled them."""
        for timer in timers:
            self.desk.call_window(WM_TIMER, timer, 0)

    def relock(self):
        """Reasserts and verifies the lock, and clears the record."""
        self.tick(SETTLED, VERIFY)
        self.hardware.clear_calls()

    def fail(self, name, times):
        """Makes a locked monitor fail that many verifications."""
        self.hardware.change(name, behaviour="ignores")
        self.hardware.set_by_user(name, 40)
        self.tick(*[POLL, VERIFY] * times)

    def slow_down(self, name):
        """Makes the monitor fail until the poll is slowed to 30 seconds."""
        self.fail(name, 10)
        self.wait_for_log(SLOWDOWN)

    def wait_until_idle(self):
        """Waits until the program has handled the current operation and all messages posted before this call. From now
        on no call may dispatch messages while it waits."""
        self.desk.send_message(0)
        saves = self.desk.saves()
        self.desk.post_message(WM_TIMER, SAVE, 0)
        self.desk.wait_for_saves(saves + 1)

    def open_menu(self):
        """Opens the tray menu, which must not query a display."""
        self.hardware.clear_calls()
        menu = self.desk.open_menu()
        assert self.record() == []
        return menu

    def click_quit(self, menu):
        self.desk.click_menu_row(menu, MENU_QUIT)

    def record(self):
        return [describe(call) for call in self.hardware.calls()]

    def sets(self):
        """Every value that a display was set to."""
        return [describe(call) for call in self.hardware.calls()
                if call.function in ("SetMonitorBrightness", "ExecMethod")]

    def wait_for_calls(self, *expected):
        """Waits until the record has as many calls as the expected operations, and compares them. Others may follow."""
        calls = [call for operation in expected for call in operation]
        try:
            wait_until(lambda: len(self.record()) >= len(calls), "the calls")
        except LabError:
            pass
        assert self.record()[:len(calls)] == calls

    def expect_after_polls(self, poll, *expected, start=0):
        """Asserts that from `start` the record consists of any number of polls and then of the expected operations.
        Others may follow."""
        calls, record = [call for operation in expected for call in operation], self.record()[start:]
        while record[:len(poll)] == poll and record[:len(calls)] != calls:
            record = record[len(poll):]
        assert record[:len(calls)] == calls

    def wait_for_value(self, name, value):
        wait_for_value(lambda: self.hardware.value(name), value, f"the brightness of {name}")

    def values(self, *names):
        return [self.hardware.value(name) for name in names]

    def log(self):
        return self.desk.log()

    def wait_for_log(self, message, times=1):
        self.desk.wait_for_log(message, times)

    def pwm_log(self):
        """The lines of the log about the mode and its displays."""
        return [line for line in self.log() if line.startswith("PWM-safe")]

    def setting(self):
        return self.desk.settings()["PWMSafeMode"]

    def expect_no_leaks(self):
        """The program has released all its resources and has made no invalid call."""
        try:
            wait_until(lambda: self.hardware.outstanding() == 0, "the release of all resources")
        except LabError:
            assert self.hardware.leaks() == dict.fromkeys(self.hardware.leaks(), 0)
        assert self.hardware.invalid_calls() == []


@pytest.fixture(name="backlight_desk", scope="module")
def backlight_desk_fixture(make_file_desk):
    return make_file_desk(build_dir=BUILD)


@pytest.fixture(name="backlight")
def backlight_fixture(backlight_desk):
    """The file's desktop without the program and without displays. After the test nothing may be leaked."""
    backlight = Backlight(backlight_desk)
    backlight.clear()
    yield backlight
    backlight.expect_no_leaks()
