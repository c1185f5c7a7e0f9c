#!/usr/bin/python3
"""Measures the program in the lab: bench.py BUILD-FOLDER. Each figure is compared with a floor measured in the same
run; the ratio is the result."""

import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "lab"))
sys.dont_write_bytecode = True

from ambrel_lab import Lab  # noqa: E402
from ambrel_lab.hardware import Monitor, Panel  # noqa: E402
from ambrel_lab.layout import CLOSE, GEAR, POWER  # noqa: E402
from ambrel_lab.waiting import wait_until, wait_until_settled  # noqa: E402

QUIET_SECONDS = 5
MAX_PROGRAM_SIZE = 320 * 1024
DRAG_STEPS = 200
WM_TIMER, POLL = 0x113, 4
# Milliseconds, as real monitors take them, and one that is nearly dead.
MONITORS = {"a real monitor": {"capabilities_delay": 300, "read_delay": 40, "set_delay": 50},
            "a monitor of 3 s": {"capabilities_delay": 300, "read_delay": 3000, "set_delay": 50}}


def memory_kib(pid):
    """Private resident memory of a process in KiB."""
    rows = Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
    values = dict(row.split(":") for row in rows[1:])
    return sum(int(values[f"Private_{kind}"].split()[0]) for kind in ("Clean", "Dirty"))


def line(name, value, floor, unit):
    print(f"{name:44} {value:10.2f} {unit}   floor {floor:10.2f} {unit}   ratio {value / floor:6.2f}", flush=True)


def size(build):
    program = (build / "ambrel.exe").stat().st_size / 1024
    empty = (build / "bench/bench_empty_program.exe").stat().st_size / 1024
    resources = sum(file.stat().st_size for name in ("*.ico", "*.png")
                    for file in (ROOT / "src/res").glob(name)) / 1024
    line("size of the program / empty one + pictures", program, empty + resources, "KiB")
    name = f"share of the limit of {MAX_PROGRAM_SIZE // 1024} KiB"
    print(f"{name:44} {program * 1024 / MAX_PROGRAM_SIZE:10.2f}")


def empty_memory(build):
    with Lab(build) as lab:
        lab.install_program(build / "bench/bench_empty_program.exe", "C:\\Ambrel\\empty.exe")
        lab.start_program()
        lab.wait_for_tray_icon()
        return memory_kib(lab.program_pids()[0])


def idle_program_and_drag(build):
    floor = empty_memory(build)
    with Lab(build) as lab:
        lab.install_program()
        lab.start_program()
        lab.wait_for_tray_icon()
        line("memory after start / empty program", memory_kib(lab.program_pids()[0]), floor, "KiB")
        print(f"{'processor while hidden':44} {100 * lab.processor_share(QUIET_SECONDS):10.2f} %")
        lab.open_popup()
        lab.click_unit(*POWER)
        before = lab.processor_seconds()
        lab.drag_unit(80, 290, 80, 110, steps=DRAG_STEPS)
        spent = lab.processor_seconds() - before
        print(f"{'processor time per step of a real drag':44} {1000 * spent / DRAG_STEPS:10.2f} ms")
        # Wine keeps the cursors that a tint replaces; Windows destroys them.
        line("memory after a drag (Wine) / empty program", memory_kib(lab.program_pids()[0]), floor, "KiB")


def panel_pixel(lab):
    """A pixel that differs between the two panels."""
    return lab.popup_picture().pixel(200, 500)


def seconds_until_gear_opens(lab, main_panel):
    """From a click on the gear to the settings panel on the screen. `main_panel` is panel_pixel() of the main panel."""
    started = time.monotonic()
    lab.click_unit(*GEAR)
    wait_until(lambda: panel_pixel(lab) != main_panel, "the settings panel", pause=0.005)
    return time.monotonic() - started


def click_during_a_poll(build):
    """How long the popup takes to answer a click while a poll queries the displays, beside a click without a poll."""
    for name, delays in MONITORS.items():
        with Lab(build) as lab:
            lab.hardware.monitors([Monitor("monitor", 40, **delays)])
            lab.hardware.panels([Panel("panel", 60)])
            lab.install_program()
            lab.start_program()
            lab.wait_for_tray_icon()
            lab.open_popup()
            main_panel = wait_until_settled(lambda: panel_pixel(lab), "the main panel", pause=0.3)
            floor = seconds_until_gear_opens(lab, main_panel)
            lab.click_unit(*CLOSE)  # This queries the displays as well.
            wait_until(lambda: panel_pixel(lab) == main_panel, "the main panel")
            lab.post_message(WM_TIMER, POLL)
            wait_until(lab.hardware.waiting, "the poll")
            line(f"click during a poll of {name} / without", 1000 * seconds_until_gear_opens(lab, main_panel),
                 1000 * floor, "ms")


def steps_and_frames(build):
    with Lab(build) as lab:
        for name in ("bench_drag_step", "bench_frame"):
            if lab.run_console_program(build / f"bench/{name}.exe") != 0:
                sys.exit(f"{name} failed")


def main(build):
    size(build)
    idle_program_and_drag(build)
    click_during_a_poll(build)
    steps_and_frames(build)


if __name__ == "__main__":
    main(Path(sys.argv[1]).resolve())
