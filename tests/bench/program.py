"""The figures of the whole program in the lab: start, memory, rest and click."""

import contextlib
import time
from pathlib import Path

from ambrel_lab import Lab
from ambrel_lab.hardware import Monitor
from ambrel_lab.popup import WINDOW_CLASS
from ambrel_lab.waiting import wait_until

import native
from figures import compared, in_both_orders, plain

FLOOR, FLOOR_CLASS = "C:\\Ambrel\\floor.exe", "FloorProgram"
START_ROUNDS, FULL_START_ROUNDS = 5, 20
MEMORY_ROUNDS, FULL_MEMORY_ROUNDS = 3, 6
REST_SECONDS, FULL_REST_SECONDS, REST_WINDOWS = 10, 60, 3
CLICK_ROUNDS, FULL_CLICK_ROUNDS = 6, 40
SETTLE_SECONDS = 1.5
POLL_SECONDS = 2
# The place of the popup, from the right and the lower edge of the screen: above the taskbar, 10 pixels from the edges.
POPUP_WIDTH, POPUP_HEIGHT, POPUP_MARGIN, TASKBAR_HEIGHT = 320, 540, 10, 20
# The panel's background, at a point near its left edge that has nothing else.
BACKGROUND, BACKGROUND_LEFT, BACKGROUND_TOP = (0x0D, 0x0D, 0x0D), 6, 230

WM_CLOSE, WM_LBUTTONUP, MESSAGE_TRAY = 0x10, 0x202, 0x401
# The program ignores a click that follows a hide within 250 ms.
REOPEN_PAUSE = 0.3
MODE_ON = "[Settings]\r\nPWMSafeMode=1\r\n"


class Subject:
    """The program, or its floor, in a separate lab."""

    def __init__(self, build, floor, monitors=(), panels=(), words=(), settings=None):
        self.lab = Lab(build, one_processor=False)
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
        """Resident memory that no other process can share: pages of no file, and changed pages of mapped files."""
        rows = Path(f"/proc/{self.pid}/smaps_rollup").read_text().splitlines()
        values = dict(row.split(":") for row in rows[1:])
        return int(values["Anonymous"].split()[0])

    def tasks(self):
        return Path(f"/proc/{self.pid}/task").iterdir()

    def processor_ms(self):
        """The processor time of all threads; the first field of schedstat is in nanoseconds."""
        return sum(int((task / "schedstat").read_text().split()[0]) for task in self.tasks()) / 1e6

    def wake_ups(self):
        """How often the threads have waited, since each wait ends with a wake-up."""
        return sum(int(line.split()[1]) for task in self.tasks()
                   for line in (task / "status").read_text().splitlines() if line.startswith("voluntary_ctxt"))

    def popup_place(self):
        """(x, y) of the popup's upper left corner on the screen."""
        return (self.lab.size[0] - POPUP_MARGIN - POPUP_WIDTH,
                self.lab.size[1] - TASKBAR_HEIGHT - POPUP_MARGIN - POPUP_HEIGHT)

    def click(self):
        """Clicks the icon and hides the popup. Returns (milliseconds until it is painted, its picture)."""
        left, top = self.popup_place()
        x, y = left + BACKGROUND_LEFT, top + BACKGROUND_TOP
        before = self.lab.pixel(x, y)
        assert before != BACKGROUND
        started = time.monotonic()
        self.lab.post_message(MESSAGE_TRAY, 0, WM_LBUTTONUP, target=self.window_class)
        wait_until(lambda: self.lab.pixel(x, y) == BACKGROUND, "the painted popup", pause=0.001)
        taken = 1000 * (time.monotonic() - started)
        picture = self.lab.connection.picture(left, top, POPUP_WIDTH, POPUP_HEIGHT)
        self.lab.post_message(WM_CLOSE, target=self.window_class)
        wait_until(lambda: self.lab.pixel(x, y) == before, "the hidden popup", pause=0.01)
        time.sleep(REOPEN_PAUSE)
        return taken, picture

    def click_time(self):
        return self.click()[0]

    def open(self):
        self.lab.post_message(MESSAGE_TRAY, 0, WM_LBUTTONUP, target=self.window_class)
        wait_until(lambda: (self.lab.window_facts(self.window_class) or {}).get("visible"), "the popup")
        time.sleep(SETTLE_SECONDS)

    def polls(self):
        """How often the monitor has been read so far."""
        return len(self.lab.hardware.calls("GetMonitorBrightness"))

    def work(self):
        """(milliseconds of processor time, wake-ups, polls) so far."""
        return self.processor_ms(), self.wake_ups(), self.polls()


