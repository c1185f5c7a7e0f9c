"""The program's popup, tray icon and tray menu in a lab: where they are, and input to them. Mixed into Lab."""

import time
from collections import namedtuple

from .layout import MENU_LAUNCH, MENU_LEGACY_MODE, MENU_QUIT, REOPEN_GUARD, UNITS
from .paths import LabError
from .waiting import LIMIT, wait_for_value, wait_until, wait_until_settled

WINDOW_CLASS = "Ambrel2Class"
TASKBAR_CLASS = "Shell_TrayWnd"
MENU_CLASS = "#32768"
TIP_START = "Ambrel"
WM_TIMER, CHECK_ICONS = 0x113, 1
# A place with nothing but the desktop.
NOWHERE = (10, 10)

Rect = namedtuple("Rect", "left top right bottom")
TrayIcon = namedtuple("TrayIcon", "rect tip")
# `rows` is {text: Rect on the screen} from the top.
Menu = namedtuple("Menu", "window rows")


# How far inside the menu's edge its first and last rows certainly are, in pixels.
MENU_MARGIN = 8
# What is known of menus by scaling, width and height; all of one size are alike.
MENU_ROWS_SEEN = {}


def middle(rect):
    return (rect.left + rect.right) // 2, (rect.top + rect.bottom) // 2


