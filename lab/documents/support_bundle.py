"""docs/support-bundle.md: what the support report is, and one of a machine with a monitor and a built-in panel."""

import re
import socket

from ambrel_lab import LabError
from ambrel_lab.hardware import Monitor, Panel
from ambrel_lab.places import ROOT
from demonstration.stage import CARD, EVENING, GEAR, LAUNCH_ROW, Stage
from demonstration.support import copy_report

WINDOWS_KEY = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"
BIOS_KEY = "HKLM\\HARDWARE\\DESCRIPTION\\System\\BIOS"
# What would otherwise be of the computer that runs the lab, and what Wine leaves empty. The system's place is a value
# that every start of the lab reads anew; the hardware's exists only while it runs.
SYSTEM = ((WINDOWS_KEY, "ProductName", "Windows 10 Pro"), (WINDOWS_KEY, "DisplayVersion", "23H2"),
          (WINDOWS_KEY, "UBR", 3007), (WINDOWS_KEY, "CurrentBuildNumber", "22631"),
          ("HKLM\\SOFTWARE\\Microsoft\\Cryptography", "MachineGuid", "01234567-89ab-cdef-0123-456789abcdef"))
HARDWARE = ((BIOS_KEY, "SystemManufacturer", "Lab Works"), (BIOS_KEY, "SystemProductName", "Bench 7"),
            ("HKLM\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", "ProcessorNameString", "Lab Processor 9000"))
# What differs from one making to the next though nothing has changed.
TIMES = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d|\d\d:\d\d:\d\d\.\d{3}|(?<=uptime: )\d+s")
LOCKED = "PWM-safe: 2 display(s) confirmed locked at 100%"

TEXT = """\
# The support report

When something does not work, the program can tell support what it knows. Open the popup, click the gear, and click
COPY FEEDBACK FOR SUPPORT. For five seconds the button says COPIED. Then open a new e-mail to support@ambrel.example,
paste, write what happens above the line that says so, and send it. The second line of the text is meant as the subject.

Nothing is sent by the program, and no file is made of the report: what you paste is all there is. Read it first, and take
out what you would rather keep to yourself: the paths in it, those in the two logs too, may hold your user name.

| Section | What it holds |
|---|---|
| APP | the program's version, the time, how long it has been running |
| SYSTEM | the edition and build of Windows, the computer's model, processor and memory, language, time zone, scaling |
| DISPLAYS | each display's name and mode, whether it takes commands over DDC/CI, and its brightness then; the graphics adapters |
| FILTER STATE | warmth and brightness as they are set, and the way they are put on the screen |
| PWM-SAFE MODE | how many displays are at 100%, and the brightness that each had before the lock |
| SETTINGS | the switches, the autostart entry, and where the settings are kept |
| EVENT LOG | what the program has noted since it was started, at most 500 lines |
| PERSISTED LOG | the last 40 lines of `events.log`, which may be of earlier runs |

The sixteen digits in the subject let support recognise reports of the same computer. They are computed from the number
that Windows gave it when it was set up; they name nobody.

When another program holds the clipboard at that moment, the button does not say COPIED: click again.

## One of them

Made in the lab by `./run.sh --pictures`, with a monitor and a built-in panel that it simulates.

```text
{report}```
"""


def prepare(lab):
    for key, name, value in SYSTEM:
        lab.registry_set(key, name, value)
    lab.hardware.monitors([Monitor("desk", 40, description="Desk monitor")])
    lab.hardware.panels([Panel("laptop", 60, instance="DISPLAY\\LAB0001\\4&1a2b3c4d&0&UID1_0")])
    lab.desktop.open()
    for key, name, value in HARDWARE:
        lab.registry_set(key, name, value)


def use(stage):
    """An evening's use of the program."""
    stage.start()
    stage.lab.click_unit(*EVENING)
    stage.see("EVENING is saved", lambda: stage.setting_is("Brightness", "850"))
    stage.lab.click_unit(*CARD)
    stage.see("both displays are locked", lambda: stage.log_has(LOCKED))
    stage.lab.click_unit(*GEAR)
    stage.lab.click_unit(*LAUNCH_ROW)
    stage.see("the program starts with Windows", lambda: stage.setting_is("LaunchAtStart", "1"))


def check(lab, text):
    """Raises LabError when the text would publish something of the computer that runs the lab."""
    found = [word for word in (socket.gethostname(), str(lab.folder), str(lab.build_dir), "/home/", "Z:\\")
             if re.search(rf"(?<!\w){re.escape(word)}(?!\w)", text)]
    if found:
        raise LabError(f"the report names this computer's {', '.join(found)}")


def newer(content, file):
    """The content, or that of the file when only the times in it are others."""
    old = file.read_text(encoding="utf-8") if file.exists() else ""
    return old if TIMES.sub("", old) == TIMES.sub("", content) else content


def make(lab):
    prepare(lab)
    stage = Stage(lab, None)
    use(stage)
    text = copy_report(stage).replace("\r\n", "\n")
    stage.quit()
    check(lab, text)
    content = newer(TEXT.replace("{report}", text), ROOT / "docs" / "support-bundle.md")
    return {"support-bundle.md": content.encode()}
