"""Other parts of Windows in a lab: registry, clipboard, message boxes, display modes, sessions. Mixed into Lab."""

from collections import namedtuple
from contextlib import contextmanager

from .desktop import NOT_FOUND, OK, ToolError
from .prefix import append_registry
from .waiting import TIMEOUT, wait_until

MessageBox = namedtuple("MessageBox", "handle title text buttons owner process")
Window = namedtuple("Window", "handle window_class title left top right bottom process")


class WindowsActions:
    """Needs `prefix` and `desktop` of Lab. Registry keys look like "HKCU\\\\Software\\\\X" or "HKLM\\\\...".
    Values are str (REG_SZ), int (REG_DWORD), bytes (REG_BINARY) or (type number, bytes)."""

    def registry_get(self, key, name):
        """The value, or None if it does not exist."""
        result, found = self.desktop.tool("registry-get", key, name)
        if result == NOT_FOUND:
            return None
        data = bytes.fromhex(found["hex"])
        if found["type"] in (1, 2):
            return data.decode("utf-16-le").rstrip("\0")
        return found["value"] if found["type"] == 4 else data if found["type"] == 3 else (found["type"], data)

    def registry_set(self, key, name, value):
        """Sets a value. Before the desktop has started it is written to the prefix's files, without starting Wine."""
        if not self.desktop.started():
            append_registry(self.prefix.folder, key, {name: value})
        elif isinstance(value, str):
            self.desktop.request("registry-set", key, name, "sz", value)
        elif isinstance(value, int):
            self.desktop.request("registry-set", key, name, "dword", value)
        else:
            kind, data = value if isinstance(value, tuple) else (3, value)
            self.desktop.request("registry-set", key, name, f"hex:{kind}", data.hex())

    def registry_delete(self, key, name=None):
        """Deletes a value, or the key if no name is given. Returns False if it did not exist."""
        return self.desktop.tool("registry-delete", key, *([] if name is None else [name]))[0] == OK

    def clipboard_text(self):
        """The clipboard's text, or None if it contains none."""
        result, text = self.desktop.tool("clipboard-get")
        if result not in (OK, NOT_FOUND):
            raise ToolError("the clipboard could not be opened")
        return text if result == OK else None

    def set_clipboard_text(self, text):
        self.desktop.request("clipboard-set", text)

    @contextmanager
    def clipboard_held(self):
        """Context in which another program keeps the clipboard open."""
        holder = self.desktop.start_tool("clipboard-hold")
        try:
            yield
        finally:
            holder.kill()
            holder.wait()

    @contextmanager
    def mutex_held(self, name):
        """Context in which another program owns the mutex of this name."""
        holder = self.desktop.start_tool("mutex-hold", name)
        try:
            yield
        finally:
            holder.kill()
            holder.wait()
            wait_until(lambda: self.desktop.tool("mutex", name)[0] == NOT_FOUND, f"the end of the mutex {name}",
                       state=lambda: self.desktop.tool("mutex", name))

    @contextmanager
    def other_window(self):
        """Context in which another program's window (class LabOtherWindow, 400 x 300 at 100,100) has taken the
        foreground. Yields its process."""
        child = self.desktop.start_tool("foreground")
        try:
            yield child
        finally:
            child.kill()
            child.wait()
            wait_until(lambda: not self.desktop.facts("window", "LabOtherWindow"), "the other window to disappear",
                       state=self.windows)

    def windows(self):
        """Every visible top-level window, topmost first."""
        return [Window(**row) for row in self.desktop.rows("windows")]

    def message_boxes(self):
        """Every visible message box; `buttons` is {id: caption}."""
        boxes = []
        for row in self.desktop.rows("boxes"):
            row["buttons"] = {button["id"]: button["caption"] for button in row["buttons"]}
            boxes.append(MessageBox(**row))
        return boxes

    def wait_for_message_box(self, timeout=TIMEOUT):
        return wait_until(self.message_boxes, "a message box", timeout, state=self.windows)[0]

    def press_button(self, box, number=None):
        """Presses a button of a message box (the first one if no id is given) and waits until the box is closed."""
        self.desktop.request("press", box.handle, number or next(iter(box.buttons)))
        wait_until(lambda: box.handle not in [other.handle for other in self.message_boxes()],
                   "the message box to close", state=self.message_boxes)

    def change_mode(self, width, height):
        """Changes the desktop's resolution, which sends WM_DISPLAYCHANGE."""
        self.desktop.request("mode", width, height)

    def metrics(self):
        """width, height, work_left, work_top, work_right, work_bottom, dpi, cursor_x, cursor_y."""
        return self.desktop.facts("metrics")

    def measure_text(self, face, height, weight, text):
        """face, weight, width, height and first_glyph (-1: not in the font) of a text that GDI draws at 96 DPI."""
        return self.desktop.facts("measure", face, height, weight, text)

    def sign_in(self):
        """Starts the programs of the Run keys, as signing in to Windows does."""
        self.desktop.run(["wineboot"], timeout=4 * TIMEOUT)

    def end_session(self):
        """Ends the session: WM_QUERYENDSESSION, WM_ENDSESSION, then termination of every program with windows."""
        # Without --shutdown Wine signs in again immediately and starts the programs of the Run keys.
        self.desktop.run(["wineboot", "--end-session", "--shutdown"], timeout=4 * TIMEOUT)
