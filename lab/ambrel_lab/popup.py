"""The program's popup and tray icon in a lab: where they are, and hands on them. Mixed into Lab."""

from collections import namedtuple

from .waiting import wait_until

WINDOW_CLASS = "Ambrel2Class"
TIP_START = "Ambrel"
UNITS = 96

Rect = namedtuple("Rect", "left top right bottom")
TrayIcon = namedtuple("TrayIcon", "rect tip")


class PopupActions:
    """Needs `desktop`, `hands` and `seen` of Lab."""

    def tray_icons(self):
        """Every icon of the notification area as TrayIcon(rect, tip)."""
        rows = self.desktop.rows("tray")
        return [TrayIcon(Rect(*map(int, row[:4])), row[4]) for row in rows]

    def tray_icon(self):
        """The program's icon, or None."""
        return next((icon for icon in self.tray_icons() if icon.tip.startswith(TIP_START)), None)

    def tray_tip(self):
        """The text of the program's tip, or None without an icon."""
        icon = self.tray_icon()
        return icon and icon.tip

    def tray_icon_position(self):
        """(x, y) of the icon's middle. It moves when other icons come and go."""
        rect = self.wait_for_tray_icon().rect
        return (rect.left + rect.right) // 2, (rect.top + rect.bottom) // 2

    def wait_for_tray_icon(self, timeout=20.0):
        """The TrayIcon once the shell shows it; an icon that no place has been given yet does not count."""
        def shown():
            icon = self.tray_icon()
            return icon if icon and icon.rect.right > icon.rect.left else None
        return wait_until(shown, timeout, "the tray icon")

    def wait_for_tray_tip(self, text, timeout=10.0):
        wait_until(lambda: self.tray_tip() == text, timeout, f"the tip '{text}'")

    def click_tray(self, button=1):
        self.hands.click(*self.tray_icon_position(), button)

    def window_facts(self, target=WINDOW_CLASS):
        """Facts of a window, by class or "0x..." handle: visible, foreground, left, top, right, bottom, enabled,
        process, thread, style, extended_style, dpi, title. None when there is no such window."""
        return self.desktop.facts("window", target)

    def popup_visible(self):
        return bool((self.window_facts() or {}).get("visible"))

    def popup_is_foreground(self):
        return bool((self.window_facts() or {}).get("foreground"))

    def popup_rect(self):
        """Rect of the program's window on the screen, shown or not; None without a window."""
        found = self.window_facts()
        return found and Rect(found["left"], found["top"], found["right"], found["bottom"])

    def wait_for_popup(self, visible=True, timeout=10.0):
        """Waits for the popup to be shown or hidden and returns its Rect."""
        wait_until(lambda: self.popup_visible() == visible, timeout, f"the popup to be visible={visible}")
        return self.popup_rect()

    def open_popup(self):
        """Clicks the tray icon and returns the Rect of the popup once it is shown."""
        self.click_tray()
        return self.wait_for_popup()

    def unit_to_screen(self, x, y):
        """The screen pixel of a place given in design units (96 DPI) of the popup."""
        rect = self.popup_rect()
        return rect.left + round(x * self.dpi / UNITS), rect.top + round(y * self.dpi / UNITS)

    def click_unit(self, x, y, button=1):
        self.hands.click(*self.unit_to_screen(x, y), button)

    def move_unit(self, x, y):
        self.hands.move(*self.unit_to_screen(x, y))

    def press_unit(self, x, y, button=1):
        self.hands.press(*self.unit_to_screen(x, y), button)

    def drag_unit(self, x0, y0, x1, y1, steps=10, release=True):
        self.hands.drag(*self.unit_to_screen(x0, y0), *self.unit_to_screen(x1, y1), steps=steps, release=release)

    def popup_picture(self, as_seen=False):
        """What the screen shows where the popup is, without (or with) colour matrix and gamma ramp."""
        rect = self.popup_rect()
        picture = self.connection.picture(*rect[:2], rect.right - rect.left, rect.bottom - rect.top)
        return picture.through(self.seen()) if as_seen else picture
