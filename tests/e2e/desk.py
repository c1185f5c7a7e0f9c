"""A lab with the program in it, and what a person in front of that screen does and sees."""

import math
import os
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "lab"))

# pylint: disable=wrong-import-position
from ambrel_lab import Lab, LabError  # noqa: E402
from ambrel_lab.layout import (CLOSE, GEAR, MENU_LAUNCH, MENU_LEGACY_MODE, MENU_QUIT, POWER,  # noqa: E402
                               PRESETS as PRESET_PLACES, REOPEN_GUARD, SETTINGS_ROWS, SLIDER_X, SLIDER_Y)
from ambrel_lab.popup import MENU_CLASS  # noqa: E402
from ambrel_lab.waiting import LIMIT, wait_for_value, wait_until, wait_until_settled  # noqa: E402

import model  # noqa: E402

__all__ = ["ATTEMPTS", "CLOSE", "GEAR", "LIMIT", "MARKER", "MENU_CLASS", "MENU_LAUNCH", "MENU_LEGACY_MODE", "MENU_QUIT", "POWER",
           "PRESET_PLACES", "REOPEN_GUARD", "ROOT", "SAVE_DELAY", "SETTINGS_ROWS", "SLIDER_X", "SLIDER_Y", "Desk", "LabError",
           "act_within", "wait_for_value", "wait_until", "wait_until_settled"]

