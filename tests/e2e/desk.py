"""Desk: a lab with the program, the user's actions on it, and the checks of what the user sees."""

import math
import os
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = sys.pycache_prefix is None
ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "lab"))

# pylint: disable=wrong-import-position
from ambrel_lab import Lab, LabError  # noqa: E402
from ambrel_lab.layout import (CLOSE, GEAR, MENU_LAUNCH, MENU_LEGACY_MODE, MENU_QUIT, POWER,  # noqa: E402
                               PRESETS as PRESET_POSITIONS, REOPEN_DELAY, SETTINGS_ROWS, SLIDER_X, SLIDER_Y)
from ambrel_lab.popup import MENU_CLASS  # noqa: E402
from ambrel_lab.waiting import TIMEOUT, wait_for_value, wait_until, wait_until_settled  # noqa: E402

import model  # noqa: E402

__all__ = ["ATTEMPTS", "CLOSE", "GEAR", "TIMEOUT", "MARKER", "MENU_CLASS", "MENU_LAUNCH", "MENU_LEGACY_MODE", "MENU_QUIT",
           "POWER", "PRESET_POSITIONS", "REOPEN_DELAY", "ROOT", "SETTINGS_ROWS", "SLIDER_X", "SLIDER_Y",
           "Desk", "LabError", "act_before_the_save", "act_within", "assert_save_is_due", "wait_for_value", "wait_until",
           "wait_until_settled"]

# The build whose program is tested; by default the lab's own choice.
BUILD = {"build_dir": os.environ["AMBREL_BUILD_DIR"]} if "AMBREL_BUILD_DIR" in os.environ else {}
MARKER = "---------- session start ----------"
ATTEMPTS = 40
WM_TIMER, SAVE_TIMER = 0x113, 1
SAVE_DELAY = 0.48  # seconds: half a second less a tick of Windows' clock
# The screen keeps 8 bits of a ramp's 16.
RAMP_TOLERANCE = 256


