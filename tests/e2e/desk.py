"""A lab with the program in it, and what a person in front of that screen does and sees."""

import os
import sys
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "lab"))

# pylint: disable=wrong-import-position
from ambrel_lab import Lab, LabError  # noqa: E402
from ambrel_lab.waiting import wait_until  # noqa: E402

import model  # noqa: E402

__all__ = ["Desk", "LabError", "ROOT", "wait_until", "MARKER"]

# The build whose program is tested; without a word about it, the lab's own choice.
BUILD = {"build_dir": os.environ["AMBREL_BUILD_DIR"]} if "AMBREL_BUILD_DIR" in os.environ else {}
MARKER = "---------- session start ----------"
# Middles of the popup's controls, in design units.
POWER = (160, 503)
PRESET_PLACES = {"DAY": (70, 447), "EVENING": (160, 447), "NIGHT": (250, 447)}
SLIDER_X = {"WARMTH": 80, "BRIGHTNESS": 240}
SLIDER_Y = 206
GEAR = (292, 29)
CLOSE = (276, 30)
SETTINGS_ROWS = {"LAUNCH AT STARTUP": (160, 153), "ALLOW EXTREME DIM": (160, 203), "LEGACY MODE": (160, 253)}
# Middles of the tray menu's rows, as shares of its height.
MENU_ROWS = {"Launch at Startup": 13 / 72, "Legacy Mode (Older Hardware)": 32 / 72, "Quit": 60 / 72}
MENU_CLASS = "#32768"
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
        self.start_program()
        self.wait_for_icon()
        wait_until(self.window_facts, 10.0, "the program's window")
        return self

    def start_fresh(self, settings=None, effect=(0,), initialize=0):
        """Starts the program on the ground that `clear` prepares."""
        self.clear(settings, effect, initialize)
        return self.start()

    def clear(self, settings=None, effect=(0,), initialize=0):
        """Ends a program that still runs and leaves nothing of it but these settings (a text, or a dict)."""
        if self.program_running():
            self.kill_program()
        if self.settings_folder.exists():
            self.write_events(None)
        if isinstance(settings, dict):
            settings = settings_file(**settings)
        self.write_settings(settings)
        self.magnification_script(effect, initialize)
        self.set_ramp(model.ramp(model.IDENTITY))
        self.magnification.forget()

    def restart(self):
        """Ends the program as a crash would and starts it again with what it left behind."""
        self.kill_program()
        return self.start()

    def quit(self):
        """Quit from the tray menu; the exit code."""
        self.menu("Quit")
        return self.wait_for_exit()

    def icon_shown(self):
        icon = self.tray_icon()
        return bool(icon and icon.rect.right > icon.rect.left)

    def wait_for_icon(self, shown=True):
        wait_until(lambda: self.icon_shown() == shown, 20.0, f"the tray icon to be shown={shown}")

    # Hands

    def show(self):
        """Opens the popup when it is not open; where it is."""
        return self.popup_rect() if self.popup_visible() else self.open_popup()

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

    def open_menu(self):
        """Opens the tray menu with the right button and returns its window."""
        self.click_tray(3)
        return wait_until(self.menu_window, 10.0, "the tray menu")

    def menu_window(self):
        return next((window for window in self.windows() if window.window_class == MENU_CLASS), None)

    def menu_place(self, window, item):
        return (window.left + (window.right - window.left) // 3,
                window.top + round((window.bottom - window.top) * MENU_ROWS[item]))

    def menu_picture(self):
        """How the tray menu looks, which is closed again, as far as the pointer leaves it alone."""
        menu = self.open_menu()
        self.move(10, 10)
        last = [None]

        def settled():
            picture = self.connection.picture(menu.left, menu.top, menu.right - menu.left, menu.bottom - menu.top)
            same = picture == last[0] and picture.colours() > 2
            last[0] = picture
            return same and picture
        picture = wait_until(settled, 5.0, "the drawn menu", pause=0.1)
        self.click(10, 10)
        wait_until(lambda: not self.menu_window(), 10.0, "the end of the tray menu")
        return picture

    def menu(self, item):
        """Chooses a row of the tray menu and waits for the menu's end."""
        window = self.open_menu()
        self.click(*self.menu_place(window, item))
        wait_until(lambda: not self.menu_window(), 10.0, "the end of the tray menu")

    # Eyes

    def wait_for_tip(self, text):
        """Waits for a tip; when it does not come, says what was there instead."""
        try:
            wait_until(lambda: self.tray_tip() == text, 10.0, text)
        except LabError:
            assert self.tray_tip() == text

    def sees(self, factors):
        """Whether the eye sees these factors: no filter less and none more, in whichever pipelines."""
        return ramp_distance(self.seen(), model.ramp(factors)) <= RAMP_TOLERANCE

    def wait_to_see(self, factors):
        try:
            wait_until(lambda: self.sees(factors), 10.0, "the colour on the screen")
        except LabError:
            seen = self.seen()
            assert [channel[255] for channel in seen] == [channel[255] for channel in model.ramp(factors)]
            assert ramp_distance(seen, model.ramp(factors)) <= RAMP_TOLERANCE

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
        wait_until(lambda: self.log().count(message) >= times, 10.0, f"'{message}' in the event log")

    def saves(self):
        return self.log().count("Saved settings")

    def wait_for_saves(self, times=1):
        self.wait_for_log("Saved settings", times)

    def settings(self):
        """settings.ini as {key: text} once nobody is writing it: Windows writes key after key."""
        text = [None]

        def settled():
            before, text[0] = text[0], self.settings_text()
            return text[0] == before
        wait_until(settled, 5.0, "settings.ini to be left alone", pause=0.03)
        return dict(line.split("=", 1) for line in text[0].splitlines() if "=" in line)

    def wait_for_setting(self, key, text):
        wait_until(lambda: self.settings().get(key) == text, 10.0, f"{key}={text} in settings.ini")

    def loaded(self):
        """What the program says it has read from settings.ini."""
        wait_until(lambda: any(line.startswith("Loaded settings") for line in self.log()), 10.0, "the settings")
        return next(line for line in self.log() if line.startswith("Loaded settings")).partition(": ")[2]


def ramp_distance(one, other):
    return max(abs(a - b) for left, right in zip(one, other) for a, b in zip(left, right))


FILTER_KEYS = ("Intensity", "Brightness")


def settings_file(**values):
    """A settings.ini with these keys."""
    def rows(wanted):
        return "".join(f"{key}={value}\r\n" for key, value in values.items() if (key in FILTER_KEYS) == wanted)
    return f"[Filter]\r\n{rows(True)}[Settings]\r\n{rows(False)}"
