"""Runs a Windows console program in a desktop and forwards its output."""

import os
import select
import shutil
import subprocess
import sys
import threading
from pathlib import Path

from .paths import LabError

# Exit code of a program that was terminated by a signal: this plus the signal's number, as in a shell.
SIGNALLED = 128
OUTPUT_TIMEOUT = 5.0  # seconds


class NoOutput(LabError):
    """A program has printed nothing, which it does at once unless Wine hangs."""


def pump(source, sink):
    """Copies text until its end as it arrives and converts CR LF to LF."""
    held = b""
    while chunk := os.read(source.fileno(), 65536):
        chunk = held + chunk
        held = b"\r" if chunk.endswith(b"\r") else b""
        sink.write(chunk[:len(chunk) - len(held)].replace(b"\r\n", b"\n"))
        sink.flush()
    sink.write(held)
    sink.flush()


def run_console(desktop, exe, arguments=(), timeout=None, first_output=None):
    """Runs `exe` (a Linux path) in the caller's folder with the caller's standard input. Returns the low eight bits of
    its exit code. Raises NoOutput if it still runs after `first_output` seconds and has printed nothing, and
    subprocess.TimeoutExpired after `timeout` seconds."""
    path = shutil.which(exe) or exe
    if not Path(path).exists():
        raise LabError(f"{exe} does not exist")
    child = desktop.start([os.path.abspath(path), *arguments], stdin=None, stdout=subprocess.PIPE, stderr=None,
                          cwd=os.getcwd())
    if first_output is not None:
        printed, _, _ = select.select([child.stdout], [], [], first_output)
        if not printed and child.poll() is None:
            raise NoOutput(f"{exe} has printed nothing for {first_output:g} s")
    pumping = threading.Thread(target=pump, args=(child.stdout, sys.stdout.buffer), daemon=True)
    pumping.start()
    code = child.wait(timeout)
    pumping.join(OUTPUT_TIMEOUT)
    return code if code >= 0 else SIGNALLED - code