class Desk(Lab):
    def __init__(self, **options):
        super().__init__(**{**BUILD, **options})

    def __enter__(self):
        super().__enter__()
        try:
            self.install_program()
        except BaseException:
            self.close()
            raise
        return self

    # Start and exit

    def start(self):
        """Starts the program and waits until its icon can be clicked."""
        if not self.program_running():
            self.wait_until_ended()
        program = self.start_program()

        def shown():
            if (code := program.poll()) is not None:
                raise LabError(f"the program ended with {code} instead of showing its icon")
            return self.tray_icons()
        wait_until(shown, "the tray icon", state=self.windows, pause=0.1)
        self.wait_for_icon()
        wait_until(self.window_facts, "the program's window", state=self.windows)
        return self

    def start_fresh(self, settings=None, effect=(0,), initialize=0):
        """Starts the program after clear()."""
        self.clear(settings, effect, initialize)
        return self.start()

    def clear(self, settings=None, effect=(0,), initialize=0):
        """Kills a running program, deletes its files and records, and writes these settings (a text or a dict)."""
        self.input.release_all()
        if self.program_running():
            self.kill_program()
        self.wait_until_ended()
        if self.settings_folder.exists():
            self.write_events(None)
        if isinstance(settings, dict):
            settings = settings_file(**settings)
        self.write_settings(settings)
        self.magnification_script(effect, initialize)
        self.set_ramp(model.ramp(model.IDENTITY))
        self.magnification.clear_calls()

    def wait_until_ended(self):
        """Waits until nothing of a program that has ended is left: its process in Windows, its icon in the taskbar. A
        program that starts earlier may take itself for a second instance, and its icon cannot be told from the old."""
        if self.desktop.started():
            wait_until(lambda: not self.desktop.facts("process", self.program_image), "the end of the last program")
            self.remove_dead_icons()

    def restart(self):
        """Kills the program, as a crash would, and starts it again with its files unchanged. No save may be pending: a
        kill would interrupt it."""
        self.kill_program()
        return self.start()

    def quit(self):
        """Chooses Quit from the tray menu. Returns the exit code."""
        self.click_menu_row(self.open_menu(), MENU_QUIT)
        return self.wait_for_exit()

    def icon_shown(self):
        return bool(self.tray_icon())

    def wait_for_icon(self, shown=True):
        wait_until(lambda: self.icon_shown() == shown, f"the tray icon to be shown={shown}", state=self.tray_icons)

    # Actions

    def press_power(self):
        self.show()
        self.click_unit(*POWER)

    def choose(self, preset):
        self.show()
        self.click_unit(*PRESET_POSITIONS[preset])

    def slide(self, slider, up, steps=10, release=True):
        """Drags a slider from the middle of its track by `up` design units."""
        self.show()
        x = SLIDER_X[slider]
        self.drag_unit(x, SLIDER_Y, x, SLIDER_Y - up, steps=steps, release=release)

    def show_settings(self):
        """Opens the popup unless it is open, and then the settings panel from the main panel."""
        self.show()
        self.click_unit(*GEAR)

    def close_settings(self):
        self.click_unit(*CLOSE)

    def flip(self, row):
        """Clicks a row of the settings panel, which must be open, and waits until it is saved as switched. An earlier
        change may be saved at any time, but not with the switched row."""
        key = ROW_SETTINGS[row]
        switched, saves = "1" if self.settings().get(key, "0") == "0" else "0", self.saves()
        self.click_unit(*SETTINGS_ROWS[row])
        wait_until(lambda: self.saves() > saves and self.settings().get(key) == switched, f"{key}={switched}",
                   state=lambda: (self.log(), self.settings_text(), self.windows()))

    def save_now(self):
        """Makes the program save now what it would save after a delay. Afterwards no save is pending."""
        self.call_window(WM_TIMER, SAVE_TIMER)

    def wait_until_posted_messages_are_handled(self):
        """Waits until the program has handled all messages posted before this call. Saves the settings."""
        self.save_now()
        saves = self.saves()
        self.post_message(WM_TIMER, SAVE_TIMER)
        self.wait_for_saves(saves + 1)

    def menu_picture(self):
        """A picture of the tray menu without a highlighted row. Opens and closes the menu."""
        self.open_menu()  # The lab points at the rows of the first menu, and one stays highlighted.
        self.close_menu()
        window = self.open_menu().window
        self.move(10, 10)
        picture = wait_until_settled(lambda: self.menu_drawn(window), "the drawn menu", pause=0.1)
        self.close_menu()
        return picture

    def menu(self, item):
        """Chooses an option of the tray menu and waits until it is saved as switched, or a message box opens, and the
        menu is closed."""
        menu, key = self.open_menu(), MENU_SETTINGS[item]
        # The program's state. An earlier change may be saved at any time, but not with the switched option.
        switched, saves, boxes = "0" if self.menu_row_ticked(menu, item) else "1", self.saves(), self.message_boxes()
        self.click_menu_row(menu, item)

        def done():
            saved = self.saves() > saves and f"\n{key}={switched}\n" in self.settings_text()
            return (saved or self.message_boxes() != boxes) and not self.menu_window()
        wait_until(done, f"{key}={switched} or a message box",
                   state=lambda: (self.log(), self.settings_text(), self.windows()))

    # Checks

    def wait_for_tooltip(self, text):
        wait_for_value(self.tray_tooltip, text, "the tooltip")

    def shows(self, factors):
        """Whether the screen is displayed with exactly these factors, regardless of the pipeline."""
        return ramp_distance(self.visible_levels(), model.ramp(factors)) <= RAMP_TOLERANCE

    def wait_for_factors(self, factors, alone=lambda: True):
        """Waits until the screen is displayed with these factors and alone() confirms that one pipeline produces them."""
        white = [channel[255] for channel in model.ramp(factors)]
        wait_until(lambda: self.shows(factors) and alone(), f"a screen that displays white as {white} by one pipeline",
                   state=lambda: ([channel[255] for channel in self.visible_levels()],
                                  ramp_distance(self.visible_levels(), model.ramp(factors)),
                                  f"ramp plain: {self.ramp_is_plain()}", self.magnification.applied_factors()))

    def ramp_is_plain(self):
        return ramp_distance(self.ramp(), model.ramp(model.IDENTITY)) <= RAMP_TOLERANCE

    def wait_for_colour(self, intensity, brightness):
        """Waits until the filter is on the screen through the Magnification library only. While a filter changes its
        pipeline the screen looks the same before and after."""
        self.wait_for_factors(model.factors(intensity, brightness), self.ramp_is_plain)

    def wait_for_legacy_colour(self, intensity, brightness):
        """Waits until the filter is on the screen through the gamma ramp only."""
        self.wait_for_factors(model.factors(intensity, brightness),
                              lambda: self.magnification.applied_factors() == model.IDENTITY)

    def wait_for_plain_screen(self):
        self.wait_for_factors(model.IDENTITY)

    def screen_is_plain(self):
        return self.shows(model.IDENTITY)

    def effects(self):
        """Every call since the start that set a colour matrix."""
        return [call for call in self.magnification_calls() if call.function == "MagSetFullscreenColorEffect"]

    def log(self):
        """The messages of the current run without their time stamps. An incomplete last line is still being written."""
        lines = self.events_text().rpartition(MARKER + "\n")[2].split("\n")[:-1]
        return [line.partition("] ")[2] for line in lines]

    def wait_for_log(self, message, times=1):
        wait_until(lambda: self.log().count(message) >= times, f"'{message}' in the event log, {times} times",
                   state=self.log)

    def saves(self):
        return self.log().count("Saved settings")

    def wait_for_saves(self, times=1):
        self.wait_for_log("Saved settings", times)

    def settings(self):
        """settings.ini as {key: text}. It is not read during a save, because Windows writes key after key."""
        running = self.program_running()

        def read():
            if running:
                self.synchronise()
            return (self.settings_text(),)
        text = wait_until_settled(read, "settings.ini", pause=0.002)[0]
        return dict(line.split("=", 1) for line in text.splitlines() if "=" in line)

    def wait_for_setting(self, key, text):
        wait_for_value(lambda: self.settings().get(key), text, f"{key} in settings.ini")

    def loaded(self):
        """The values that the program logs as read from settings.ini."""
        wait_until(lambda: any(line.startswith("Loaded settings") for line in self.log()), "the settings",
                   state=self.log)
        return next(line for line in self.log() if line.startswith("Loaded settings")).partition(": ")[2]


