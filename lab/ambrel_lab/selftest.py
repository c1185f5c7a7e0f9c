"""Checks of the lab itself, without the program: run by lab.py selftest."""

import json
import os
import shutil
import signal
import subprocess
import sys
import time
import traceback
from pathlib import Path

from .desktop import TOOL
from .evidence import save_evidence
from .hardware_selftest import hardware_checks
from .lab import Lab
from .paths import FAILURES, STATE
from .processes import describe_processes
from .waiting import TIMEOUT, wait_for_value, wait_until
from .x11 import identity_ramp

LONGEST_LINE = "\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%"
LONGEST_LINE_UNITS = 276
TOLERANCE = 256

# The evidence of each failed check is saved in a folder of its name.
EVIDENCE = FAILURES / "selftest"

# A lab in a separate process, which a check kills while everything runs.
LAB_PROCESS = """
import sys, time
from ambrel_lab import Lab
with Lab(sys.argv[1]) as lab:
    lab.metrics()
    print(lab.folder, flush=True)
    time.sleep(60)
"""


def still_alive(folder):
    """Processes whose environment or command line names the run's folder."""
    mark, found = str(folder).encode(), []
    for name in os.listdir("/proc"):
        if name.isdigit() and int(name) != os.getpid():
            for file in ("environ", "cmdline"):
                try:
                    if mark in Path("/proc", name, file).read_bytes():
                        found.append(int(name))
                except OSError:
                    pass
    return found


def close_enough(actual, expected):
    return abs(actual - expected) <= TOLERANCE


def check_fonts(lab):
    for weight in (700, 900):
        line = lab.measure_text("Segoe UI", 12, weight, LONGEST_LINE)
        assert line["face"] == "Segoe UI" and line["weight"] == 700, line
        assert line["first_glyph"] >= 0 and line["width"] <= LONGEST_LINE_UNITS, line
    assert lab.measure_text("Segoe UI", 12, 400, LONGEST_LINE)["weight"] == 400
    assert lab.measure_text("Segoe MDL2 Assets", 18, 400, "\ue713")["first_glyph"] >= 0
    narrow, wide = (lab.measure_text("Consolas", 12, 700, text)["width"] for text in ("iiii", "WWWW"))
    assert narrow == wide, (narrow, wide)


