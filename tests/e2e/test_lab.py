"""What the tests rely on in the lab itself: its end leaves no process."""

import select
import subprocess
import sys
import time

from ambrel_lab.processes import end_processes, has_memory
from desk import wait_until

ROUNDS = 100
# 60 ends the calling thread alone on x86-64 Linux.
LOSES_ITS_FIRST_THREAD = """
import ctypes, threading, time
threading.Thread(target=time.sleep, args=(600,)).start()
ctypes.CDLL(None).syscall(60, 0)
"""


def test_the_end_of_a_prefix_ends_processes_that_are_in_the_middle_of_an_exec(tmp_path):
    script = tmp_path / "again.sh"
    script.write_text('exec /bin/sh "$0"\n')
    for _ in range(ROUNDS):
        children = [subprocess.Popen(["/bin/sh", script], env={"WINEPREFIX": str(tmp_path)}) for _ in range(3)]
        try:
            time.sleep(0.01)
            assert end_processes(tmp_path)
            wait_until(lambda: all(child.poll() is not None for child in children), "the end of all three", limit=1.0)
        finally:
            for child in children:
                child.kill()
                child.wait()


def test_the_end_of_a_prefix_ends_processes_whose_first_thread_has_ended(tmp_path):
    child = subprocess.Popen([sys.executable, "-c", LOSES_ITS_FIRST_THREAD], env={"WINEPREFIX": str(tmp_path)},
                             stdout=subprocess.PIPE)
    try:
        wait_until(lambda: not has_memory(child.pid), "the end of the first thread")
        assert end_processes(tmp_path)
        # Its output ends with its last thread.
        ready, _, _ = select.select([child.stdout], [], [], 5.0)
        assert ready and child.stdout.read() == b""
    finally:
        child.kill()
        child.wait()