def act_within(seconds, prepare, attempts=ATTEMPTS):
    """Calls prepare() and then the function that it returns, repeatedly, until that function takes less than `seconds`.

    For actions that must happen within a short time: a run on a busy machine that is too slow proves nothing."""
    quickest = math.inf
    for _ in range(attempts):
        act = prepare()
        started = time.monotonic()
        result = act()
        quickest = min(quickest, time.monotonic() - started)
        if quickest < seconds:
            return result
    raise LabError(f"the quickest of {attempts} attempts took {quickest:.1f} s instead of less than {seconds:g} s")


def act_before_the_save(desk, prepare):
    """Calls prepare() and then the function that it returns, repeatedly, until the program saves nothing meanwhile.

    On a busy machine the delay of the save can elapse between two actions, which then rightly have a save each."""
    for _ in range(ATTEMPTS):
        act = prepare()
        started = time.monotonic()
        act()
        if desk.saves() == 0:
            return
        assert_save_is_due(started)
    raise LabError(f"in {ATTEMPTS} attempts the program saved before it had handled everything")


def assert_save_is_due(changed):
    """Asserts that the delay of the save has elapsed since a time (time.monotonic()) before the change."""
    passed = time.monotonic() - changed
    assert passed >= SAVE_DELAY, f"the program saved within {passed:.3f} s of a change"


def ramp_distance(one, other):
    return max(abs(a - b) for left, right in zip(one, other) for a, b in zip(left, right))


MENU_SETTINGS = {MENU_LAUNCH: "LaunchAtStart", MENU_LEGACY_MODE: "UseLegacyGamma"}
ROW_SETTINGS = {"LAUNCH AT STARTUP": "LaunchAtStart", "ALLOW EXTREME DIM": "AllowExtremeDim",
                "LEGACY MODE": "UseLegacyGamma"}
FILTER_KEYS = ("Intensity", "Brightness")


def settings_file(**values):
    """A settings.ini with these keys."""
    def rows(wanted):
        return "".join(f"{key}={value}\r\n" for key, value in values.items() if (key in FILTER_KEYS) == wanted)
    return f"[Filter]\r\n{rows(True)}[Settings]\r\n{rows(False)}"
