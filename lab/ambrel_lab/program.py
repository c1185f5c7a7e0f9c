"""The program in a lab: its files, its process, its messages. Mixed into Lab."""

import time
from pathlib import Path

from .paths import LabError
from .popup import WINDOW_CLASS
from .processes import kill, processes_named, processor_time
from .waiting import TIMEOUT, wait_until

WM_PAINT = 0xF
ERROR_TIMEOUT = 1460


class ProgramActions:
    """Needs `prefix`, `desktop`, `build_dir` and the icons of Lab."""

    def install_program(self, exe=None, target="C:\\Ambrel\\ambrel.exe"):
        """Copies the program (by default the built one) to `target` and makes the copy this lab's program."""
        exe = Path(exe or self.build_dir / "ambrel.exe")
        if not exe.exists():
            raise LabError(f"{exe} has not been built")
        self.program_path = target
        return self.prefix.put(exe, target)

    def start_program(self, *arguments):
        """Starts the installed program and returns its process. A second call starts a second instance."""
        self.program = self.desktop.start([self.program_path, *arguments])
        return self.program

    @property
    def program_image(self):
        return self.program_path.rsplit("\\", 1)[-1]

    def program_pids(self):
        """Linux process ids of all running instances, including those that Windows started."""
        return processes_named(self.prefix.folder, self.program_image)

    def program_running(self):
        for child in self.desktop.children:
            child.poll()
        return bool(self.program_pids())

    def wait_for_exit(self, timeout=TIMEOUT):
        """Waits until no instance runs. Returns the low eight bits of the exit code of start_program's last process."""
        wait_until(lambda: not self.program_running(), f"the exit of {self.program_image}", timeout,
                   state=lambda: (self.program_pids(), self.windows()))
        return self.program.wait() if self.program else None

    def kill_program(self):
        """Kills every instance, like a crash: without its clean-up. Then removes its icon from the taskbar."""
        killed = self.program_pids()
        for pid in killed:
            kill(pid)
        self.wait_for_exit()
        # Until then the program's mutex exists, and a new program takes itself for a second instance.
        if killed:
            wait_until(lambda: not self.desktop.facts("process", self.program_image),
                       f"the removal of {self.program_image} from Windows' list of processes", state=self.program_pids)
            self.remove_dead_icons()

    def processor_seconds(self):
        """Processor time used so far by the first running instance."""
        return processor_time(self.program_pids()[0])

    def processor_share(self, seconds):
        """The share of one processor (0.01 is 1%) that the program uses in the next `seconds`. Resolution: 10 ms."""
        before = self.processor_seconds()
        time.sleep(seconds)
        return (self.processor_seconds() - before) / seconds

    def gdi_objects(self):
        """The number of the program's GDI objects."""
        return self.desktop.facts("process", self.program_image)["gdi"]

    def open_handles(self):
        """The number of the program's open handles: files, events, threads, registry keys."""
        return self.desktop.facts("process", self.program_image)["handles"]

    def post_message(self, message, wparam=0, lparam=0, target=WINDOW_CLASS):
        self.desktop.request("message", target, "post", message, wparam, lparam)

    def send_message(self, message, wparam=0, lparam=0, target=WINDOW_CLASS, timeout=TIMEOUT):
        """The window procedure's result as a signed number. Raises ToolError if the message cannot be sent."""
        answer = self.desktop.request("message", target, "send", message, wparam, lparam, int(timeout * 1000),
                                  timeout=timeout + TIMEOUT)
        return answer["result"]

    def call_window(self, message, wparam=0, lparam=0, target=WINDOW_CLASS, timeout=TIMEOUT):
        """Like send_message, but COM allows the program to make calls during the message, as in a timer."""
        answer = self.desktop.request("message", target, "call", message, wparam, lparam, int(timeout * 1000),
                                  timeout=timeout + TIMEOUT)
        return answer["result"]

    def paint(self):
        """Makes the popup paint what is out of date. Windows paints only when no other message waits."""
        self.send_message(WM_PAINT)

    def send_data(self, message, wparam, data, target=WINDOW_CLASS):
        """Sends a message whose lParam points to a copy of `data` in the program's memory. Returns the result."""
        return self.desktop.request("message-data", target, message, wparam, data.hex())["result"]

    def synchronise(self, target=WINDOW_CLASS):
        """Waits until a window has handled what its program is doing. Does nothing if the window does not exist."""
        _, answer = self.desktop.tool("message", target, "send", 0, 0, 0, int(TIMEOUT * 1000), timeout=2 * TIMEOUT)
        if (answer or {}).get("error") == ERROR_TIMEOUT:
            raise LabError(f"{target} has handled no message for {TIMEOUT:g} s")

    def random_messages(self, seed, count, target=WINDOW_CLASS):
        """Sends and posts `count` random messages without pointers: {"sent", "posted", "unanswered"}."""
        return self.desktop.request("messages-random", target, seed, count, timeout=TIMEOUT + count)

    @property
    def settings_folder(self):
        return self.prefix.roaming / "Ambrel2"

    @property
    def settings_path(self):
        return self.settings_folder / "settings.ini"

    @property
    def events_path(self):
        return self.settings_folder / "events.log"

    def settings_text(self):
        """The text of settings.ini with CR LF converted to LF, "" if the file does not exist."""
        return self._text(self.settings_path)

    def settings(self):
        """settings.ini as {key: text}, regardless of sections."""
        lines = [line.partition("=") for line in self.settings_text().splitlines() if "=" in line]
        return {key.strip(): value.strip() for key, _, value in lines}

    def write_settings(self, content):
        """Writes settings.ini as the given bytes or text, or deletes it for None."""
        self._write(self.settings_path, content)

    def events_text(self):
        """The text of events.log with CR LF converted to LF, "" if the file does not exist."""
        return self._text(self.events_path)

    def write_events(self, content):
        self._write(self.events_path, content)

    @staticmethod
    def _text(path):
        try:
            return path.read_bytes().decode("utf-8", "replace").replace("\r\n", "\n")
        except FileNotFoundError:
            return ""

    @staticmethod
    def _write(path, content):
        path.parent.mkdir(parents=True, exist_ok=True)
        if content is None:
            path.unlink(missing_ok=True)
        else:
            path.write_bytes(content.encode("utf-8") if isinstance(content, str) else content)
