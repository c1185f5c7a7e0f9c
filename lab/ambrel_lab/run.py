"""A run of the lab: its folder, its watchdog process and its screen."""

import fcntl
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from .watchdog import KEPT
from .paths import BYTECODE, STATE, LabError, make_home
from .processes import end_processes, fix_addresses, on_processors, read_bytes

LOCK, PROCESSOR = "lock", "processor"
WATCHDOG = "from ambrel_lab.watchdog import main; main()"

XORG_CONFIG = """\
Section "ServerFlags"
    Option "AutoAddDevices" "false"
    Option "AutoAddGPU" "false"
    Option "DontVTSwitch" "true"
    Option "BlankTime" "0"
    Option "StandbyTime" "0"
    Option "SuspendTime" "0"
    Option "OffTime" "0"
EndSection
Section "Module"
    Disable "glx"
EndSection
Section "Device"
    Identifier "card"
    Driver "dummy"
    VideoRam 131072
EndSection
Section "Monitor"
    Identifier "monitor"
    HorizSync 1-2000
    VertRefresh 1-1000
{modelines}
EndSection
Section "Screen"
    Identifier "screen"
    Device "card"
    Monitor "monitor"
    DefaultDepth 24
    SubSection "Display"
        Depth 24
        Modes {modes}
        Virtual {width} {height}
    EndSubSection
EndSection
"""


def screen_config(width, height):
    """The X server's configuration: the requested size first, then smaller modes."""
    sizes = [(width, height)] + [size for size in ((1920, 1080), (1280, 720), (1024, 768), (800, 600))
                                 if size[0] < width and size[1] < height]
    lines = []
    for wide, high in sizes:
        timing = f"{wide} {wide + 40} {wide + 120} {wide + 200} {high} {high + 3} {high + 8} {high + 30}"
        clock = (wide + 200) * (high + 30) * 60 / 1e6
        lines.append(f'    Modeline "{wide}x{high}" {clock:.2f} {timing}')
    modes = " ".join(f'"{wide}x{high}"' for wide, high in sizes)
    return XORG_CONFIG.format(modelines="\n".join(lines), modes=modes, width=width, height=height)


def remove_leftovers(runs):
    """Deletes the folders of runs whose lab and watchdog have both ended, and kills their remaining processes."""
    for folder in runs.iterdir():
        if (folder / KEPT).exists():
            continue
        try:
            with open(folder / LOCK, "w") as handle:
                fcntl.flock(handle, fcntl.LOCK_EX | fcntl.LOCK_NB)
                end_processes(folder / "prefix")
                shutil.rmtree(folder, ignore_errors=True)
        except OSError:
            # It is in use, or its watchdog has just deleted it.
            pass


def least_used_processor(runs):
    """The number of the processor that the fewest runs use. Kept runs do not count."""
    used = [read_bytes(file).decode() for file in runs.glob(f"*/{PROCESSOR}") if not (file.parent / KEPT).exists()]
    return min(sorted(os.sched_getaffinity(0)), key=lambda number: used.count(str(number)))


def make_folder(kept, one_processor):
    """Creates and locks a run's folder. Returns (folder, lock, processors). In between, no other lab removes leftovers or
    chooses a processor."""
    runs = STATE / "runs"
    runs.mkdir(parents=True, exist_ok=True)
    with open(STATE / "runs.lock", "w") as guard:
        fcntl.flock(guard, fcntl.LOCK_EX)
        remove_leftovers(runs)
        processors = [least_used_processor(runs)] if one_processor else os.sched_getaffinity(0)
        folder = Path(tempfile.mkdtemp(prefix=time.strftime("%H%M%S-"), dir=runs))
        if kept:
            (folder / KEPT).touch()
        if one_processor:
            (folder / PROCESSOR).write_text(str(processors[0]), encoding="ascii")
        lock = open(folder / LOCK, "w")
        fcntl.flock(lock, fcntl.LOCK_EX)
        return folder, lock, processors


class Run:
    """A folder and a screen, both removed by the watchdog afterwards. Sets `folder`, `home`, `display` and `processors`.

    With `borrowed_display` the run uses that display instead of a new screen and restores its gamma ramp at the end.
    With `one_processor` all its processes run on one processor: Wine's programs and its server mostly wait for each other,
    and waking a process on another processor takes several times as long as on the same one.
    """

    def __init__(self, size=(1920, 1080), borrowed_display="", kept=False, one_processor=False):
        fix_addresses()
        self.folder, lock, self.processors = make_folder(kept, one_processor)
        self.home = make_home(self.folder / "home")
        (self.folder / "xorg.conf").write_text(screen_config(*size))
        # The watchdog inherits the lock, which is released only when both processes have ended.
        with lock, on_processors(self.processors):
            environment = dict(os.environ, PYTHONPATH=str(Path(__file__).resolve().parents[1]),
                               PYTHONPYCACHEPREFIX=str(BYTECODE))
            self.watchdog = subprocess.Popen(
                [sys.executable, "-S", "-c", WATCHDOG, str(self.folder), borrowed_display],
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment, pass_fds=[lock.fileno()],
                start_new_session=True, text=True)
        self._display = ""

    @property
    def display(self):
        """The display's name. The screen starts while the prefix is copied; the first use waits for it."""
        if not self._display:
            answer = self.watchdog.stdout.readline()
            self._display = json.loads(answer)["display"] if answer else ""
            if not self._display:
                log = self.folder / "xorg.out"
                reason = log.read_text(errors="replace")[-2000:] if log.exists() else ""
                raise LabError(f"the screen did not start\n{reason}")
        return self._display

    def close(self):
        """Ends the run. Returns when all its processes have ended and its folder is deleted."""
        if self.watchdog.poll() is None:
            self.watchdog.stdin.close()
            self.watchdog.stdout.close()
            self.watchdog.wait()
