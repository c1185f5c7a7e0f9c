"""The support report: its button, the copied text, and the machine that it describes."""

import calendar
import os
import re
import time

from ambrel_lab.layout import SUPPORT, SUPPORT_COPIED as COPIED, SUPPORT_NORMAL as NORMAL, SUPPORT_SURFACE as SURFACE

from desk import ATTEMPTS, TIMEOUT, LabError, wait_for_value, wait_until
from panels import show_settings

WM_LBUTTONDOWN = 0x201
COPIED_LINE = re.compile(r"Support bundle copied to clipboard \((\d+) chars\)")
FAILED_LINE = "Support bundle copy failed"
BEFORE = "what was on the clipboard before"
STAMP = re.compile(r"\[\d\d:\d\d:\d\d\.\d{3}\] ")
COPIED_DURATION = 5.0  # seconds
HEADING = re.compile(r"^=== ([A-Z-]+(?: [A-Z-]+)*)(?: \([^)]*\))? ===\r\n", re.MULTILINE)

WINDOWS_KEY = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"
BIOS_KEY = "HKLM\\HARDWARE\\DESCRIPTION\\System\\BIOS"
# Registry values from which the report describes the machine. Wine reports its Windows version from there too.
REGISTRY_VALUES = {
    **{name: (WINDOWS_KEY, name) for name in ("ProductName", "DisplayVersion", "UBR", "CurrentBuildNumber")},
    "SystemManufacturer": (BIOS_KEY, "SystemManufacturer"),
    "SystemProductName": (BIOS_KEY, "SystemProductName"),
    "ProcessorNameString": ("HKLM\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", "ProcessorNameString"),
    "MachineGuid": ("HKLM\\SOFTWARE\\Microsoft\\Cryptography", "MachineGuid"),
}
LAB_MACHINE = {
    "ProductName": "Windows 10 Pro", "DisplayVersion": "23H2", "UBR": 3007, "CurrentBuildNumber": "22631",
    "SystemManufacturer": "Lab Works", "SystemProductName": "Bench 7", "ProcessorNameString": "Lab Processor 9000",
    "MachineGuid": "01234567-89ab-cdef-0123-456789abcdef",
}
LAB_TAG = "16ba809b973dd525"


class Machine:
    """The description of the lab's machine in the registry. A program reads the build number at its start."""

    def __init__(self, desk):
        self.desk = desk
        self.original = {name: desk.registry_get(*key) for name, key in REGISTRY_VALUES.items()}

    def set(self, **values):
        """Sets values by name; None deletes a value."""
        for name, value in values.items():
            if value is None:
                self.desk.registry_delete(*REGISTRY_VALUES[name])
            else:
                self.desk.registry_set(*REGISTRY_VALUES[name], value)

    def restore(self):
        self.set(**self.original)