# The build whose program is tested; without a word about it, the lab's own choice.
BUILD = {"build_dir": os.environ["AMBREL_BUILD_DIR"]} if "AMBREL_BUILD_DIR" in os.environ else {}
MARKER = "---------- session start ----------"
ATTEMPTS = 40
# Seconds from a change to its save.
SAVE_DELAY = 0.5
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

    # The program's life

    def start(self):
        """Starts the program and waits until its icon can be clicked."""
        if not self.program_running():
            self.remove_dead_icons()
        self.start_program()
        self.wait_for_icon()
        wait_until(self.window_facts, "the program's window", actual=self.windows)
        return self

    def start_fresh(self, settings=None, effect=(0,), initialize=0):
        """Starts the program on the ground that `clear` prepares."""
        self.clear(settings, effect, initialize)
        return self.start()

    def clear(self, settings=None, effect=(0,), initialize=0):
        """Ends a program that still runs and leaves nothing of it but these settings (a text, or a dict)."""
        self.input.release_all()
        if self.program_running():
            self.kill_program()
        if self.settings_folder.exists():
            self.write_events(None)
        if isinstance(settings, dict):
            settings = settings_file(**settings)
        self.write_settings(settings)
        self.magnification_script(effect, initialize)
        self.set_ramp(model.ramp(model.IDENTITY))
        self.magnification.clear_calls()

    def restart(self):
        """Ends the program as a crash would and starts it again with what it left behind."""
        self.kill_program()
        return self.start()

    def quit(self):
        """Quit from the tray menu; the exit code."""
        self.click_menu_row(self.open_menu(), MENU_QUIT)
        return self.wait_for_exit()

    def icon_shown(self):
        return bool(self.tray_icon())

    def wait_for_icon(self, shown=True):
        wait_until(lambda: self.icon_shown() == shown, f"the tray icon to be shown={shown}", actual=self.tray_icons)

    # Hands

    def press_power(self):
        self.show()
        self.click_unit(*POWER)

    def choose(self, preset):
        self.show()
        self.click_unit(*PRESET_PLACES[preset])

    def slide(self, slider, up, steps=10, release=True):
        """Takes a slider in the middle of its track and moves it by `up` design units."""
        self.show()
        x = SLIDER_X[slider]
        self.drag_unit(x, SLIDER_Y, x, SLIDER_Y - up, steps=steps, release=release)

    def show_settings(self):
        """Opens the popup when it is not open, and its settings panel from the main one."""
        self.show()
        self.click_unit(*GEAR)

    def close_settings(self):
        self.click_unit(*CLOSE)

    def flip(self, row):
        """Clicks a row of the settings panel, which is open, and waits for the save that each click makes."""
        saves = self.saves()
        self.click_unit(*SETTINGS_ROWS[row])
        self.wait_for_saves(saves + 1)

    def menu_picture(self):
        """How the tray menu looks, which is closed again, as far as the pointer leaves it alone."""
        self.open_menu()  # The first menu of all is pointed at, and a row stays highlighted.
        self.close_menu()
        window = self.open_menu().window
        self.move(10, 10)
        picture = wait_until_settled(lambda: self.menu_drawn(window), "the drawn menu", pause=0.1)
        self.close_menu()
        return picture

    def menu(self, item):
        """Chooses a row of the tray menu and waits until the command has left a trace and the menu is gone."""
        before = self.traces()
        self.choose_from_menu(item, lambda: self.traces() != before and not self.menu_window(),
                              f"a trace of '{item}'")

    def traces(self):
        """Where a command of the menu shows: the log, the settings, the message boxes."""
        return self.events_text(), self.settings_text(), self.message_boxes()

    # Eyes

    def wait_for_tip(self, text):
        wait_for_value(self.tray_tip, text, "the tip")

    def sees(self, factors):
        """Whether the eye sees these factors: no filter less and none more, in whichever pipelines."""
        return ramp_distance(self.visible_levels(), model.ramp(factors)) <= RAMP_TOLERANCE

    def wait_to_see(self, factors):
        white = [channel[255] for channel in model.ramp(factors)]
        wait_until(lambda: self.sees(factors), f"a screen that makes {white} of white",
                   actual=lambda: ([channel[255] for channel in self.visible_levels()],
                                 ramp_distance(self.visible_levels(), model.ramp(factors))))

    def ramp_is_plain(self):
        return ramp_distance(self.ramp(), model.ramp(model.IDENTITY)) <= RAMP_TOLERANCE

    def wait_for_colour(self, intensity, brightness):
        """Waits for exactly one filter on the screen, by the Magnification library."""
        self.wait_to_see(model.factors(intensity, brightness))
        assert self.ramp_is_plain(), "the gamma ramp has a part in the colour"

    def wait_for_legacy_colour(self, intensity, brightness):
        """Waits for exactly one filter on the screen, by the gamma ramp."""
        self.wait_to_see(model.factors(intensity, brightness))
        assert self.magnification.in_force() == model.IDENTITY, "a colour matrix has a part in the colour"

    def wait_for_plain_screen(self):
        self.wait_to_see(model.IDENTITY)

    def screen_is_plain(self):
        return self.sees(model.IDENTITY)

    def effects(self):
        """Every colour matrix that the program has handed over since the start."""
        return [call for call in self.magnification_calls() if call.function == "MagSetFullscreenColorEffect"]

    def log(self):
        """The messages of the present run, without their time stamps."""
        lines = self.events_text().rpartition(MARKER + "\n")[2].splitlines()
        return [line.partition("] ")[2] for line in lines]

    def wait_for_log(self, message, times=1):
        wait_until(lambda: self.log().count(message) >= times, f"'{message}' in the event log, {times} times",
                   actual=self.log)

    def saves(self):
        return self.log().count("Saved settings")

    def wait_for_saves(self, times=1):
        self.wait_for_log("Saved settings", times)

    def settings(self):
        """settings.ini as {key: text} once nobody is writing it: Windows writes key after key."""
        text = wait_until_settled(lambda: (self.settings_text(),), "settings.ini", pause=0.03)[0]
        return dict(line.split("=", 1) for line in text.splitlines() if "=" in line)

    def wait_for_setting(self, key, text):
        wait_for_value(lambda: self.settings().get(key), text, f"{key} in settings.ini")

    def loaded(self):
        """What the program says it has read from settings.ini."""
        wait_until(lambda: any(line.startswith("Loaded settings") for line in self.log()), "the settings", actual=self.log)
        return next(line for line in self.log() if line.startswith("Loaded settings")).partition(": ")[2]


def act_within(seconds, prepare):
    """Calls prepare() and then what it returns, again and again, until the latter takes less than so many seconds: a
    busy machine may be too slow for what is to happen in a short time, and such a run tells nothing."""
    quickest = math.inf
    for _ in range(ATTEMPTS):
        act = prepare()
        started = time.monotonic()
        result = act()
        quickest = min(quickest, time.monotonic() - started)
        if quickest < seconds:
            return result
    raise LabError(f"the quickest of {ATTEMPTS} attempts took {quickest:.1f} s instead of less than {seconds:g} s")


def ramp_distance(one, other):
    return max(abs(a - b) for left, right in zip(one, other) for a, b in zip(left, right))


FILTER_KEYS = ("Intensity", "Brightness")


def settings_file(**values):
    """A settings.ini with these keys."""
    def rows(wanted):
        return "".join(f"{key}={value}\r\n" for key, value in values.items() if (key in FILTER_KEYS) == wanted)
    return f"[Filter]\r\n{rows(True)}[Settings]\r\n{rows(False)}"
