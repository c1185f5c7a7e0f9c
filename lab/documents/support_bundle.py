"""Generates the sample report in docs/support-bundle.md, for a machine with a monitor and a built-in panel."""

import re
import socket

from ambrel_lab import LabError
from ambrel_lab.hardware import Monitor, Panel
from ambrel_lab.layout import CARD, GEAR, PRESETS, SETTINGS_ROWS
from ambrel_lab.paths import ROOT
from demonstration.stage import Stage
from demonstration.support import copy_report
from documents.text_block import text_block, with_text_block

WINDOWS_KEY = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"
BIOS_KEY = "HKLM\\HARDWARE\\DESCRIPTION\\System\\BIOS"
# Values that Wine leaves empty or takes from the computer that runs the lab. The keys of SYSTEM exist in the prefix;
# those of HARDWARE are volatile and exist only while Wine runs.
SYSTEM = ((WINDOWS_KEY, "ProductName", "Windows 10 Pro"), (WINDOWS_KEY, "DisplayVersion", "23H2"),
          (WINDOWS_KEY, "UBR", 3007), (WINDOWS_KEY, "CurrentBuildNumber", "22631"),
          ("HKLM\\SOFTWARE\\Microsoft\\Cryptography", "MachineGuid", "01234567-89ab-cdef-0123-456789abcdef"))
HARDWARE = ((BIOS_KEY, "SystemManufacturer", "Lab Works"), (BIOS_KEY, "SystemProductName", "Bench 7"),
            ("HKLM\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", "ProcessorNameString", "Lab Processor 9000"))
# The parts of a report that differ between two runs of the same program.
TIMES = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d|\d\d:\d\d:\d\d\.\d{3}|(?<=uptime: )\d+s")
LOCKED = "PWM-safe: 2 display(s) confirmed locked at 100%"

# Only the block of that page is generated.
PAGE = ROOT / "docs" / "support-bundle.md"


def prepare(lab):
    for key, name, value in SYSTEM:
        lab.registry_set(key, name, value)
    lab.hardware.monitors([Monitor("desk", 40, description="Desk monitor")])
    lab.hardware.panels([Panel("laptop", 60, instance="DISPLAY\\LAB0001\\4&1a2b3c4d&0&UID1_0")])
    lab.desktop.open()
    for key, name, value in HARDWARE:
        lab.registry_set(key, name, value)


def use(stage):
    """Uses most of what the report covers: a preset, the lock, a setting."""
    stage.start()
    stage.lab.click_unit(*PRESETS["EVENING"])
    stage.expect("EVENING is saved", lambda: stage.setting_is("Brightness", "850"))
    stage.lab.click_unit(*CARD)
    stage.expect("both displays are locked", lambda: stage.log_has(LOCKED))
    stage.lab.click_unit(*GEAR)
    stage.lab.click_unit(*SETTINGS_ROWS["LAUNCH AT STARTUP"])
    stage.expect("LAUNCH AT STARTUP is on", lambda: stage.setting_is("LaunchAtStart", "1"))


def check(lab, text):
    """Raises LabError if the report identifies the computer that runs the lab."""
    found = [word for word in (socket.gethostname(), str(lab.folder), str(lab.build_dir), "/home/", "Z:\\")
             if re.search(rf"(?<!\w){re.escape(word)}(?!\w)", text)]
    if found:
        raise LabError(f"the report contains {', '.join(found)}")


def replace_report(page, report):
    """The page with a new report. A report that differs only in its times leaves the page unchanged."""
    old = text_block(page, PAGE.relative_to(ROOT))
    if TIMES.sub("", old) == TIMES.sub("", report):
        return page
    return with_text_block(page, report)


def generate(lab):
    prepare(lab)
    stage = Stage(lab, None)
    use(stage)
    text = copy_report(stage).replace("\r\n", "\n")
    stage.quit()
    check(lab, text)
    return {PAGE.name: replace_report(PAGE.read_text(encoding="utf-8"), text).encode()}
