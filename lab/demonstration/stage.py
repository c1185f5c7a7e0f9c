"""Stage: a lab with helpers that wait for results and save pictures, shared by the scenarios."""

from ambrel_lab import LabError
from ambrel_lab.layout import HEADER, HEADER_COLOUR, MENU_QUIT
from ambrel_lab.waiting import TIMEOUT, wait_until

STRIP = (22, 378, 298, 424)  # card and banner with a little margin, in design units
EIGHT_BITS = 256  # the screen's gamma ramp is 8 bits deep


class Stage:
    def __init__(self, lab, pictures):
        self.lab, self.pictures = lab, pictures
        self.seen = []

    def expect(self, what, happened, timeout=TIMEOUT):
        """Waits until a step has succeeded and prints `what`, which names the expected result."""
        self.wait(what, happened, timeout)
        print(f"  {what}", flush=True)

    def wait(self, what, happened, timeout=TIMEOUT):
        """Like expect(), but prints nothing on success: for steps that are repeated often."""
        try:
            wait_until(happened, what, timeout)
        except LabError as error:
            raise LabError(f"Failed: {what}. ({error})") from None

    def save(self, name):
        """Saves pictures of the popup and the screen, and records the visible levels for the report."""
        self.seen.append((name, self.lab.visible_levels()))
        picture = wait_until(self.popup_as_drawn, f"the popup in the picture {name}")
        picture.save(self.pictures / f"{name}-popup.png")
        self.lab.eye_picture(self.pictures / f"{name}-as-the-eye-sees-it.png")

    def full_white_is(self, expected):
        """Whether white is displayed as `expected`: red, green and blue, 0 to 65535."""
        shown = [channel[255] for channel in self.lab.visible_levels()]
        return all(abs(one - other) <= EIGHT_BITS for one, other in zip(shown, expected))

    def start(self):
        self.lab.install_program()
        self.lab.start_program()
        self.expect("the tray icon appears", self.lab.tray_icon)
        self.lab.open_popup()
        self.expect("a click on it opens the popup", self.lab.popup_visible)

    def choose_from_menu(self, item):
        """Clicks a row of the tray menu. The caller waits for the effect."""
        menu = self.lab.open_menu()
        print("  a right click opens the tray menu", flush=True)
        self.lab.click_menu_row(menu, item)

    def popup_as_drawn(self):
        """A picture of the popup, or None if something else covers it. A message box may just have hidden the popup."""
        self.open_popup()
        picture = self.lab.popup_picture()
        return picture if picture.pixel(*HEADER) == HEADER_COLOUR else None

    def strip(self):
        """A picture of the strip above the presets."""
        return self.lab.popup_picture().crop(*STRIP)

    def open_popup(self):
        self.lab.show()

    def setting_is(self, key, value):
        return self.lab.settings().get(key) == value

    def log_has(self, text):
        return text in self.lab.events_text()

    def quit(self):
        self.choose_from_menu(MENU_QUIT)
        self.expect("Quit ends the program", lambda: not self.lab.program_running())
