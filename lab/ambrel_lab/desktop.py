"""The Windows desktop of one prefix: its processes, and the resident tool that executes commands inside it."""

import json
import os
import select
import subprocess
import time
from pathlib import Path

from .paths import WINE, LabError, windows_environment
from .prefix import append_registry
from .processes import end_processes, on_processors
from .waiting import TIMEOUT, wait_until

NAME = "shell"
TOOL = "C:\\lab\\labtool.exe"
OK, NOT_FOUND, FAILED, USAGE = range(4)


class ToolError(LabError):
    """A command of the tool failed."""


class Desktop:
    """Every Windows process of the prefix runs in the virtual desktop that the registry names; no launcher is needed.

    The resident tool also keeps the desktop open: Wine closes a desktop one second after its last program ends. The
    first operation that needs the desktop opens it before it starts a program: two programs that start simultaneously
    in a prefix without running processes disturb each other.
    """

    def __init__(self, prefix, run, size, dpi, tool_file, debug, extra_environment=None):
        self.prefix, self.log, self.processors = prefix, run.folder / "wine.log", run.processors
        self.environment = windows_environment(prefix.folder, run.display, run.home, debug)
        self.environment.update(extra_environment or {})
        self.tool_process = None
        self.has_tool, self.has_taskbar = bool(tool_file), False
        self.children = []
        append_registry(prefix.folder, "HKCU\\Software\\Wine\\Explorer", {"Desktop": NAME})
        append_registry(prefix.folder, "HKCU\\Software\\Wine\\Explorer\\Desktops", {NAME: f"{size[0]}x{size[1]}"})
        append_registry(prefix.folder, "HKCU\\Control Panel\\Desktop", {"LogPixels": dpi})
        if tool_file:
            if not Path(tool_file).exists():
                raise LabError(f"{tool_file} has not been built")
            prefix.put(tool_file, TOOL)

    def open(self):
        """Starts the resident tool and waits for the taskbar. Does nothing if the desktop is open."""
        if self.has_tool and not self.has_taskbar:
            # Listing windows creates the desktop; looking for one window does not.
            self.tool("windows")
            wait_until(lambda: self.facts("window", "Shell_TrayWnd"), "the taskbar", state=lambda: self.rows("windows"))
            self.has_taskbar = True

    def start(self, command, **options):
        """Starts a Windows program (a list of its path and arguments) in the desktop and logs its standard error."""
        self.open()
        return self._start(command, **options)

    def _start(self, command, **options):
        options = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "env": self.environment,
                   "cwd": self.prefix.drive_c, **options}
        with open(self.log, "ab") as log, on_processors(self.processors):
            child = subprocess.Popen([WINE, *command], **{"stderr": log, **options})
        self.children.append(child)
        return child

    def started(self):
        return self.tool_process is not None

    def run(self, command, timeout=60):
        """Runs a Windows program until it exits and returns the low eight bits of its exit code."""
        return self.start(command).wait(timeout)

    def tool(self, name, *arguments, timeout=TIMEOUT):
        """Sends a command to the resident tool and returns (result, answer)."""
        if self.tool_process is None or self.tool_process.poll() is not None:
            self.tool_process = self._start([TOOL, "serve"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        request = json.dumps([name, *map(str, arguments)], ensure_ascii=False) + "\n"
        self.tool_process.stdin.write(request.encode())
        self.tool_process.stdin.flush()
        answer = json.loads(self._read_line(name, time.monotonic() + timeout))
        return answer["result"], answer["answer"]

    def _read_line(self, name, deadline):
        source, line = self.tool_process.stdout.fileno(), b""
        while not line.endswith(b"\n"):
            ready, _, _ = select.select([source], [], [], max(0.0, deadline - time.monotonic()))
            chunk = os.read(source, 65536) if ready else b""
            if not chunk:
                self.tool_process.kill()
                self.tool_process.wait()
                raise ToolError(f"the tool '{name}' {'ended' if ready else 'did not answer in time'}")
            line += chunk
        return line

    def request(self, name, *arguments, timeout=TIMEOUT):
        """The tool's answer (None, a number, text, a list or a dict). Raises ToolError if the command fails."""
        result, answer = self.tool(name, *arguments, timeout=timeout)
        if result != OK:
            raise ToolError(f"the tool '{name}' {arguments} returned {result}: {answer}")
        return answer

    def facts(self, name, *arguments):
        """The tool's answer, or None if the object does not exist. Raises ToolError if the command fails."""
        result, answer = self.tool(name, *arguments)
        if result not in (OK, NOT_FOUND):
            raise ToolError(f"the tool '{name}' {arguments} returned {result}: {answer}")
        return answer if result == OK else None

    def rows(self, name, *arguments):
        """The tool's answer as a list, empty if there is nothing to list."""
        return self.facts(name, *arguments) or []

    def start_tool(self, name, *arguments, timeout=TIMEOUT):
        """Starts a tool that keeps running (foreground, clipboard-hold, mutex-hold). Returns its process once it is ready."""
        child = self.start([TOOL, name, *arguments], stdout=subprocess.PIPE)
        ready, _, _ = select.select([child.stdout], [], [], timeout)
        if not ready or not child.stdout.readline().startswith(b"ready"):
            raise ToolError(f"the tool '{name}' did not become ready")
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
