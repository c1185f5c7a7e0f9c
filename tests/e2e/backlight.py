"""A desk with simulated displays: what is asked of them in each operation of the program, call by call."""

import os
import time
from pathlib import Path

import pytest

from ambrel_lab import hardware as simulated
from ambrel_lab.hardware import Panel  # noqa: F401
from ambrel_lab.layout import CARD, CLOSE, GEAR  # noqa: F401
from ambrel_lab.paths import DEFAULT_BUILD
from desk import MENU_QUIT, LabError, wait_for_value, wait_until

BUILD = Path(os.environ.get("AMBREL_BUILD_DIR", DEFAULT_BUILD))
WM_TIMER, WM_DISPLAYCHANGE, WM_POWERBROADCAST, WM_ENDSESSION = 0x113, 0x7E, 0x218, 0x16
SAVE, SETTLED, POLL, VERIFY = 1, 2, 4, 5
POLL_PERIOD = 2.0
CONFIRMED = "PWM-safe: %d display(s) confirmed locked at 100%%"
SLOWING = "PWM-safe: display will not hold 100% after 10 attempts - slowing retries to 30s"
# A call's name in the lists below, and which argument is told with it.
CALLS = {"GetNumberOfPhysicalMonitorsFromHMONITOR": ("count", None),
         "GetPhysicalMonitorsFromHMONITOR": ("fetch", None), "DestroyPhysicalMonitors": ("destroy", None),
         "GetMonitorCapabilities": ("ask", None), "GetMonitorBrightness": ("read", None),
         "SetMonitorBrightness": ("set", "value"), "Get": ("get", "property"), "Put": ("put", "property"),
         "ExecMethod": ("exec", "brightness"), "Released": ("end", None)}
CONNECT = ["CreateInstance locator", "ConnectServer locator", "SetBlanket services", "ExecQuery services"]
DISCONNECT = ["end services", "end locator"]


# Milliseconds, as real monitors take them.
MONITOR_DELAYS = {"capabilities_delay": 300, "read_delay": 40, "set_delay": 50}


def Monitor(name, current=50, *values, **options):  # pylint: disable=invalid-name
    """A monitor that takes as long as real ones do, unless a test says otherwise."""
    return simulated.Monitor(name, current, *values, **{**MONITOR_DELAYS, **options})


def quick(monitor):
    """The same monitor, answering at once: for tests with so many that time would be all they show."""
    return simulated.replace(monitor, **dict.fromkeys(MONITOR_DELAYS, 0))


def told(call):
    name, argument = CALLS.get(call.function, (call.function, None))
    return f"{name} {call.target}" + (f" {call.arguments.get(argument)}" if argument else "")


def panels_listed(count):
    one = ["Next enumerator", "get brightness InstanceName", "get brightness CurrentBrightness", "end brightness"]
    return [*CONNECT, *one * count, "Next enumerator", "end enumerator", *DISCONNECT]


def monitors_fetched(monitors, *calls):
    """What every visit to the monitors has in common; `calls` are made meanwhile."""
    if not monitors:
        return ["count display0"]
    return ["count display0", "fetch display0", *calls, "destroy " + ",".join(monitors)]


def listed(panels=0, monitors=(), deaf=()):
    """One enumeration of so many panels and of these monitors; the deaf ones do not tell what they can."""
    reading = [f"{verb} {name}" for name in monitors for verb in (("ask",) if name in deaf else ("ask", "read"))]
    return panels_listed(panels) + monitors_fetched(monitors, *reading)


def panel_set(percent, place=0):
    """Setting the panel at that place of the query."""
    passed = ["Next enumerator", "get methods InstanceName", "end methods"]
    return [*CONNECT, *passed * place, "Next enumerator", "get methods InstanceName", "get methods __PATH",
            "end methods", "end enumerator", "GetObject services", "GetMethod class", "SpawnInstance signature",
            "end signature", "end class", "put in-parameters Timeout", "put in-parameters Brightness",
            f"exec services {percent}", "end in-parameters", *DISCONNECT]


def monitor_set(name, value, monitors=None):
    return monitors_fetched(monitors or [name], f"read {name}", f"set {name} {value}")


