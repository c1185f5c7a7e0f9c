"""The program's popup, tray icon and tray menu in a lab: where they are, and input to them. Mixed into Lab."""

import time
from collections import namedtuple

from .evidence import record_repetition
from .layout import MENU_LAUNCH, MENU_LEGACY_MODE, MENU_QUIT, REOPEN_DELAY, UNITS
from .paths import LabError
from .waiting import TIMEOUT, wait_until, wait_until_settled

WINDOW_CLASS = "Ambrel2Class"
TASKBAR_CLASS = "Shell_TrayWnd"
MENU_CLASS = "#32768"
TOOLTIP_START = "Ambrel"
WM_TIMER, CHECK_ICONS = 0x113, 1
# A position where only the desktop is visible.
NOWHERE = (10, 10)

Rect = namedtuple("Rect", "left top right bottom")
TrayIcon = namedtuple("TrayIcon", "rect tooltip")
# `rows` is {text: Rect on the screen} from the top.
Menu = namedtuple("Menu", "window rows")

# How often a menu is opened that another window covers, and the seconds after which the icon's tooltip has disappeared.
MENU_ATTEMPTS, TOOLTIP_TIMEOUT = 3, 10.0
# Distance in pixels from the menu's edge that is certainly inside its first or last row.
MENU_MARGIN = 8
# Rows found so far, by (dpi, width, height) of the menu. Menus of one size have the same rows.
MENU_ROWS_SEEN = {}


def centre(rect):
    return (rect.left + rect.right) // 2, (rect.top + rect.bottom) // 2


def highlighted_row(picture, y):
    """The highlighted row of a menu's picture that contains y, as a Rect up to MENU_MARGIN from the right edge; None if
    another row or none is highlighted. No text reaches MENU_MARGIN, and most of the menu is not highlighted."""
    x = picture.width - 1 - MENU_MARGIN
    column = [picture.pixel(x, row) for row in range(picture.height)]
    colour, background = column[y], max(set(column), key=column.count)
    others = [row for row, other in enumerate(column) if other != colour]
    top = max((row + 1 for row in others if row < y), default=0)
    bottom = min((row for row in others if row > y), default=picture.height)
    if colour == background or bottom - top < MENU_MARGIN:
        return None
    left = next(column for column in range(x, -1, -1) if picture.pixel(column, top) != colour) + 1
    return Rect(left, top, x, bottom)


