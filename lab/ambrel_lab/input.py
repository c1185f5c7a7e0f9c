"""Simulated mouse and keyboard input on a lab's screen, through the X server's XTEST extension."""

import ctypes
import time

from .paths import LabError

# Seconds between two actions of a user.
SETTLE = 0.02
DRAG_STEP = 0.01
MODIFIERS = {"alt": "Alt_L", "ctrl": "Control_L", "shift": "Shift_L"}


def load_library(x11):
    xtest = ctypes.CDLL("libXtst.so.6")
    xtest.XTestFakeMotionEvent.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.c_int, ctypes.c_int, ctypes.c_ulong]
    xtest.XTestFakeButtonEvent.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.c_int, ctypes.c_ulong]
    xtest.XTestFakeKeyEvent.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.c_int, ctypes.c_ulong]
    x11.XStringToKeysym.restype = ctypes.c_ulong
    x11.XStringToKeysym.argtypes = [ctypes.c_char_p]
    x11.XKeysymToKeycode.restype = ctypes.c_ubyte
    x11.XKeysymToKeycode.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
    number = ctypes.POINTER(ctypes.c_int)
    window, mask = ctypes.POINTER(ctypes.c_ulong), ctypes.POINTER(ctypes.c_uint)
    x11.XQueryPointer.argtypes = [ctypes.c_void_p, ctypes.c_ulong, window, window, number, number, number, number, mask]
    return xtest


class Input:
    """All positions are screen pixels. Every call returns after the X server has processed the event."""

    def __init__(self, connection):
        self.connection, self.x11 = connection, connection.x11
        self.xtest = load_library(self.x11)
        self.held = set()

    def _send(self, call, *arguments):
        if not call(self.connection.handle, *arguments, 0):
            raise LabError("the X server accepted no input")
        self.x11.XSync(self.connection.handle, 0)

    def position(self):
        """(x, y) of the mouse pointer."""
        window, number, mask = ctypes.c_ulong(), ctypes.c_int(), ctypes.c_uint()
        x, y = ctypes.c_int(), ctypes.c_int()
        self.x11.XQueryPointer(self.connection.handle, self.connection.root, window, window, x, y, number, number, mask)
        return x.value, y.value

    def _move_pointer(self, x, y):
        self._send(self.xtest.XTestFakeMotionEvent, self.connection.screen, round(x), round(y))

    def _button(self, button, down):
        self._send(self.xtest.XTestFakeButtonEvent, button, down)
        (self.held.add if down else self.held.discard)(button)

    def move(self, x, y):
        self._move_pointer(x, y)
        time.sleep(SETTLE)

    def press(self, x, y, button=1):
        self.move(x, y)
        self.press_here(button)

    def press_here(self, button=1):
        """Presses a button at the pointer's position, immediately."""
        self._button(button, True)
        time.sleep(SETTLE)

    def release(self, button=1):
        self._button(button, False)

    def release_all(self):
        """Releases every button that is still pressed."""
        for button in list(self.held):
            self.release(button)

    def click(self, x, y, button=1):
        self.press(x, y, button)
        self.release(button)

    def click_repeatedly(self, x, y, times, interval):
        """Clicks `times` times at one position, `interval` seconds apart."""
        self.move(x, y)
        for _ in range(times):
            self._button(1, True)
            self._button(1, False)
            time.sleep(interval)

    def drag(self, x0, y0, x1, y1, steps=10, button=1, release=True):
        """Presses at the first position and moves to the second in `steps` equal moves of 10 ms each."""
        self.press(x0, y0, button)
        for step in range(1, steps + 1):
            part = step / steps
            self._move_pointer(x0 + (x1 - x0) * part, y0 + (y1 - y0) * part)
            time.sleep(DRAG_STEP)
        time.sleep(SETTLE)
        if release:
            self.release(button)

    def key(self, combination):
        """Presses and releases keys, such as "alt+F4", "Escape", "Return"."""
        codes = [self._keycode(MODIFIERS.get(name, name)) for name in combination.split("+")]
        for code in codes:
            self._send(self.xtest.XTestFakeKeyEvent, code, True)
        for code in reversed(codes):
            self._send(self.xtest.XTestFakeKeyEvent, code, False)

    def _keycode(self, name):
        code = self.x11.XKeysymToKeycode(self.connection.handle, self.x11.XStringToKeysym(name.encode()))
        if not code:
            raise LabError(f"the keyboard has no key {name}")
        return code
