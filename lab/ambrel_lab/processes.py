"""The Linux processes of a prefix, identified by their environment."""

import ctypes
import os
import signal
import time
from contextlib import contextmanager
from pathlib import Path

TICKS = os.sysconf("SC_CLK_TCK")
# The limit in seconds for an exec, the pause between checks, and the number of checks that must find no environment.
EXEC_TIMEOUT, EXEC_PAUSE, CHECKS = 10.0, 0.001, 3
# personality(2)
ADDR_NO_RANDOMIZE, CURRENT_PERSONALITY = 0x0040000, 0xFFFFFFFF


def fix_addresses():
    """Disables address-space randomisation for the processes that this one will start.

    Linux places the heap of Wine's loader at random within 1 GiB from 0x7D400000. If it covers 0x7FFE0000, where
    Windows' shared data must be, the program ends at once with 1 and without a message: about one start in 4,000.
    """
    libc = ctypes.CDLL(None)
    libc.personality(libc.personality(CURRENT_PERSONALITY) | ADDR_NO_RANDOMIZE)


@contextmanager
def on_processors(numbers):
    """Context in which this thread and every process that it starts run on these processors only."""
    before = os.sched_getaffinity(0)
    os.sched_setaffinity(0, numbers)
    try:
        yield
    finally:
        os.sched_setaffinity(0, before)


def read_bytes(path):
    """The content of a file, b"" if it cannot be read. Unbuffered and without a Path, because a search reads hundreds of
    files."""
    try:
        with open(path, "rb", buffering=0) as file:
            return file.read()
    except OSError:
        return b""


def has_memory(pid):
    """False for kernel processes, processes whose first thread has ended, and processes of other users."""
    try:
        return bool(os.readlink(f"/proc/{pid}/exe"))
    except OSError:
        return False


def environment_of(pid):
    """The environment of a process, b"" if it has none.

    During an exec a process has neither environment nor command line, so this waits until the exec has finished. A
    process whose first thread has ended shows its environment only in its other threads. An example is Wine's service
    for USB devices: it loses its first thread when Wine's server exits first, but a library thread keeps running.
    """
    deadline, checks = time.monotonic() + EXEC_TIMEOUT, 0
    while not (environment := read_bytes(f"/proc/{pid}/environ")):
        if not has_memory(pid):
            return read_in_threads(pid, "environ")
        checks += bool(read_bytes(f"/proc/{pid}/cmdline"))
        if checks == CHECKS or time.monotonic() > deadline:
            break
        time.sleep(EXEC_PAUSE)
    return environment


def command_line_of(pid):
    """The words of a process's command line. A killed process loses it when its first thread has ended, although its
    other threads still keep objects open in Wine's server."""
    return (read_bytes(f"/proc/{pid}/cmdline") or read_in_threads(pid, "cmdline")).split(b"\0")


def read_in_threads(pid, name):
    """The content of a file of a process's other threads: the first that is not empty, b"" if there is none."""
    try:
        threads = os.listdir(f"/proc/{pid}/task")
    except OSError:
        return b""
    others = (read_bytes(f"/proc/{pid}/task/{thread}/{name}") for thread in threads if thread != str(pid))
    return next(filter(None, others), b"")


def all_processes():
    """Process ids of all processes of the machine."""
    return [int(name) for name in os.listdir("/proc") if name.isdigit()]


def in_prefix(pid, prefix):
    return f"WINEPREFIX={prefix}".encode() in environment_of(pid).split(b"\0")


def processes_of(prefix):
    """Process ids of all processes in the prefix, including Wine's server and services."""
    return [pid for pid in all_processes() if in_prefix(pid, prefix)]


def names_in(words):
    """The file names in the first two words of a command line: the loader and its program, or the program alone."""
    return [word.replace(b"/", b"\\").rsplit(b"\\", 1)[-1].decode("utf-8", "replace").lower() for word in words[:2]]


def processes_named(prefix, image):
    """Process ids of the Windows programs in the prefix whose file is called `image`, in ascending order."""
    found, image = [], image.lower()
    for pid in all_processes():
        # Most processes have another name. During an exec a process has no command line; in_prefix() waits until the exec
        # has finished.
        line = read_bytes(f"/proc/{pid}/cmdline").decode("utf-8", "replace").lower()
        if (not line or image in line) and in_prefix(pid, prefix) and image in names_in(command_line_of(pid)):
            found.append(pid)
    return sorted(found)


def describe_processes(prefix):
    """One line for each thread of what runs in the prefix: process, thread, state, what it waits for, command line."""
    lines = []
    for pid in processes_of(prefix):
        command = read_bytes(f"/proc/{pid}/cmdline").replace(b"\0", b" ").decode("utf-8", "replace").strip()
        try:
            threads = sorted(os.listdir(f"/proc/{pid}/task"))
        except OSError:  # It has ended.
            continue
        for thread in (Path(f"/proc/{pid}/task/{name}") for name in threads):
            state = read_bytes(thread / "stat").rpartition(b") ")[2][:1].decode()
            lines.append(f"{pid} {thread.name} {state} {read_bytes(thread / 'wchan').decode() or '-'} {command}")
    return "\n".join(lines) + "\n"


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
