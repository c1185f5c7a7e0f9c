"""A connection to an X screen through ctypes and the X libraries: its pixels and its gamma ramp."""

import ctypes
import ctypes.util

from .paths import LabError

ALL_PLANES = 0xFFFFFFFFFFFFFFFF
Z_PIXMAP = 2
STEPS = 256  # Entries per channel of the lab's own screen.


class XImage(ctypes.Structure):
    """The leading fields of Xlib's XImage."""

    _fields_ = [(name, ctypes.c_int) for name in ("width", "height", "xoffset", "format")]
    _fields_ += [("data", ctypes.POINTER(ctypes.c_char))]
    _fields_ += [(name, ctypes.c_int) for name in ("byte_order", "bitmap_unit", "bitmap_bit_order", "bitmap_pad",
                                                   "depth", "bytes_per_line", "bits_per_pixel")]


ExitHandler = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_void_p)
ErrorHandler = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)


@ExitHandler
def stay_alive(_display, _data):
    """Replaces Xlib's handler, which ends the process when the screen is lost. Calls then fail instead."""


@ErrorHandler
def ignore_error(_display, _event):
    """Replaces Xlib's handler, which ends the process. The failed call returns 0 or null instead."""
    return 0


def load_libraries():
    x11, vidmode = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXxf86vm.so.1")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    x11.XDefaultRootWindow.restype = ctypes.c_ulong
    x11.XDefaultRootWindow.argtypes = x11.XCloseDisplay.argtypes = [ctypes.c_void_p]
    x11.XSync.argtypes = x11.XDefaultScreen.argtypes = [ctypes.c_void_p, ctypes.c_int]
    x11.XDefaultScreen.argtypes = [ctypes.c_void_p]
    x11.XDisplayWidth.argtypes = x11.XDisplayHeight.argtypes = [ctypes.c_void_p, ctypes.c_int]
    x11.XGetImage.restype = ctypes.POINTER(XImage)
    x11.XGetImage.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_int, ctypes.c_uint,
                              ctypes.c_uint, ctypes.c_ulong, ctypes.c_int]
    x11.XDestroyImage.argtypes = [ctypes.POINTER(XImage)]
    x11.XSetIOErrorExitHandler.argtypes = [ctypes.c_void_p, ExitHandler, ctypes.c_void_p]
    x11.XSetErrorHandler.restype = ctypes.c_void_p
    x11.XSetErrorHandler.argtypes = [ErrorHandler]
    ramp = ctypes.POINTER(ctypes.c_ushort)
    vidmode.XF86VidModeGetGammaRampSize.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.POINTER(ctypes.c_int)]
    for call in (vidmode.XF86VidModeGetGammaRamp, vidmode.XF86VidModeSetGammaRamp):
        call.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.c_int, ramp, ramp, ramp]
    return x11, vidmode


class Connection:
    """An open display. Close it before its X server ends."""

    def __init__(self, display):
        """Raises LabError if there is no connection to `display` (such as ":3")."""
        self.x11, self.vidmode = load_libraries()
        self._handle = self.x11.XOpenDisplay(display.encode())
        if not self._handle:
            raise LabError(f"no X server answers on {display}")
        self.x11.XSetIOErrorExitHandler(self.handle, stay_alive, None)
        self.x11.XSetErrorHandler(ignore_error)
        self.screen = self.x11.XDefaultScreen(self.handle)
        self.root = self.x11.XDefaultRootWindow(self.handle)
        self.width = self.x11.XDisplayWidth(self.handle, self.screen)
        self.height = self.x11.XDisplayHeight(self.handle, self.screen)

    @property
    def handle(self):
        """The open display, for calls of the X libraries, which crash without one. Raises LabError after close()."""
        if not self._handle:
            raise LabError("the connection to the X server is closed")
        return self._handle

    def close(self):
        if self._handle:
            self.x11.XCloseDisplay(self._handle)
            self._handle = None

    def picture(self, left=0, top=0, width=None, height=None):
        """The pixels of the screen or of a rectangle clipped to it, without the gamma ramp and the pointer."""
        # Imported here, because a process that only reads ramps starts faster without Pillow.
        from .picture import Picture
        right = min(self.width, left + width) if width else self.width
        bottom = min(self.height, top + height) if height else self.height
        left, top = max(0, left), max(0, top)
        if right <= left or bottom <= top:
            raise LabError("the rectangle is outside the screen")
        image = self.x11.XGetImage(self.handle, self.root, left, top, right - left, bottom - top, ALL_PLANES, Z_PIXMAP)
        if not image:
            raise LabError("the X server returned no picture")
        try:
            facts = image.contents
            raw = ctypes.string_at(facts.data, facts.bytes_per_line * facts.height)
            return Picture.from_bgrx(facts.width, facts.height, raw)
        finally:
            self.x11.XDestroyImage(image)

    def ramp_size(self):
        """Entries per channel: 256 on the lab's screen, more on some displays, 0 on a display without a gamma ramp."""
        size = ctypes.c_int()
        known = self.vidmode.XF86VidModeGetGammaRampSize(self.handle, self.screen, ctypes.byref(size))
        return size.value if known else 0

    def ramp(self):
        """The current gamma ramp: three lists (red, green, blue) of numbers from 0 to 65535.

        The lab's screen keeps 8 bits of each value, so a ramp reads back within 256 of the one that was set.
        """
        size = self.ramp_size()
        channels = [(ctypes.c_ushort * size)() for _ in range(3)]
        if not size or not self.vidmode.XF86VidModeGetGammaRamp(self.handle, self.screen, size, *channels):
            raise LabError("the screen has no gamma ramp")
        return [list(channel) for channel in channels]

    def set_ramp(self, ramp):
        """Loads a gamma ramp: three lists as returned by ramp()."""
        size = len(ramp[0])
        channels = [(ctypes.c_ushort * size)(*channel) for channel in ramp]
        accepted = self.vidmode.XF86VidModeSetGammaRamp(self.handle, self.screen, size, *channels)
        self.x11.XSync(self.handle, 0)
        if not accepted:
            raise LabError("the screen refused the gamma ramp")


def identity_ramp():
    return [[step * 257 for step in range(STEPS)] for _ in range(3)]