class PopupActions:
    """Needs `desktop`, `input`, `windows` and `visible_levels` of Lab."""

    _window_that_was_shown = None

    # The tray icon

    def tray_icons(self):
        """Every icon that the notification area shows, as TrayIcon(rect, tooltip). Omits entries without width,
        which Wine has for icons that are removed or not yet placed."""
        return [TrayIcon(Rect(row["left"], row["top"], row["right"], row["bottom"]), row["tooltip"])
                for row in self.desktop.rows("tray") if row["right"] > row["left"]]

    def tray_icon(self):
        """The program's icon, or None."""
        return next((icon for icon in self.tray_icons() if icon.tooltip.startswith(TOOLTIP_START)), None)

    def tray_tooltip(self):
        """The text of the program's tooltip, or None if there is no icon."""
        icon = self.tray_icon()
        return icon and icon.tooltip

    def tray_icon_position(self):
        """(x, y) of the icon's centre. It moves when other icons appear or disappear."""
        return centre(self.wait_for_tray_icon().rect)

    def wait_for_tray_icon(self, timeout=TIMEOUT):
        """Waits until the shell shows the program's TrayIcon and returns it."""
        return wait_until(self.tray_icon, "the tray icon", timeout, state=self.tray_icons)

    def remove_dead_icons(self):
        """Makes the taskbar remove the icons of ended programs now. By itself it does so every two seconds."""
        if self.desktop.started() and self.tray_icon():
            self.send_message(WM_TIMER, CHECK_ICONS, target=TASKBAR_CLASS)
            wait_until(lambda: not self.tray_icon(), "the removal of an ended program's icon", state=self.tray_icons)

    def click_tray(self, button=1):
        self.click_window(*self.tray_icon_position(), TASKBAR_CLASS, button)

    # Windows on the screen

    def window_at(self, x, y):
        """The topmost visible Window at a position of the screen; None if there is only the desktop."""
        return next((window for window in self.windows()
                     if window.left <= x < window.right and window.top <= y < window.bottom), None)

    def wait_for_window_at(self, x, y, target):
        """Waits until the topmost window at a position has this class or "0x..." handle."""
        wait_until(lambda: (window := self.window_at(x, y)) and target in (window.handle, window.window_class),
                   f"{target} to be the window at {x}, {y}", state=lambda: (self.window_at(x, y), self.windows()))

    def click_window(self, x, y, target, button=1):
        """Clicks a position of the screen as soon as the window of that class or handle is topmost there."""
        self.press_window(x, y, target, button)
        self.input.release(button)

    def press_window(self, x, y, target, button=1):
        # The pointer moves first, because that can show or hide a tooltip. The press follows the check immediately.
        self.input.move(x, y)
        self.wait_for_window_at(x, y, target)
        self.input.press_here(button)

    def window_facts(self, target=WINDOW_CLASS):
        """Facts of a window, by class or "0x..." handle: visible, foreground, left, top, right, bottom, enabled,
        process, thread, style, extended_style, dpi, title. None if there is no such window."""
        return self.desktop.facts("window", target)

    # The popup

    def popup_visible(self):
        return bool((self.window_facts() or {}).get("visible"))

    def popup_is_foreground(self):
        return bool((self.window_facts() or {}).get("foreground"))

    def wait_for_foreground(self):
        """Waits until the popup has the foreground and the program has finished activating it."""
        wait_until(self.popup_is_foreground, "the popup in the foreground", state=self.windows)
        self.send_message(0)

    def popup_rect(self):
        """Rect of the program's window on the screen, visible or hidden; None if there is no window."""
        found = self.window_facts()
        return found and Rect(found["left"], found["top"], found["right"], found["bottom"])

    def wait_for_popup(self, visible=True, timeout=TIMEOUT):
        """Waits until the popup is shown (or hidden) and no longer moves, and returns its Rect."""
        wait_until(lambda: self.popup_visible() == visible, f"the popup to be visible={visible}", timeout,
                   state=lambda: (self.window_facts(), self.windows()))
        self._window_that_was_shown = (self.window_facts() or {}).get("handle")
        return wait_until_settled(self.popup_rect, "the popup's rectangle", pause=0.002)

    def open_popup(self):
        """Clicks the tray icon while the popup is hidden, waits until it is shown and returns its Rect."""
        facts = self.window_facts()
        if facts and facts["handle"] == self._window_that_was_shown:
            self.wait_for_popup(False)
            # A click directly after the popup was hidden does not open it.
            time.sleep(2 * REOPEN_DELAY)
        self.click_tray()
        return self.wait_for_popup()

    def show(self):
        """Opens the popup unless it is open. Returns its Rect."""
        facts = self.window_facts()
        if not (facts and facts["visible"]):
            return self.open_popup()
        self._window_that_was_shown = facts["handle"]
        return self.popup_rect()

    def unit_to_screen(self, x, y):
        """The screen pixel of a position in design units (96 DPI) of the popup."""
        rect = self.popup_rect()
        return rect.left + round(x * self.dpi / UNITS), rect.top + round(y * self.dpi / UNITS)

    def click_unit(self, x, y, button=1):
        """Clicks a position of the popup, which must be visible, once no other window covers that position."""
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
        """The part of the screen where the popup is, without (or with) colour matrix and gamma ramp."""
        rect = self.popup_rect()
        picture = self.connection.picture(*rect[:2], rect.right - rect.left, rect.bottom - rect.top)
        return picture.through(self.visible_levels()) if as_seen else picture

    # The tray menu

    def menu_window(self):
        """The menu's Window, or None if no menu is open. A menu without a size is still opening and does not count."""
        return next((window for window in self.windows()
                     if window.window_class == MENU_CLASS and window.right > window.left), None)

    def open_menu(self):
        """Opens the tray menu with the right button and returns the Menu once it has stopped moving.

        Wine sometimes raises the popup above a menu that has just opened. Such a menu is closed and opened again, which
        ./test.sh reports.
        """
        for _ in range(MENU_ATTEMPTS - 1):
            self.click_tray(3)
            window = self.wait_for_menu_window()
            x, top, bottom = (window.left + window.right) // 2, window.top, window.bottom
            covered = next((y for y in (top + MENU_MARGIN, (top + bottom) // 2, bottom - MENU_MARGIN)
                            if not self.topmost_at(x, y, window.handle)), None)
            if covered is None:
                return self.menu_in(window)
            record_repetition(f"the menu was covered by {self.window_at(x, covered)}; opened again")
            self.close_menu()
        self.click_tray(3)
        return self.wait_for_menu()

    def topmost_at(self, x, y, handle):
        """Whether a window is topmost at a position, or becomes topmost soon: the icon's tooltip disappears by itself."""
        deadline = time.monotonic() + TOOLTIP_TIMEOUT
        while not ((window := self.window_at(x, y)) and window.handle == handle):
            if time.monotonic() > deadline:
                return False
            time.sleep(0.05)
        return True

    def wait_for_menu_window(self):
        """Waits until the tray menu has stopped moving and handles input, and returns its Window."""
        window = wait_until_settled(self.menu_window, "the tray menu", pause=0.02)
        self.synchronise(window.handle)  # A menu appears before it captures the mouse, and would ignore a click.
        return window

    def wait_for_menu(self):
        """Waits until the menu has stopped moving and is drawn, and returns the Menu."""
        return self.menu_in(self.wait_for_menu_window())

    def menu_in(self, window):
        """The Menu of a menu's Window."""
        key = self.dpi, window.right - window.left, window.bottom - window.top
        if key not in MENU_ROWS_SEEN:
            MENU_ROWS_SEEN[key] = self._find_menu_rows(window)
        return Menu(window, {text: Rect(window.left + row.left, window.top + row.top, window.left + row.right,
                                        window.top + row.bottom)
                             for text, row in MENU_ROWS_SEEN[key].items()})

    def menu_drawn(self, window):
        """The menu's picture, or None before it is drawn."""
        self.synchronise(window.handle)  # A menu is drawn as it opens, before it handles a message.
        picture = self.connection.picture(window.left, window.top, window.right - window.left,
                                          window.bottom - window.top)
        return picture if picture.colours() > 2 else None

    def _find_menu_rows(self, window):
        """{text: Rect within the menu's window}, found with the pointer: the menu highlights the row under it. Wine
        does not return a menu's items to another process, and keeps the last highlight."""
        x, pointer = (window.left + window.right) // 2, self.input.position()
        width, height = window.right - window.left, window.bottom - window.top

        def row_at(y):
            def row():
                picture = self.menu_drawn(window)
                return picture and highlighted_row(picture, y)
            self.input.move(x, window.top + y)
            return wait_until_settled(row, f"the highlighted row at {y} in the tray menu")
        first = row_at(MENU_MARGIN)
        second = row_at(first.bottom + (first.bottom - first.top) // 2)
        # A separator is between the second row and the last.
        last = row_at(height - 1 - MENU_MARGIN)
        self.input.move(*pointer)
        return {text: Rect(first.left, row.top, width - first.left, row.bottom)
                for text, row in ((MENU_LAUNCH, first), (MENU_LEGACY_MODE, second), (MENU_QUIT, last))}

    def click_menu_row(self, menu, text):
        """Clicks a row of an open Menu once no other window, such as the icon's tooltip, covers it."""
        if text not in menu.rows:
            raise LabError(f"the menu has no row '{text}': {list(menu.rows)}")
        self.click_window(*centre(menu.rows[text]), menu.window.handle)

    def menu_row_ticked(self, menu, text):
        """Whether a row of an open Menu has a tick in its left column, which is empty otherwise."""
        picture = wait_until_settled(lambda: self.menu_drawn(menu.window), "the tray menu's picture")
        row = menu.rows[text]
        left, top = row.left - menu.window.left, row.top - menu.window.top
        return picture.crop(left, top, left + row.bottom - row.top, top + row.bottom - row.top).colours() > 1

    def close_menu(self):
        """Closes the tray menu without a choice and waits until it is closed."""
        self.input.click(*NOWHERE)
        self.wait_for_menu_end()

    def wait_for_menu_end(self):
        wait_until(lambda: not self.menu_window(), "the tray menu to close", state=self.windows)
