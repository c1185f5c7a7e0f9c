"""Wine prefixes: a template that is created once, and a copy of it for each run."""

import fcntl
import hashlib
import os
import re
import shutil
import subprocess
import sys
from contextlib import contextmanager
from pathlib import Path

from .paths import FONT_SOURCES, STATE, WINE, WINESERVER, LabError, check_packages, windows_environment
from .run import Run

# Fonts that Wine's dialogs use and that a machine without Windows lacks.
DIALOG_FONTS = ("Tahoma", "MS Shell Dlg", "MS Sans Serif", "Microsoft Sans Serif", "Arial")
LIBRARY = "x86_64-linux-gnu/wine/x86_64-unix/ntdll.so"
# Services that Wine starts with the first program: Windows' event log, drive letters, networks, devices. The program
# uses none of them, and each takes a process or two in every lab.
UNUSED_SERVICES, SERVICE_DISABLED = ("Eventlog", "MountMgr", "NDIS", "nsiproxy", "PlugPlay"), 4
# Every program compares its time zone with each one in the registry, so the template keeps only the lab's.
TIME_ZONES = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Time Zones\\"
LAB_TIME_ZONES = ["Greenwich Standard Time"]


def template_key():
    """A hash of everything that the template is built from."""
    digest = hashlib.sha256()
    for path in [Path(__file__), Path(__file__).with_name("fonts.py"), *FONT_SOURCES]:
        digest.update(path.read_bytes())
    for path in [Path(WINE), Path(WINESERVER), Path("/usr/lib") / LIBRARY]:
        facts = path.stat() if path.exists() else None
        digest.update(f"{path} {facts and (facts.st_size, facts.st_mtime_ns)}".encode())
    return digest.hexdigest()[:16]


@contextmanager
def template_lock():
    STATE.mkdir(parents=True, exist_ok=True)
    with open(STATE / "template.lock", "w") as handle:
        fcntl.flock(handle, fcntl.LOCK_EX)
        yield


def registry_text(text):
    """Escapes a text for use between quotation marks in one of Wine's .reg files, which are ASCII."""
    escaped = ""
    for unit in memoryview(text.encode("utf-16-le")).cast("H"):
        letter = chr(unit)
        escaped += f"\\{letter}" if letter in '\\"' else letter if 32 <= unit < 127 else f"\\x{unit:04x}"
    return escaped


def registry_value(value):
    """str is REG_SZ, int is REG_DWORD, bytes is REG_BINARY, (type, bytes) is any type."""
    if isinstance(value, str):
        return f'"{registry_text(value)}"'
    if isinstance(value, int):
        return f"dword:{value:08x}"
    kind, data = value if isinstance(value, tuple) else (3, value)
    return f"hex({kind:x}):" + ",".join(f"{byte:02x}" for byte in data)


def append_registry(prefix, key, values):
    """Writes values (a dict) under a key such as "HKCU\\\\Software\\\\X" of a prefix without running processes."""
    root, path = key.split("\\", 1)
    file = {"HKCU": "user.reg", "HKLM": "system.reg"}[root]
    lines = [f'"{registry_text(name)}"={registry_value(value)}' for name, value in values.items()]
    with open(prefix / file, "a", encoding="ascii") as handle:
        handle.write("\n[" + registry_text(path) + "] 1700000000\n" + "\n".join(lines) + "\n")


def remove_keys(prefix, below, kept):
    """Removes the keys below a key of HKLM, except the named ones, from a prefix without running processes."""
    start = "[" + registry_text(below)
    file = prefix / "system.reg"
    sections = re.split(r"(?m)^(?=\[)", file.read_text(encoding="ascii"))
    names = tuple(start + registry_text(name) for name in kept)
    file.write_text("".join(section for section in sections
                            if not section.startswith(start) or section.startswith(names)), encoding="ascii")


def make_template(target):
    """Creates the template prefix: Wine's first start, the preview fonts, no links to folders outside."""
    # Imported here because only the first start needs it.
    from .fonts import make_preview_fonts
    print("lab: creating the template prefix (once)", file=sys.stderr)
    run = Run(size=(800, 600))
    try:
        prefix = run.folder / "prefix"
        environment = windows_environment(prefix, run.display, run.home)
        log = open(run.folder / "wine.log", "wb")
        for command in (["wineboot", "-i"], ["winecfg", "-v", "win10"]):
            subprocess.run([WINE, *command], env=environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                           timeout=180, check=True)
        subprocess.run([WINESERVER, "-w"], env=environment, timeout=60, check=True)
        make_preview_fonts(prefix / "drive_c/windows/Fonts")
        for link in (prefix / "drive_c/users").glob("*/*"):
            if link.is_symlink():
                link.unlink()
                link.mkdir()
        append_registry(prefix, "HKCU\\Software\\Wine\\Fonts\\Replacements",
                        {name: "Segoe UI" for name in DIALOG_FONTS})
        remove_keys(prefix, TIME_ZONES, LAB_TIME_ZONES)
        for name in UNUSED_SERVICES:
            append_registry(prefix, f"HKLM\\System\\CurrentControlSet\\Services\\{name}", {"Start": SERVICE_DISABLED})
        (prefix / "drive_c/lab").mkdir()
        prefix.rename(target)
    finally:
        run.close()


def template():
    """The template's folder, created if none matches the current inputs. The caller must hold template_lock."""
    check_packages()
    wanted = STATE / f"template-{template_key()}"
    if not wanted.exists():
        for old in STATE.glob("template-*"):
            shutil.rmtree(old, ignore_errors=True)
        make_template(wanted)
    return wanted


def copy_prefix(target):
    """Creates a prefix at `target`. Windows' files are hard links; files that a run may write are copies."""
    with template_lock():
        source = template()
        target.mkdir()
        subprocess.run(["cp", "-al", source / "drive_c", target / "drive_c"], check=True)
    for name in ("users", "lab"):
        shutil.rmtree(target / "drive_c" / name)
        shutil.copytree(source / "drive_c" / name, target / "drive_c" / name, symlinks=True)
    for path in (source / "dosdevices", *source.glob("*.reg"), source / ".update-timestamp"):
        copy = shutil.copytree if path.is_dir() else shutil.copy2
        copy(path, target / path.name, **({"symlinks": True} if path.is_dir() else {}))


class Prefix:
    """A run's copy of the template. `folder` is the prefix, `drive_c` its drive C:."""

    def __init__(self, folder):
        self.folder = Path(folder)
        self.drive_c = self.folder / "drive_c"
        copy_prefix(self.folder)

    def path(self, windows_path):
        """The Linux path of a file on drive C: of this prefix."""
        if not windows_path.lower().startswith("c:\\"):
            raise LabError(f"{windows_path} is not on drive C:")
        return self.drive_c / windows_path[3:].replace("\\", "/")

    def replace_text(self, windows_path, text):
        """Replaces a file on drive C: in one step, because programs may read it at any time."""
        path = self.path(windows_path)
        temporary = path.with_suffix(".new")
        temporary.write_text(text, encoding="utf-8")
        os.replace(temporary, path)

    @property
    def roaming(self):
        """The signed-in user's roaming application-data folder."""
        users = [user for user in (self.drive_c / "users").iterdir() if user.name != "Public"]
        return users[0] / "AppData" / "Roaming"

    def put(self, source, windows_path):
        """Copies a file to drive C: and replaces an existing one. Never writes through a hard link to the template."""
        target = self.path(windows_path)
        target.parent.mkdir(parents=True, exist_ok=True)
        target.unlink(missing_ok=True)
        shutil.copyfile(source, target)
        return target
