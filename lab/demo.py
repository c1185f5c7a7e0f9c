#!/usr/bin/python3
"""The program's main job on real input, in a lab: demo.py FOLDER-FOR-PICTURES

Every step waits for what a person would see of it. A step that does not happen ends the demonstration with a
sentence that says which, and with exit code 1."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.dont_write_bytecode = True

from ambrel_lab import Lab, LabError  # noqa: E402
from ambrel_lab.unit import end_on_signals  # noqa: E402
from ambrel_lab.waiting import wait_until  # noqa: E402

# Places on the popup, in design units.
WARMTH_THUMB = (80, 229)
EVENING = (160, 447)
POWER = (160, 503)

# The way to the tray menu's items with the keyboard.
MENU_LEGACY_MODE = ("Down", "Down", "Return")
MENU_QUIT = ("Up", "Return")
MENU_CLASS = "#32768"

# What the preset EVENING puts on the screen: a black body of 2700 K relative to 6500 K, at 85%.
EVENING_AT_FULL_WHITE = [round(65535 * 0.85 * channel) for channel in (1.0000, 0.8185, 0.1865)]
IDENTITY_AT_FULL_WHITE = [65535] * 3
EIGHT_BITS = 256  # the screen's ramp is 8 bits deep


class Demonstration:
    def __init__(self, lab, pictures):
        self.lab, self.pictures = lab, pictures
        self.ramps = []

    def see(self, what, happened):
        """Waits for a step's outcome; `what` names it as it should be."""
        try:
            wait_until(happened, 10, what)
        except LabError:
            raise LabError(f"This did not happen: {what}.") from None
        print(f"  {what}", flush=True)

    def save(self, name):
        """Pictures of this moment, and the screen's gamma ramp for the report."""
        self.ramps.append((name, self.lab.ramp()))
        self.lab.popup_picture().save(self.pictures / f"{name}-popup.png")
        self.lab.eye_picture(self.pictures / f"{name}-as-the-eye-sees-it.png")

    def full_white(self):
        """What the screen's gamma ramp makes of white."""
        return [channel[255] for channel in self.lab.ramp()]

    def ramp_is(self, expected):
        return all(abs(shown - wanted) <= EIGHT_BITS for shown, wanted in zip(self.full_white(), expected))

    def start(self):
        self.lab.install_program()
        self.lab.start_program()
        self.see("the tray icon appears", self.lab.tray_icon)
        self.lab.open_popup()
        self.see("a click on it opens the popup", self.lab.popup_visible)
        self.save("1-off")

    def drag_warmth(self):
        self.lab.click_unit(*POWER)
        self.see("the red button turns the filter on", lambda: (self.lab.tray_tip() or "").startswith("Ambrel - ON"))
        x, y = WARMTH_THUMB
        self.lab.drag_unit(x, y, x, y - 60)
        self.see("a drag of WARMTH upwards makes it warmer", lambda: self.lab.tray_tip() == "Ambrel - ON (2028K, 100%)")
        self.see("the drag is saved", lambda: self.lab.settings().get("Intensity") == "688")
        self.save("2-dragged")

    def choose_evening(self):
        self.lab.click_unit(*EVENING)
        self.see("EVENING shows 2700 K at 85%", lambda: self.lab.tray_tip() == "Ambrel - ON (2700K, 85%)")
        self.see("the screen's ramp is EVENING's", lambda: self.ramp_is(EVENING_AT_FULL_WHITE))
        self.see("EVENING is saved", lambda: self.lab.settings().get("Brightness") == "850")
        self.save("3-evening")

    def press_power(self):
        self.lab.click_unit(*POWER)
        self.see("the red button turns the filter off", lambda: self.lab.tray_tip() == "Ambrel - OFF")
        self.see("the screen is as it was", lambda: self.ramp_is(IDENTITY_AT_FULL_WHITE))
        self.lab.click_unit(*POWER)
        self.see("and on again", lambda: self.ramp_is(EVENING_AT_FULL_WHITE))

    def choose_from_menu(self, keys):
        self.lab.click_tray(button=3)
        self.see("the right button opens the tray menu", lambda: self.lab.window_facts(MENU_CLASS))
        for key in keys:
            self.lab.key(key)

    def switch_legacy_mode(self, on):
        effects = len(self.lab.magnification_calls())
        self.choose_from_menu(MENU_LEGACY_MODE)
        word, value = ("on", "1") if on else ("off", "0")
        self.see(f"the tray menu switches Legacy Mode {word}",
                 lambda: self.lab.settings().get("UseLegacyGamma") == value)
        self.see("the colour stays on the screen", lambda: self.ramp_is(EVENING_AT_FULL_WHITE))
        self.see("Windows was told through the matrix", lambda: len(self.lab.magnification_calls()) > effects)
        self.save("4-legacy-mode" if on else "5-magnification")

    def quit(self):
        self.choose_from_menu(MENU_QUIT)
        self.see("Quit ends the program", lambda: not self.lab.program_running())
        self.see("and gives the screen back", lambda: self.ramp_is(IDENTITY_AT_FULL_WHITE))
        self.ramps.append(("6-after-the-end", self.lab.ramp()))

    def report(self):
        print("\nThe matrices that Windows was given (diagonal):")
        for call in self.lab.magnification_calls():
            if call.matrix:
                print("  " + "  ".join(f"{cell:.6f}" for cell in call.diagonal[:3]))
        print("\nThe gamma ramps that the screen showed (levels 64, 128 and 255 of red, green, blue):")
        for name, ramp in self.ramps:
            print(f"  {name:16}" + "   ".join(" ".join(f"{channel[level]:5}" for channel in ramp)
                                               for level in (64, 128, 255)))
        print("\nsettings.ini:\n" + self.lab.settings_text())
        print("events.log:\n" + self.lab.events_text())
        print(f"Pictures are in {self.pictures}")


def main(pictures):
    pictures.mkdir(parents=True, exist_ok=True)
    end_on_signals()
    with Lab() as lab:
        demonstration = Demonstration(lab, pictures)
        demonstration.start()
        demonstration.drag_warmth()
        demonstration.choose_evening()
        demonstration.press_power()
        demonstration.switch_legacy_mode(on=True)
        demonstration.switch_legacy_mode(on=False)
        demonstration.quit()
        demonstration.report()


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    try:
        main(Path(sys.argv[1]))
    except LabError as error:
        print(f"\n{error}", file=sys.stderr)
        sys.exit(1)
