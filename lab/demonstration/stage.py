"""The stage of a demonstration: a lab, what is seen on it, and what is kept of it."""

import time

from ambrel_lab import LabError
from ambrel_lab.waiting import wait_until

# Places on the popup, in design units.
WARMTH_THUMB = (80, 229)
STATUS_STRIP = (160, 395)
CARD = (160, 400)
CARD_ACCENT = (160, 384)  # on its upper outline
DAY = (70, 447)
EVENING = (160, 447)
NIGHT = (250, 447)
POWER = (160, 503)
GEAR = (292, 29)
CLOSE = (276, 30)
LAUNCH_ROW = (160, 153)
EXTREME_DIM_ROW = (160, 203)
SUPPORT = (160, 489)
SUPPORT_SURFACE = (280, 470)  # on the support button, where neither of its looks has a letter

HEADER, HEADER_COLOUR = (160, 6), (25, 25, 25)  # the band behind both panels' titles
REOPEN_GUARD = 0.3  # seconds; a click on the icon right after the popup has hidden itself does not open it

# Where the tray menu's items are, as shares of its height.
MENU_LAUNCH, MENU_LEGACY_MODE, MENU_QUIT = 0.18, 0.44, 0.85
MENU_CLASS = "#32768"

EIGHT_BITS = 256  # the screen's gamma ramp is 8 bits deep


class Stage:
    def __init__(self, lab, pictures):
        self.lab, self.pictures = lab, pictures
        self.seen = []

    def see(self, what, happened, patience=10):
        """Waits for a step's outcome and tells of it; `what` names it as it should be."""
        self.wait(what, happened, patience)
        print(f"  {what}", flush=True)

    def wait(self, what, happened, patience=10):
        """The same without a word unless it fails: for steps of which there are many."""
        try:
            wait_until(happened, patience, what)
        except LabError:
            raise LabError(f"This did not happen: {what}.") from None

    def save(self, name):
        """Pictures of this moment, and what the screen makes of each level for the report."""
        self.seen.append((name, self.lab.seen()))
        picture = wait_until(self.popup_as_drawn, 10, f"the popup in the picture {name}")
        picture.save(self.pictures / f"{name}-popup.png")
        self.lab.eye_picture(self.pictures / f"{name}-as-the-eye-sees-it.png")

    def full_white_is(self, expected):
        """Whether this is what the screen makes of white, colour matrix and gamma ramp together."""
        shown = [channel[255] for channel in self.lab.seen()]
        return all(abs(one - other) <= EIGHT_BITS for one, other in zip(shown, expected))

    def start(self):
        self.lab.install_program()
        self.lab.start_program()
        self.see("the tray icon appears", self.lab.tray_icon)
        self.lab.open_popup()
        self.see("a click on it opens the popup", self.lab.popup_visible)

    def choose_from_menu(self, item):
        self.lab.click_tray(button=3)
        self.see("the right button opens the tray menu", self.menu)
        menu = self.menu()
        # At the left, where the tray icon's tip does not lie over the menu.
        self.lab.click(menu.left + 20, menu.top + item * (menu.bottom - menu.top))

    def menu(self):
        """The tray menu's window once it is shown: before that it has no place yet."""
        return next((window for window in self.lab.windows() if window.window_class == MENU_CLASS), None)

    def popup_as_drawn(self):
        """A picture with the popup in it: a box that was answered may just have made it hide itself."""
        self.open_popup()
        picture = self.lab.popup_picture()
        return picture if picture.pixel(*HEADER) == HEADER_COLOUR else None

    def open_popup(self):
        if not self.lab.popup_visible():
            time.sleep(REOPEN_GUARD)
            self.lab.open_popup()

    def setting_is(self, key, value):
        return self.lab.settings().get(key) == value

    def log_has(self, text):
        return text in self.lab.events_text()

    def quit(self):
        self.choose_from_menu(MENU_QUIT)
        self.see("Quit ends the program", lambda: not self.lab.program_running())
