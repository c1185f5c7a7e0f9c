"""The support report: pressing its button, the text that can be pasted then, and the machine that it tells of."""

import calendar
import os
import re
import time

from ambrel_lab.layout import SUPPORT, SUPPORT_COPIED as COPIED, SUPPORT_NORMAL as NORMAL, SUPPORT_SURFACE as SURFACE

from desk import LIMIT, wait_for_value, wait_until
from panels import show_settings

COPIED_LINE = re.compile(r"Support bundle copied to clipboard \((\d+) chars\)")
FAILED_LINE = "Support bundle copy failed"
BEFORE = "what was on the clipboard before"
STAMP = re.compile(r"\[\d\d:\d\d:\d\d\.\d{3}\] ")
HEADING = re.compile(r"^=== ([A-Z-]+(?: [A-Z-]+)*)(?: \([^)]*\))? ===\r\n", re.MULTILINE)

WINDOWS_KEY = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"
BIOS_KEY = "HKLM\\HARDWARE\\DESCRIPTION\\System\\BIOS"
# Where Windows keeps what the report tells of the machine. Wine takes the version that it reports from there too.
PLACES = {name: (WINDOWS_KEY, name) for name in ("ProductName", "DisplayVersion", "UBR", "CurrentBuildNumber")} | {
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
    """What the lab's machine says of itself. A program that is to be told a build number starts afterwards."""

    def __init__(self, desk):
        self.desk = desk
        self.original = {name: desk.registry_get(*place) for name, place in PLACES.items()}

    def set(self, **values):
        """Each value in its place; None takes it away."""
        for name, value in values.items():
            if value is None:
                self.desk.registry_delete(*PLACES[name])
            else:
                self.desk.registry_set(*PLACES[name], value)

    def restore(self):
        self.set(**self.original)


class Report:
    """One pasted text, and the seconds since 1970 between which it was made."""

    def __init__(self, text, since, until):
        self.text, self.since, self.until = text, int(since), int(until)

    def sections(self):
        """{heading without what stands in brackets: its lines up to the blank line that ends it}."""
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
        """What follows a label, padding included in the label; None without such a line."""
        lines = [line for line in self.section(section) if line.startswith(label)]
        assert len(lines) <= 1
        return lines[0][len(label):] if lines else None

    def now(self):
        """The time that it tells, which must be when it was made."""
        told = self.value("APP", "Now:            ")
        assert re.fullmatch(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", told)
        # The lab's time zone is that of Greenwich.
        assert self.since <= calendar.timegm(time.strptime(told, "%Y-%m-%d %H:%M:%S")) <= self.until
        return told


def copies(desk):
    return [line for line in desk.log() if COPIED_LINE.fullmatch(line)]


def failures(desk):
    return desk.log().count(FAILED_LINE)


def look(desk):
    """How the support button looks: "normal", "copied", or None when it is not to be seen."""
    return {NORMAL: "normal", COPIED: "copied"}.get(desk.popup_picture().pixel(*SURFACE))


def wait_for_look(desk, wanted, limit=LIMIT):
    wait_for_value(lambda: look(desk), wanted, "the look of the support button", limit)


def press(desk):
    """A click on the support button, in the settings panel, which it opens first when need be."""
    show_settings(desk)
    desk.click_unit(*SUPPORT)


def copy(desk):
    """Copies the report by a click and takes it from the clipboard. The clipboard is not looked at before the program
    says that it is done: looking keeps it open."""
    desk.set_clipboard_text(BEFORE)
    show_settings(desk)
    told, since = len(copies(desk)), time.time()
    desk.click_unit(*SUPPORT)
    wait_until(lambda: len(copies(desk)) > told, "the line that the report was copied", actual=desk.log)
    return Report(desk.clipboard_text(), since, time.time())


def copy_untold(desk):
    """The same where there is no events.log to look at: the button's look tells that it is done."""
    desk.set_clipboard_text(BEFORE)
    show_settings(desk)
    wait_for_look(desk, "normal")
    since = time.time()
    desk.click_unit(*SUPPORT)
    wait_for_look(desk, "copied")
    return Report(desk.clipboard_text(), since, time.time())


def messages(lines):
    """Lines of the log without their stamps, which each must have."""
    assert all(STAMP.match(line) for line in lines)
    return [STAMP.sub("", line, count=1) for line in lines]


def processors():
    return os.sysconf("SC_NPROCESSORS_ONLN")


def memory():
    return f"{os.sysconf('SC_PHYS_PAGES') * os.sysconf('SC_PAGE_SIZE') / 1073741824:.1f} GB"


def utf_16_length(text):
    return len(text.encode("utf-16-le")) // 2


def fnv_1a(data):
    """Fowler, Noll and Vo's hash of 64 bits, the variant that multiplies last."""
    number = 0xCBF29CE484222325
    for byte in data:
        number = (number ^ byte) * 0x100000001B3 % 2**64
    return number
