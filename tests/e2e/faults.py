"""Faults of files: read-only, locked by another program, full disk."""

import os
import random
import subprocess
from contextlib import contextmanager

import pytest

HOLDER = "C:\\lab\\hold.js"
# Opens the file without sharing, prints "ready", and then blocks, because its second, very long line is not read.
HOLDER_TEXT = ('var file = new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(WScript.Arguments(0), 1);\n'
               'WScript.Echo("ready");\nvar text = "................";\n'
               'while (text.length < 300000) text += text;\nWScript.Echo(text);\n')
MEGABYTE = 1 << 20


def noise(size, seed=1):
    return random.Random(seed).randbytes(size)


def windows_path(desk, path):
    return "C:\\" + str(path.relative_to(desk.prefix.drive_c)).replace("/", "\\")


@contextmanager
def held_by_another_program(desk, path):
    """Context in which a script has the file open without sharing it."""
    desk.prefix.path(HOLDER).write_text(HOLDER_TEXT, encoding="ascii")
    holder = desk.desktop.start(["cscript", "//nologo", HOLDER, windows_path(desk, path)], stdout=subprocess.PIPE)
    try:
        assert holder.stdout.readline().strip() == b"ready"
        yield
    finally:
        holder.kill()
        holder.wait()


def can_write(path):
    try:
        with open(path, "ab"):
            return True
    except OSError:
        return False


def chattr(flag, path):
    return subprocess.run(["chattr", flag, path], check=False, capture_output=True).returncode == 0


@contextmanager
def read_only(path):
    """Context in which no user can write to the file, not even root."""
    path.chmod(0o444)
    locked = can_write(path) and chattr("+i", path)
    try:
        if can_write(path):
            pytest.skip("this machine lets root write to a read-only file")
        yield
    finally:
        if locked:
            chattr("-i", path)
        path.chmod(0o644)


def put_on_a_full_disk(path):
    """Makes every write to the file fail because the disk is full."""
    path.unlink(missing_ok=True)
    path.parent.mkdir(parents=True, exist_ok=True)
    os.symlink("/dev/full", path)
