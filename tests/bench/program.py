"""The figures of the whole program in the lab: start, memory, rest and click."""

import time
from pathlib import Path

from ambrel_lab import Lab
from ambrel_lab.hardware import Monitor
from ambrel_lab.popup import WINDOW_CLASS
from ambrel_lab.waiting import wait_until

import native
from figures import compared, plain

FLOOR, FLOOR_CLASS = "C:\\Ambrel\\floor.exe", "FloorProgram"
START_ROUNDS, FULL_START_ROUNDS = 11, 41
MEMORY_ROUNDS, FULL_MEMORY_ROUNDS = 3, 7
REST_SECONDS, FULL_REST_SECONDS, REST_WINDOWS = 10, 60, 3
CLICK_ROUNDS, FULL_CLICK_ROUNDS = 7, 25
SETTLE_SECONDS = 1.5

WM_CLOSE, WM_LBUTTONUP, MESSAGE_TRAY = 0x10, 0x202, 0x401
REOPEN_PAUSE = 0.6
MODE_ON = "[Settings]\r\nPWMSafeMode=1\r\n"


class Subject:
    """The program, or its floor, in a lab of its own."""

    def __init__(self, build, floor, monitors=(), panels=(), words=(), settings=None):
        self.lab = Lab(build)
        self.lab.__enter__()
        self.window_class = FLOOR_CLASS if floor else WINDOW_CLASS
        self.lab.hardware.monitors(list(monitors))
        self.lab.hardware.panels(list(panels))
        self.lab.write_settings(settings)
        if floor:
            self.lab.install_program(build / "bench/floor_program.exe", FLOOR)
        else:
            self.lab.install_program()
        self.lab.start_program(*words)
        self.lab.wait_for_tray_icon()
        time.sleep(SETTLE_SECONDS)
        self.pid = self.lab.program_pids()[0]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.lab.close()

    def private_kib(self):
        """Private resident memory."""
        rows = Path(f"/proc/{self.pid}/smaps_rollup").read_text().splitlines()
        values = dict(row.split(":") for row in rows[1:])
        return sum(int(values[f"Private_{kind}"].split()[0]) for kind in ("Clean", "Dirty"))

    def tasks(self):
        return Path(f"/proc/{self.pid}/task").iterdir()

    def processor_ms(self):
        """The processor time of all threads; the first field of schedstat is in nanoseconds."""
        return sum(int((task / "schedstat").read_text().split()[0]) for task in self.tasks()) / 1e6

    def wake_ups(self):
        """How often the threads have waited, since each wait ends with a wake-up."""
        return sum(int(line.split()[1]) for task in self.tasks()
                   for line in (task / "status").read_text().splitlines() if line.startswith("voluntary_ctxt"))

    def click(self):
        """Clicks the icon. Returns the milliseconds until the popup is painted, and hides it."""
        x, y = self.lab.size[0] - 170, self.lab.size[1] - 300
        before = self.lab.pixel(x, y)
        started = time.monotonic()
        self.lab.post_message(MESSAGE_TRAY, 0, WM_LBUTTONUP, target=self.window_class)
        wait_until(lambda: self.lab.pixel(x, y) != before, "the popup", pause=0.001)
        taken = 1000 * (time.monotonic() - started)
        self.lab.post_message(WM_CLOSE, target=self.window_class)
        wait_until(lambda: self.lab.pixel(x, y) == before, "the hidden popup", pause=0.01)
        time.sleep(REOPEN_PAUSE)
        return taken

    def open(self):
        self.lab.post_message(MESSAGE_TRAY, 0, WM_LBUTTONUP, target=self.window_class)
        wait_until(lambda: (self.lab.window_facts(self.window_class) or {}).get("visible"), "the popup")
        time.sleep(SETTLE_SECONDS)

    def work(self):
        """(milliseconds of processor time, wake-ups) so far."""
        return self.processor_ms(), self.wake_ups()


def at_rest(seconds, *subjects):
    """(milliseconds of processor time, wake-ups) of each subject in the same so many seconds."""
    before = [subject.work() for subject in subjects]
    time.sleep(seconds)
    return [tuple(now - then for now, then in zip(subject.work(), start, strict=True))
            for subject, start in zip(subjects, before, strict=True)]


def start(build, full):
    with Lab(build) as lab:
        lab.hardware.monitors([Monitor("monitor", 100)])
        lab.hardware.panels([])
        lab.install_program(build / "bench/floor_program.exe", FLOOR)
        lab.install_program()
        yield from native.run(lab, build, "start", [lab.program_path, FLOOR],
                              FULL_START_ROUNDS if full else START_ROUNDS)


def memory(build, full):
    displays = {"monitors": [Monitor("monitor", 100)]}
    floors, fresh, opened = [], [], []
    for _ in range(FULL_MEMORY_ROUNDS if full else MEMORY_ROUNDS):
        with Subject(build, True, **displays) as floor, Subject(build, False, **displays) as program:
            floors.append(floor.private_kib())
            fresh.append(program.private_kib())
            program.click()
            time.sleep(SETTLE_SECONDS)
            opened.append(program.private_kib())
    yield compared("private memory at rest, popup never opened", "KiB", fresh, floors, 1.15)
    yield compared("private memory at rest, popup once opened", "KiB", opened, floors, 1.25)


def rest(build, full):
    seconds = FULL_REST_SECONDS if full else REST_SECONDS
    monitors = [Monitor("monitor", 100)]
    with Subject(build, False, monitors) as program:
        (spent, woken), = at_rest(seconds, program)
        yield plain(f"processor time in {seconds} s, hidden", "ms", [spent], 0)
        yield plain(f"wake-ups in {seconds} s, hidden", "", [woken], 0)
        program.open()
        (spent, woken), = at_rest(seconds, program)
        yield plain(f"processor time in {seconds} s, popup open", "ms", [spent])
        yield plain(f"wake-ups in {seconds} s, popup open", "", [woken])
    with Subject(build, True, monitors, words=["poll"]) as floor, \
            Subject(build, False, monitors, settings=MODE_ON) as program:
        windows = [at_rest(seconds, program, floor) for _ in range(REST_WINDOWS)]
        for name, unit, part in (("processor time", "ms", 0), ("wake-ups", "", 1)):
            values, floors = zip(*((window[0][part], window[1][part]) for window in windows))
            yield compared(f"{name} in {seconds} s, hidden, mode on", unit, list(values), list(floors), 1.10)


DISPLAYS = {"no display": {},
            "a monitor that answers at once": {"monitors": [Monitor("monitor", 100)]},
            "a real monitor": {"monitors": [Monitor("monitor", 100, **native.REAL)]},
            "a monitor that takes 3 s": {"monitors": [Monitor("monitor", 100, read_delay=3000)]}}


def click(build, full):
    for name, displays in DISPLAYS.items():
        rounds = 2 if "3 s" in name else FULL_CLICK_ROUNDS if full else CLICK_ROUNDS
        with Subject(build, True, **displays) as floor, Subject(build, False, **displays) as program:
            pairs = [(program.click(), floor.click()) for _ in range(rounds)]
            yield compared(f"click until the popup is painted, {name}", "ms", *map(list, zip(*pairs)), 1.10)


GROUPS = {"start": start, "memory": memory, "rest": rest, "click": click}