class Report:
    """A report's text, and the times (seconds since 1970) between which it was generated."""

    def __init__(self, text, since, until):
        self.text, self.since, self.until = text, int(since), int(until)

    def sections(self):
        """{heading without the part in brackets: the section's lines}. A blank line ends each section."""
        assert "\n" not in self.text.replace("\r\n", "") and "\r" not in self.text.replace("\r\n", "")
        pieces = HEADING.split(self.text)[1:]
        found = {}
        for name, body in zip(pieces[::2], pieces[1::2]):
            if name == "END DIAGNOSTICS":
                assert body == ""
                continue
            assert name not in found and body.endswith("\r\n\r\n"), name
            found[name] = body[:-4].split("\r\n")
        return found

    def section(self, name):
        return self.sections()[name]

    def value(self, section, label):
        """The text after a label, which includes its padding; None if there is no such line."""
        lines = [line for line in self.section(section) if line.startswith(label)]
        assert len(lines) <= 1
        return lines[0][len(label):] if lines else None

    def now(self):
        """The time in the report. Asserts that the report was generated then."""
        stated = self.value("APP", "Now:            ")
        assert re.fullmatch(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", stated)
        # The lab's time zone is UTC.
        assert self.since <= calendar.timegm(time.strptime(stated, "%Y-%m-%d %H:%M:%S")) <= self.until
        return stated


def copies(desk):
    return [line for line in desk.log() if COPIED_LINE.fullmatch(line)]


def failures(desk):
    return desk.log().count(FAILED_LINE)


def button_state(desk):
    """The state that the support button shows: "normal", "copied", or None if it is not visible."""
    return {NORMAL: "normal", COPIED: "copied"}.get(desk.popup_picture().pixel(*SURFACE))


def wait_for_button_state(desk, wanted, timeout=TIMEOUT):
    wait_for_value(lambda: button_state(desk), wanted, "the state of the support button", timeout)


def press(desk):
    """Clicks the support button. Opens the settings panel first if necessary."""
    show_settings(desk)
    desk.click_unit(*SUPPORT)


def copy(desk):
    """Copies the report with a click and reads it from the clipboard. Reading starts only after the program has logged
    the copy, because a reader keeps the clipboard open."""
    desk.set_clipboard_text(BEFORE)
    show_settings(desk)
    logged, since = len(copies(desk)), time.time()
    desk.click_unit(*SUPPORT)
    wait_until(lambda: len(copies(desk)) > logged, "the line that the report was copied", state=desk.log)
    return Report(desk.clipboard_text(), since, time.time())


def copy_by_message(desk):
    """Presses the support button of the open settings panel with one message. The report is on the clipboard when this
    returns."""
    desk.send_message(WM_LBUTTONDOWN, 1, SUPPORT[0] | SUPPORT[1] << 16)


def copy_without_log(desk):
    """Like copy(), but without an events.log: waits for the state of the button, and repeats the copy if a busy machine
    has missed that."""
    desk.set_clipboard_text(BEFORE)
    show_settings(desk)
    for _ in range(ATTEMPTS):
        wait_for_button_state(desk, "normal")
        since, pressed = time.time(), time.monotonic()
        desk.click_unit(*SUPPORT)
        if copied_is_seen(desk, pressed):
            return Report(desk.clipboard_text(), since, time.time())
    raise LabError(f"the indication ended too early in each of {ATTEMPTS} attempts")


def copied_is_seen(desk, pressed):
    """Waits for the copied indication of a press at the time `pressed` (time.monotonic()). False if it has ended before
    a look at the button."""
    def seen_or_ended():
        shown = button_state(desk)
        return "ended" if time.monotonic() - pressed >= COPIED_DURATION else shown == "copied" and "seen"
    return wait_until(seen_or_ended, "the copied indication", state=lambda: button_state(desk)) == "seen"


def while_copied(desk, act):
    """Copies the report, and returns the result of act(report), which is called while the button shows the copied
    indication. Repeats both until act() ends before the indication does, which a busy machine can prevent."""
    for _ in range(ATTEMPTS):
        show_settings(desk)
        wait_for_button_state(desk, "normal")
        pressed = time.monotonic()
        report = copy(desk)
        if copied_is_seen(desk, pressed):
            result = act(report)
            if time.monotonic() - pressed < COPIED_DURATION:
                return result
    raise LabError(f"the indication ended too early in each of {ATTEMPTS} attempts")


def messages(lines):
    """Lines of the log without their time stamps. Asserts that each line has one."""
    assert all(STAMP.match(line) for line in lines)
    return [STAMP.sub("", line, count=1) for line in lines]


def processors():
    return os.sysconf("SC_NPROCESSORS_ONLN")


def memory():
    return f"{os.sysconf('SC_PHYS_PAGES') * os.sysconf('SC_PAGE_SIZE') / 1073741824:.1f} GB"


def utf_16_length(text):
    return len(text.encode("utf-16-le")) // 2


def fnv_1a(data):
    """The 64-bit FNV-1a hash (Fowler, Noll and Vo)."""
    number = 0xCBF29CE484222325
    for byte in data:
        number = (number ^ byte) * 0x100000001B3 % 2**64
    return number
