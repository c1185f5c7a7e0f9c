"""The Linux processes of a prefix, identified by their environment."""

import os
import signal
import time
from pathlib import Path

TICKS = os.sysconf("SC_CLK_TCK")


def read_bytes(path):
    try:
        return Path(path).read_bytes()
    except OSError:
        return b""


def processes_of(prefix):
    """Process ids of all processes in the prefix, including Wine's server and services."""
    mark = f"WINEPREFIX={prefix}".encode()
    found = []
    for name in os.listdir("/proc"):
        if name.isdigit() and mark in read_bytes(f"/proc/{name}/environ").split(b"\0"):
            found.append(int(name))
    return found


def processes_named(prefix, image):
    """Process ids of the Windows programs in the prefix whose file is called `image`, in ascending order."""
    found = []
    for pid in processes_of(prefix):
        words = read_bytes(f"/proc/{pid}/cmdline").split(b"\0")[:2]
        names = [word.replace(b"/", b"\\").rsplit(b"\\", 1)[-1].decode("utf-8", "replace").lower() for word in words]
        if image.lower() in names:
            found.append(pid)
    return sorted(found)


def processor_time(pid):
    """Seconds of processor time that a process has used so far."""
    fields = read_bytes(f"/proc/{pid}/stat").rsplit(b")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


def kill(pid):
    """Kills a process. Does nothing if it has ended."""
    try:
        os.kill(pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def end_processes(prefix, timeout=10.0):
    """Kills all processes in the prefix. Returns False if some still exist after `timeout` seconds."""
    prefix = Path(prefix)
    if not prefix.exists():
        return True
    deadline = time.monotonic() + timeout
    while pids := processes_of(prefix):
        if time.monotonic() > deadline:
            return False
        for pid in pids:
            kill(pid)
        time.sleep(0.02)
    return True
