"""The Windows desktop of one prefix: its processes, and the resident tool that acts and asks inside it."""

import os
import select
import subprocess
import time
from pathlib import Path

from .places import WINE, LabError, windows_environment
from .prefix import append_registry
from .processes import end_processes
from .waiting import wait_until

NAME = "shell"
TOOL = "C:\\lab\\labtool.exe"
ANSWER_END = "\n\x04"
OK, NOT_FOUND, FAILED, USAGE = range(4)


class ToolError(LabError):
    """A tool answered that it could not do it."""


def escape(field):
    return (str(field).replace("\\", "\\\\").replace("\t", "\\t").replace("\n", "\\n").replace("\r", "\\r"))


def unescape(field):
    out, letters = "", iter(field)
    for letter in letters:
        out += {"t": "\t", "n": "\n", "r": "\r"}.get(following := next(letters, ""), following) \
            if letter == "\\" else letter
    return out


def facts(text):
    """name=value lines as a dict; whole numbers become int."""
    found = {}
    for line in text.splitlines():
        name, _, value = line.partition("=")
        try:
            found[name] = int(value, 0)
        except ValueError:
            found[name] = unescape(value)
    return found


class Desktop:
    """Every Windows process of the prefix lands in the virtual desktop that the registry names; no launcher is needed.

    The resident tool also keeps the desktop open: Wine closes one a second after its last program. The desktop is
    opened by the first thing that needs it, before anything else starts: two programs that start at once in a sleeping
    prefix get in each other's way.
    """

    def __init__(self, prefix, run, size, dpi, tool_file, debug, extra_environment=None):
        self.prefix, self.log = prefix, run.folder / "wine.log"
        self.environment = windows_environment(prefix.folder, run.display, run.home, debug)
        self.environment.update(extra_environment or {})
        self.tool_process = None
        self.has_tool = bool(tool_file)
        self.children = []
        append_registry(prefix.folder, "HKCU\\Software\\Wine\\Explorer", {"Desktop": NAME})
        append_registry(prefix.folder, "HKCU\\Software\\Wine\\Explorer\\Desktops", {NAME: f"{size[0]}x{size[1]}"})
        append_registry(prefix.folder, "HKCU\\Control Panel\\Desktop", {"LogPixels": dpi})
        if tool_file:
            if not Path(tool_file).exists():
                raise LabError(f"{tool_file} has not been built")
            prefix.put(tool_file, TOOL)

    def open(self):
        """Starts the resident tool and waits until the taskbar is there. Does nothing when that has been done."""
        if self.has_tool and not self.started():
            self.tool("windows")
            wait_until(lambda: self.facts("window", "Shell_TrayWnd"), 30.0, "the taskbar")

    def start(self, command, **options):
        """Starts a Windows program (a list: its path and arguments) in the desktop; its messages go to the log."""
        self.open()
        return self._start(command, **options)

    def _start(self, command, **options):
        options = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "env": self.environment,
                   "cwd": self.prefix.drive_c, **options}
        with open(self.log, "ab") as log:
            child = subprocess.Popen([WINE, *command], **{"stderr": log, **options})
        self.children.append(child)
        return child

    def started(self):
        return self.tool_process is not None

    def run(self, command, timeout=60):
        """Runs a Windows program to its end and returns its exit code (its low eight bits)."""
        return self.start(command).wait(timeout)

    def tool(self, name, *arguments, timeout=20.0):
        """Asks the resident tool; returns (result, text)."""
        if self.tool_process is None or self.tool_process.poll() is not None:
            self.tool_process = self._start([TOOL, "serve"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        line = "\t".join(escape(field) for field in (name, *arguments)) + "\n"
        self.tool_process.stdin.write(line.encode())
        self.tool_process.stdin.flush()
        return self._read_answer(name, time.monotonic() + timeout)

    def _read_answer(self, name, deadline):
        source, answer = self.tool_process.stdout.fileno(), b""
        while not (ANSWER_END.encode() in answer and answer.endswith(b"\n")):
            ready, _, _ = select.select([source], [], [], max(0.0, deadline - time.monotonic()))
            chunk = os.read(source, 65536) if ready else b""
            if not chunk:
                self.tool_process.kill()
                self.tool_process.wait()
                raise ToolError(f"the tool '{name}' {'ended' if ready else 'did not answer in time'}")
            answer += chunk
        text, _, result = answer.decode("utf-8").rpartition(ANSWER_END)
        return int(result), text

    def ask(self, name, *arguments, timeout=20.0):
        """The text that the tool answers; ToolError when it could not do it."""
        result, text = self.tool(name, *arguments, timeout=timeout)
        if result != OK:
            raise ToolError(f"the tool '{name}' {arguments} answered {result}: {text.strip()}")
        return text

    def facts(self, name, *arguments):
        """The tool's name=value lines as a dict, or None when what was asked about is not there."""
        result, text = self.tool(name, *arguments)
        return facts(text) if result == OK else None

    def rows(self, name, *arguments):
        """The tool's tab-separated lines as lists of fields; none when there is nothing to list."""
        result, text = self.tool(name, *arguments)
        return [[unescape(field) for field in line.split("\t")] for line in text.splitlines() if line]

    def start_tool(self, name, *arguments, timeout=20.0):
        """Starts a tool that stays (foreground, clipboard-hold) and returns its process once it says it is ready."""
        child = self.start([TOOL, name, *arguments], stdout=subprocess.PIPE)
        ready, _, _ = select.select([child.stdout], [], [], timeout)
        if not ready or not child.stdout.readline().startswith(b"ready"):
            raise ToolError(f"the tool '{name}' did not get ready")
        return child

    def close(self):
        end_processes(self.prefix.folder)
        for child in self.children:
            child.wait()
            for stream in (child.stdin, child.stdout):
                if stream:
                    try:
                        stream.close()
                    except BrokenPipeError:
                        pass