class Bench:
    """A desk with displays on it. `hardware` is the lab's."""

    def __init__(self, desk):
        self.desk, self.hardware = desk, desk.hardware

    def clear(self):
        """No program, no display, nothing on record."""
        if self.desk.program_running():
            self.desk.kill_program()
        self.hardware.monitors([])
        self.hardware.panels([])
        self.hardware.wmi()
        self.hardware.forget()
        self.hardware.forget_outstanding()

    def begin(self, monitors=(), panels=(), on=False, **display):
        """Starts the program with these displays; its own listing is on record."""
        self.hardware.monitors(monitors, **display)
        self.hardware.panels(panels)
        self.desk.start_fresh({"PWMSafeMode": int(on)})
        return self

    def show(self):
        """Opens the popup with an empty record."""
        self.desk.show()
        self.hardware.forget()
        return self

    def click_card(self):
        self.desk.click_unit(*CARD)

    def lock(self, *names):
        """Turns the mode on by a click and lets it be verified at once: all of these displays must be locked then."""
        saves, confirmed = self.desk.saves(), CONFIRMED % len(names)
        confirmations = self.log().count(confirmed)
        self.show()
        self.click_card()
        self.desk.wait_for_saves(saves + 1)
        self.tick(VERIFY)
        assert self.log().count(confirmed) == confirmations + 1 and self.setting() == "1"

    def refuse(self):
        """Turns the mode on by a click, which the next verification undoes."""
        saves = self.desk.saves()
        self.show()
        self.click_card()
        self.desk.wait_for_saves(saves + 1)
        self.tick(VERIFY)
        assert self.desk.saves() == saves + 2 and self.setting() == "0"

    def unlock(self):
        """Turns the mode off by a click and waits for the end of it."""
        saves = self.desk.saves()
        self.desk.show()
        self.click_card()
        self.desk.wait_for_saves(saves + 1)
        assert self.log()[-1] == "Saved settings" and self.setting() == "0"

    def tick(self, *timers):
        """Lets the program's timers fire now, as if their time had come. Returns when that has been dealt with."""
        for timer in timers:
            self.desk.call_window(WM_TIMER, timer, 0)

    def relock(self):
        """A lock asserted anew and verified, with an empty record: the next poll is two seconds away."""
        self.tick(SETTLED, VERIFY)
        self.hardware.forget()

    def fail(self, name, times):
        """That many failed verifications of a monitor that had been locked."""
        self.hardware.change(name, behaviour="ignores")
        self.hardware.turn(name, 40)
        self.tick(*[POLL, VERIFY] * times)

    def slow_down(self, name):
        """The monitor refuses until the next poll is half a minute away."""
        self.fail(name, 10)
        self.wait_for_log(SLOWING)

    def come_to_rest(self):
        """The operation under way is over, and so is everything that has been posted up to then. No call may
        dispatch messages any more while it waits."""
        self.desk.send_message(0)
        saves = self.desk.saves()
        self.desk.post_message(WM_TIMER, SAVE, 0)
        self.desk.wait_for_saves(saves + 1)

    def open_menu_at_rest(self):
        """Opens the tray menu, which asks no display, and locks anew: no poll is near at the click."""
        began = time.time()
        self.relock()
        menu = self.desk.open_menu()
        # Only a poll may have come, and that not before its time.
        assert [told(call) for call in self.hardware.calls() if call.time < began + POLL_PERIOD - 0.1] == []
        self.relock()
        return menu

    def click_quit(self, menu):
        self.desk.click_menu_row(menu, MENU_QUIT)

    def record(self):
        return [told(call) for call in self.hardware.calls()]

    def sets(self):
        """Every value that a display was asked to take."""
        return [told(call) for call in self.hardware.calls()
                if call.function in ("SetMonitorBrightness", "ExecMethod")]

    def wait_for_calls(self, *expected):
        """Waits until as many calls are on record as the operations have, and compares them; later ones may follow."""
        wanted = [call for operation in expected for call in operation]
        try:
            wait_until(lambda: len(self.record()) >= len(wanted), "the calls")
        except LabError:
            pass
        assert self.record()[:len(wanted)] == wanted

    def wait_for_value(self, name, value):
        wait_for_value(lambda: self.hardware.value(name), value, f"what {name} shows")

    def values(self, *names):
        return [self.hardware.value(name) for name in names]

    def log(self):
        return self.desk.log()

    def wait_for_log(self, message, times=1):
        self.desk.wait_for_log(message, times)

    def pwm_log(self):
        """What the program says of the mode and its displays."""
        return [line for line in self.log() if line.startswith("PWM-safe")]

    def setting(self):
        return self.desk.settings()["PWMSafeMode"]

    def check_books(self):
        """Nothing that the program was given is left, and it made no call that nobody should make."""
        try:
            wait_until(lambda: self.hardware.outstanding() == 0, "the books to be balanced")
        except LabError:
            assert self.hardware.leaks() == dict.fromkeys(self.hardware.leaks(), 0)
        assert self.hardware.mistakes() == []


@pytest.fixture(name="backlight_desk", scope="module")
def backlight_desk_fixture(make_file_desk):
    return make_file_desk(build_dir=BUILD)


@pytest.fixture(name="bench")
def bench_fixture(backlight_desk):
    """The file's screen without a program and without a display. Nothing may be left at the end of the test."""
    bench = Bench(backlight_desk)
    bench.clear()
    yield bench
    bench.check_books()