def at_rest(seconds, *subjects):
    """(milliseconds of processor time, wake-ups, polls) of each subject in the same so many seconds."""
    before = [subject.work() for subject in subjects]
    time.sleep(seconds)
    return [tuple(now - then for now, then in zip(subject.work(), start, strict=True))
            for subject, start in zip(subjects, before, strict=True)]


def per_window(seconds, part, polls):
    """What the polls took in one window, for the number of polls that a window of this length has on average: which of
    them a window contains depends on when it begins."""
    return part / polls * seconds / POLL_SECONDS


def start(build, full):
    with Lab(build, one_processor=False) as lab:
        lab.hardware.monitors([Monitor("monitor", 100)])
        lab.hardware.panels([])
        lab.install_program(build / "bench/floor_program.exe", FLOOR)
        lab.install_program()
        yield from native.run(lab, build, "start", [lab.program_path, WINDOW_CLASS, FLOOR, FLOOR_CLASS],
                              FULL_START_ROUNDS if full else START_ROUNDS)


def memory(build, full):
    displays = {"monitors": [Monitor("monitor", 100)]}
    floors, fresh, opened, floors_opened = [], [], [], []
    for _ in range(FULL_MEMORY_ROUNDS if full else MEMORY_ROUNDS):
        with Subject(build, True, **displays) as floor, Subject(build, False, **displays) as program:
            fresh.append(program.private_kib())
            floors.append(floor.private_kib())
            for subject, found in ((program, opened), (floor, floors_opened)):
                subject.click()
                time.sleep(SETTLE_SECONDS)
                found.append(subject.private_kib())
    yield compared("private memory at rest, popup never opened", "KiB", fresh, floors, 1.15)
    yield compared("private memory at rest, popup once opened", "KiB", opened, floors, 1.25)
    # Both have painted the same panel, so this ratio contains only what the program itself keeps of it.
    yield compared("private memory at rest, both popups once opened", "KiB", opened, floors_opened)


def rest(build, full):
    """All at the same time: most of it is waiting."""
    seconds = FULL_REST_SECONDS if full else REST_SECONDS
    monitors = [Monitor("monitor", 100)]
    with contextlib.ExitStack() as stack:
        hidden, opened = (stack.enter_context(Subject(build, False, monitors)) for _ in range(2))
        floor_opened = stack.enter_context(Subject(build, True, monitors))
        floor = stack.enter_context(Subject(build, True, monitors, words=["poll"]))
        program = stack.enter_context(Subject(build, False, monitors, settings=MODE_ON))
        for subject in (opened, floor_opened):
            subject.open()
        windows = [at_rest(seconds, hidden, opened, floor_opened, program, floor) for _ in range(REST_WINDOWS)]
    for part, (name, unit) in enumerate((("processor time", "ms"), ("wake-ups", ""))):
        name = f"{name} in {seconds} s"
        yield plain(f"{name}, hidden", unit, [window[0][part] for window in windows], 0)
        values, floors = ([window[subject][part] for window in windows] for subject in (1, 2))
        yield compared(f"{name}, popup open", unit, values, floors)
        values, floors = ([per_window(seconds, window[subject][part], window[subject][2]) for window in windows]
                          for subject in (3, 4))
        yield compared(f"{name}, hidden, PWM-safe mode on", unit, values, floors, 1.10)


# (name, monitors, the most rounds): the slower, the smaller the share of what disturbs.
DISPLAYS = (("no display", [], 40),
            ("a monitor that answers at once", [Monitor("monitor", 100)], 40),
            ("a real monitor", [Monitor("monitor", 100, **native.REAL)], 6),
            ("a monitor that takes 3 s", [Monitor("monitor", 100, read_delay=3000)], 2))


def click(build, full):
    with Subject(build, True) as floor, Subject(build, False) as program:
        for name, monitors, most in DISPLAYS:
            pictures = []
            for subject in (floor, program):
                subject.lab.hardware.monitors(monitors)
                pictures.append(subject.click()[1])
            assert pictures[0].rgb == pictures[1].rgb, "the floor paints another picture than the program"
            rounds = min(most, FULL_CLICK_ROUNDS if full else CLICK_ROUNDS)
            values, floors = in_both_orders(program.click_time, floor.click_time, rounds)
            yield compared(f"click until the popup is painted, {name}", "ms", values, floors, 1.10)


GROUPS = {"start": start, "memory": memory, "rest": rest, "click": click}
