"""Runs a Windows console program in a desktop and passes its output on."""

import os
import shutil
import subprocess
import sys
import threading
from pathlib import Path

from .paths import LabError

# What a shell adds to the number of a signal that ended a program.
SIGNALLED = 128
OUTPUT_PATIENCE = 5.0


def pump(source, sink):
    """Copies Windows text to the end as it comes, with plain line feeds."""
    held = b""
    while chunk := os.read(source.fileno(), 65536):
        chunk = held + chunk
        held = b"\r" if chunk.endswith(b"\r") else b""
        sink.write(chunk[:len(chunk) - len(held)].replace(b"\r\n", b"\n"))
        sink.flush()
    sink.write(held)
    sink.flush()


def run_console(desktop, exe, arguments=(), timeout=None):
    """Runs `exe` (a Linux path) in the caller's folder with its standard input; returns its exit code, of which
    Linux passes on the low eight bits. A `timeout` that passes raises subprocess.TimeoutExpired."""
    path = shutil.which(exe) or exe
    if not Path(path).exists():
        raise LabError(f"{exe} does not exist")
    child = desktop.start([os.path.abspath(path), *arguments], stdin=None, stdout=subprocess.PIPE, stderr=None,
                          cwd=os.getcwd())
    pumping = threading.Thread(target=pump, args=(child.stdout, sys.stdout.buffer), daemon=True)
    pumping.start()
    code = child.wait(timeout)
    pumping.join(OUTPUT_PATIENCE)
    return code if code >= 0 else SIGNALLED - code