def check_screen(lab):
    ramp = [[step * 257 // divisor for step in range(256)] for divisor in (1, 2, 4)]
    lab.set_ramp(ramp)
    assert all(close_enough(got, wanted) for pair in zip(lab.ramp(), ramp) for got, wanted in zip(*pair))
    red, green, blue = wait_until(lambda: any(colour := lab.pixel(5, 5)) and colour, "the desktop's colour",
                                  state=lambda: lab.pixel(5, 5))
    assert lab.eye_picture().pixel(5, 5) == (red, green // 2, blue // 4)
    lab.set_ramp(identity_ramp())
    lab.move(300, 200)
    metrics = lab.metrics()
    wait_for_value(lambda: (lab.metrics()["cursor_x"], lab.metrics()["cursor_y"]), (300, 200), "the pointer's position")
    assert metrics["work_bottom"] == 1060 and metrics["dpi"] == 96, metrics


def library_of_new_process(lab):
    """The functions of the library that a program that starts now finds."""
    child = lab.desktop.start([TOOL, "magnify", "1", "1", "1"], stdout=subprocess.PIPE)
    return json.loads(child.communicate(timeout=TIMEOUT)[0])


def white(lab):
    """White as displayed: (red, green, blue), 0 to 65535."""
    return [channel[255] for channel in lab.visible_levels()]


def check_magnification(lab):
    lab.run_tool("magnify", 1000, 500, 0, "keep")
    assert all(map(close_enough, white(lab), (65535, 32768, 0)))
    assert lab.ramp()[1][255] > 65000, "the effect must not change the ramp"
    assert lab.magnification_calls()[-1].diagonal == (1.0, 0.5, 0.0)
    lab.set_ramp([[step * 257 // 2 for step in range(256)]] * 3)
    assert all(map(close_enough, white(lab), (32768, 16384, 0)))
    lab.set_ramp(identity_ramp())
    lab.magnification_script(effect=(87, 0))
    answers = [lab.run_tool("magnify", 1000, 1000, 1000, "keep")["effect_error"] for _ in range(3)]
    assert answers == [87, 0, 0], answers
    lab.magnification_script(initialize=5)
    assert lab.run_tool("magnify", 1000, 1000, 1000)["initialize_error"] == 5
    lab.magnification_script()
    lab.run_tool("magnify", 1000, 1000, 1000, "keep")
    child = lab.desktop.start([TOOL, "magnify", "500", "1000", "1000", "keep"], stdout=subprocess.PIPE)
    child.communicate(timeout=TIMEOUT)
    wait_until(lambda: lab.magnification.applied_factors() == (1.0, 1.0, 1.0), "the removal of the effect of an ended process",
               state=lab.magnification.applied_factors)
    lab.magnification.install("without-effect")
    # A running program keeps the library that it has loaded; a new one loads the installed one.
    found = library_of_new_process(lab)
    assert (found["initialize"], found["uninitialize"], found["effect"]) == (1, 1, 0), found
    lab.magnification.install("missing")
    assert library_of_new_process(lab)["loaded"] == 0
    assert lab.visible_levels()[1][255] > 65000


def check_windows(lab):
    key = "HKCU\\Software\\Lab \u017c\u00f3\u0142w"
    for name, value in (("text", "a\tb\\c \u26a0"), ("number", 7), ("bytes", b"\0\1"), ("kind", (7, b"a\0\0\0"))):
        lab.registry_set(key, name, value)
        assert lab.registry_get(key, name) == value
    assert lab.registry_delete(key) and lab.registry_get(key, "text") is None
    lab.set_clipboard_text("one\r\ntwo\t\u26a0")
    assert lab.clipboard_text() == "one\r\ntwo\t\u26a0"
    with lab.other_window():
        assert lab.window_facts("LabOtherWindow")["foreground"] == 1
    assert lab.window_facts("LabOtherWindow") is None
    lab.change_mode(1280, 720)
    assert lab.metrics()["width"] == 1280
    assert lab.message_boxes() == [] and lab.tray_icons() == []


def check_process_facts(lab):
    facts = lab.desktop.facts("process", TOOL.rpartition("\\")[2])
    assert facts["process"] > 0 and facts["gdi"] > 0 and facts["handles"] > 0, facts
    assert lab.desktop.facts("process", facts["process"]) == facts
    assert lab.desktop.facts("process", "missing.exe") is None
    with lab.other_window():
        other = lab.desktop.facts("process", int(lab.window_facts("LabOtherWindow")["process"]))
    assert other["process"] != facts["process"] and other["handles"] > 0, other


def check_registry_before_start(build_dir):
    with Lab(build_dir, dpi=144, evidence=EVIDENCE / "check_registry_before_start") as lab:
        lab.registry_set("HKLM\\Software\\Lab \u26a0", "name \"q\"", "value \\ \u017c")
        assert lab.registry_get("HKLM\\Software\\Lab \u26a0", "name \"q\"") == "value \\ \u017c"
        assert lab.metrics()["dpi"] == 144
        roaming = lab.prefix.roaming
        assert roaming.is_dir(), roaming


def check_end(build_dir, number):
    """Checks that every process of a lab ends, regardless of the signal that ended the lab's own process."""
    environment = dict(os.environ, PYTHONPATH=str(Path(__file__).resolve().parents[1]), PYTHONDONTWRITEBYTECODE="1")
    process = subprocess.Popen([sys.executable, "-c", LAB_PROCESS, str(build_dir)], env=environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    folder = Path(process.stdout.readline().strip())
    assert folder.parent == STATE / "runs" and len(still_alive(folder)) > 5, folder
    process.send_signal(number)
    process.wait(TIMEOUT)
    process.stdout.close()
    wait_until(lambda: not still_alive(folder) and not folder.exists(), f"the end of all processes after {number.name}",
               state=lambda: (describe_processes(folder / "prefix"), still_alive(folder), folder.exists()))


def check_failure(build_dir):
    folder = None
    try:
        with Lab(build_dir) as lab:
            folder = lab.folder
            lab.metrics()
            raise ZeroDivisionError
    except ZeroDivisionError:
        pass
    assert not folder.exists() and not still_alive(folder), still_alive(folder)


def check_two_labs(build_dir):
    evidence = EVIDENCE / "check_two_labs"
    with Lab(build_dir, evidence=evidence / "one") as one, Lab(build_dir, evidence=evidence / "other") as other:
        one.set_clipboard_text("one")
        other.set_clipboard_text("other")
        one.run_tool("magnify", 500, 500, 500, "keep")
        assert (one.clipboard_text(), other.clipboard_text()) == ("one", "other")
        assert one.visible_levels()[0][255] < 40000 < other.visible_levels()[0][255]


def selftest(build_dir):
    """Runs every check, prints one line each, and returns 0 when all passed. A failed check saves evidence."""
    failures = 0
    shutil.rmtree(EVIDENCE, ignore_errors=True)

    def check(name, call, lab=None):
        nonlocal failures
        started = time.monotonic()
        try:
            call()
            verdict = "ok"
        except Exception:
            failures += 1
            verdict = "FAILED\n" + traceback.format_exc()
            if lab:  # The labs that a check opens save their own.
                save_evidence(lab, EVIDENCE / name)
                verdict += f"evidence: {EVIDENCE / name}"
        print(f"{name:32} {time.monotonic() - started:5.1f} s  {verdict}", flush=True)

    with Lab(build_dir, evidence=EVIDENCE / "lab") as lab:
        for call in (check_fonts, check_screen, check_magnification, check_windows, check_process_facts):
            check(call.__name__, lambda: call(lab), lab)
    hardware_checks(check, build_dir, EVIDENCE)
    for call in (check_registry_before_start, check_failure, check_two_labs):
        check(call.__name__, lambda: call(build_dir))
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL):
        check(f"check_end {number.name}", lambda: check_end(build_dir, number))
    return 1 if failures else 0
