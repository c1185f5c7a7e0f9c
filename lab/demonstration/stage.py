"""The stage of a demonstration: a lab, what is seen on it, and what is kept of it."""

from ambrel_lab import LabError
from ambrel_lab.layout import HEADER, HEADER_COLOUR, MENU_QUIT
from ambrel_lab.waiting import LIMIT, wait_until

EIGHT_BITS = 256  # the screen's gamma ramp is 8 bits deep


class Stage:
    def __init__(self, lab, pictures):
        self.lab, self.pictures = lab, pictures
        self.seen = []

    def see(self, what, happened, limit=LIMIT):
        """Waits for a step's outcome and tells of it; `what` names it as it should be."""
        self.wait(what, happened, limit)
        print(f"  {what}", flush=True)

    def wait(self, what, happened, limit=LIMIT):
        """The same without a word unless it fails: for steps of which there are many."""
        try:
            wait_until(happened, what, limit)
        except LabError as error:
            raise LabError(f"This did not happen: {what}. ({error})") from None

    def save(self, name):
        """Pictures of this moment, and what the screen makes of each level for the report."""
        self.seen.append((name, self.lab.seen()))
        picture = wait_until(self.popup_as_drawn, f"the popup in the picture {name}")
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
        """Clicks a row of the tray menu; the caller waits for what it brings."""
        menu = self.lab.open_menu()
        print("  the right button opens the tray menu", flush=True)
        self.lab.click_menu_row(menu, item)

    def popup_as_drawn(self):
        """A picture with the popup in it: a box that was answered may just have made it hide itself."""
        self.open_popup()
        picture = self.lab.popup_picture()
        return picture if picture.pixel(*HEADER) == HEADER_COLOUR else None

    def open_popup(self):
        self.lab.show()

    def setting_is(self, key, value):
        return self.lab.settings().get(key) == value

    def log_has(self, text):
        return text in self.lab.events_text()

    def quit(self):
        self.choose_from_menu(MENU_QUIT)
        self.see("Quit ends the program", lambda: not self.lab.program_running())