class PopupActions:
    """Needs `desktop`, `input`, `windows` and `seen` of Lab."""

    _window_that_was_shown = None

    # The tray icon

    def tray_icons(self):
        """Every icon that the notification area shows, as TrayIcon(rect, tip). What Wine keeps of an icon that is gone,
        or has no place yet, is without width."""
        return [TrayIcon(Rect(row["left"], row["top"], row["right"], row["bottom"]), row["tip"])
                for row in self.desktop.rows("tray") if row["right"] > row["left"]]

    def tray_icon(self):
        """The program's icon, or None."""
        return next((icon for icon in self.tray_icons() if icon.tip.startswith(TIP_START)), None)

    def tray_tip(self):
        """The text of the program's tip, or None without an icon."""
        icon = self.tray_icon()
        return icon and icon.tip

    def tray_icon_position(self):
        """(x, y) of the icon's middle. It moves when other icons come and go."""
        return middle(self.wait_for_tray_icon().rect)

    def wait_for_tray_icon(self, limit=LIMIT):
        """The TrayIcon once the shell shows it."""
        return wait_until(self.tray_icon, "the tray icon", limit, seen=self.tray_icons)

    def wait_for_tray_tip(self, text, limit=LIMIT):
        wait_for_value(self.tray_tip, text, "the tip", limit)

    def remove_dead_icons(self):
        """Has the taskbar look now, as it does every two seconds, which icons belong to no program any more."""
        if self.desktop.started() and self.tray_icon():
            self.send_message(WM_TIMER, CHECK_ICONS, target=TASKBAR_CLASS)
            wait_until(lambda: not self.tray_icon(), "the icon of an ended program to go", seen=self.tray_icons)

    def click_tray(self, button=1):
        self.click_window(*self.tray_icon_position(), TASKBAR_CLASS, button)

    # Windows on the screen

    def window_at(self, x, y):
        """The topmost visible Window at a place of the screen; None where only the desktop is."""
        return next((window for window in self.windows()
                     if window.left <= x < window.right and window.top <= y < window.bottom), None)

    def wait_for_window_at(self, x, y, target):
        """Waits until the window at a place is the one with this class or "0x..." handle, with none above it."""
        wait_until(lambda: (window := self.window_at(x, y)) and target in (window.handle, window.window_class),
                   f"{target} to be the window at {x}, {y}", seen=lambda: (self.window_at(x, y), self.windows()))

    def click_window(self, x, y, target, button=1):
        """Clicks a place of the screen once the window of that class or handle is topmost there."""
        self.press_window(x, y, target, button)
        self.input.release(button)

    def press_window(self, x, y, target, button=1):
        # With the pointer there: a tip that it calls up or leaves behind comes and goes with it.
        self.input.move(x, y)
        self.wait_for_window_at(x, y, target)
        self.input.press(x, y, button)

    def window_facts(self, target=WINDOW_CLASS):
        """Facts of a window, by class or "0x..." handle: visible, foreground, left, top, right, bottom, enabled,
        process, thread, style, extended_style, dpi, title. None when there is no such window."""
        return self.desktop.facts("window", target)

    # The popup

    def popup_visible(self):
        return bool((self.window_facts() or {}).get("visible"))

    def popup_is_foreground(self):
        return bool((self.window_facts() or {}).get("foreground"))

    def wait_for_foreground(self):
        """Waits until the popup has the foreground and the program has done all that it does to get it."""
        wait_until(self.popup_is_foreground, "the popup in the foreground", seen=self.windows)
        self.send_message(0)

    def popup_rect(self):
        """Rect of the program's window on the screen, shown or not; None without a window."""
        found = self.window_facts()
        return found and Rect(found["left"], found["top"], found["right"], found["bottom"])

    def wait_for_popup(self, visible=True, limit=LIMIT):
        """Waits for the popup to be shown or hidden and returns its Rect, which has come to rest."""
        wait_until(lambda: self.popup_visible() == visible, f"the popup to be visible={visible}", limit,
                   seen=lambda: (self.window_facts(), self.windows()))
        self._window_that_was_shown = (self.window_facts() or {}).get("handle")
        return wait_until_settled(self.popup_rect, "the popup's rectangle", pause=0.002)

    def open_popup(self):
        """Clicks the tray icon and returns the Rect of the popup, which is hidden, once it is shown."""
        facts = self.window_facts()
        if facts and facts["handle"] == self._window_that_was_shown:
            self.wait_for_popup(False)
            # It may have been hidden just now, and then the click would open nothing.
            time.sleep(2 * REOPEN_GUARD)
        self.click_tray()
        return self.wait_for_popup()

    def show(self):
        """Opens the popup unless it is open; its Rect."""
        return self.popup_rect() if self.popup_visible() else self.open_popup()

    def unit_to_screen(self, x, y):
        """The screen pixel of a place given in design units (96 DPI) of the popup."""
        rect = self.popup_rect()
        return rect.left + round(x * self.dpi / UNITS), rect.top + round(y * self.dpi / UNITS)

    def click_unit(self, x, y, button=1):
        """Clicks a place of the popup, which must be shown with no other window above that place."""
        self.click_window(*self.unit_to_screen(x, y), WINDOW_CLASS, button)

    def move_unit(self, x, y):
        self.input.move(*self.unit_to_screen(x, y))

    def press_unit(self, x, y, button=1):
        self.press_window(*self.unit_to_screen(x, y), WINDOW_CLASS, button)

    def drag_unit(self, x0, y0, x1, y1, steps=10, release=True):
        start, end = self.unit_to_screen(x0, y0), self.unit_to_screen(x1, y1)
        self.input.move(*start)
        self.wait_for_window_at(*start, WINDOW_CLASS)
        self.input.drag(*start, *end, steps=steps, release=release)

    def popup_picture(self, as_seen=False):
        """What the screen shows where the popup is, without (or with) colour matrix and gamma ramp."""
        rect = self.popup_rect()
        picture = self.connection.picture(*rect[:2], rect.right - rect.left, rect.bottom - rect.top)
        return picture.through(self.seen()) if as_seen else picture

    # The tray menu

    def menu_window(self):
        """The menu's Window, or None while no menu is open. A menu that is just being opened has no size yet."""
        return next((window for window in self.windows()
                     if window.window_class == MENU_CLASS and window.right > window.left), None)

    def open_menu(self):
        """Opens the tray menu with the right button; the Menu once it has come to rest."""
        self.click_tray(3)
        return self.wait_for_menu()

    def wait_for_menu(self):
        """The Menu once it has stopped moving and is drawn."""
        window = wait_until_settled(self.menu_window, "the tray menu", pause=0.02)
        key = self.dpi, window.right - window.left, window.bottom - window.top
        if key not in MENU_ROWS_SEEN:
            MENU_ROWS_SEEN[key] = self._find_menu_rows(window)
        return Menu(window, {text: Rect(window.left + row.left, window.top + row.top, window.left + row.right,
                                        window.top + row.bottom)
                             for text, row in MENU_ROWS_SEEN[key].items()})

    def menu_drawn(self, window):
        """The menu's picture, or None before it is drawn."""
        picture = self.connection.picture(window.left, window.top, window.right - window.left,
                                          window.bottom - window.top)
        return picture if picture.colours() > 2 else None

    def _find_menu_rows(self, window):
        """{text: Rect within the menu's window}, found by pointing at the rows: the menu highlights the one that the
        pointer is on. Wine answers no other process about a menu's items, and keeps the last highlight."""
        plain = wait_until_settled(lambda: self.menu_drawn(window), "the tray menu's picture")
        x, pointer = (window.left + window.right) // 2, self.input.position()

        def row_at(y):
            self.input.move(x, window.top + y)
            row = Rect(*wait_until_settled(lambda: plain.difference(self.menu_drawn(window) or plain),
                                           f"a highlighted row at {y} in the tray menu"))
            if not row.top <= y < row.bottom:
                raise LabError(f"at {y} the tray menu highlights {row}")
            return row
        first = row_at(MENU_MARGIN)
        second = row_at(first.bottom + (first.bottom - first.top) // 2)
        # Between the second and the last is a line that is no row.
        last = row_at(plain.height - 1 - MENU_MARGIN)
        self.input.move(*pointer)
        return {MENU_LAUNCH: first, MENU_LEGACY_MODE: second, MENU_QUIT: last}

    def click_menu_row(self, menu, text):
        """Clicks a row of an open Menu once nothing, such as the icon's tip, lies above it."""
        if text not in menu.rows:
            raise LabError(f"the menu has no row '{text}': {list(menu.rows)}")
        self.click_window(*middle(menu.rows[text]), menu.window.handle)

    def choose_from_menu(self, text, happened, what):
        """Opens the tray menu, clicks a row and waits for its effect: happened() is true. `what` names the effect."""
        self.click_menu_row(self.open_menu(), text)
        wait_until(happened, what, seen=self.windows)

    def close_menu(self):
        """Leaves the tray menu without a choice and waits for its end."""
        self.input.click(*NOWHERE)
        self.wait_for_menu_end()

    def wait_for_menu_end(self):
        wait_until(lambda: not self.menu_window(), "the end of the tray menu", seen=self.windows)
