"""A Windows desktop in which Ambrel is installed, upgraded and removed, and whose files and registry are compared."""

import re
import subprocess
from contextlib import contextmanager
from pathlib import Path

from ambrel_lab.processes import processes_of, read_bytes
from ambrel_packages.facts import read_publisher, read_version
from ambrel_packages.installer import make_installer
from desk import Desk, wait_until

VERSION, PUBLISHER = read_version(), read_publisher()
# Another version, with another number and a larger program file.
OTHER_VERSION = "9.75"
OTHER_BYTES = b"another version" * 100

USER_KEY = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion"
RUN_KEY, RUN_VALUE = f"{USER_KEY}\\Run", "Ambrel2"
APPROVED_KEY = f"{USER_KEY}\\Explorer\\StartupApproved\\Run"
UNINSTALL_KEY = f"{USER_KEY}\\Uninstall\\Ambrel"
SETUP, OTHER_SETUP, STAND_IN = "C:\\lab\\setup.exe", "C:\\lab\\other.exe", "C:\\lab\\stand_in.exe"
UNINSTALLER = "ambrel-uninstall.exe"
FAILED = 2


class InstallerDesk(Desk):
    """Nothing is installed at first. `home` is the folder into which the installer installs Ambrel by default."""

    def __enter__(self):
        super().__enter__()
        user = self.prefix.roaming.parents[1].name
        self.user_folder = f"C:\\users\\{user}"
        self.home = f"{self.user_folder}\\AppData\\Local\\Programs\\Ambrel"
        self.program_path = f"{self.home}\\ambrel.exe"
        return self

    def make_setups(self, work):
        """Compiles the installers of the built program and of another version into the Linux folder `work`."""
        program = self.build_dir / "ambrel.exe"
        other = Path(work) / "ambrel.exe"
        other.write_bytes(program.read_bytes() + OTHER_BYTES)
        for version, file, target in ((VERSION, program, SETUP), (OTHER_VERSION, other, OTHER_SETUP)):
            made = Path(work) / f"{version}.exe"
            make_installer(version, file, PUBLISHER, made)
            self.prefix.put(made, target)
        self.prefix.put(self.build_dir / "package" / "package_stand_in.exe", STAND_IN)
        self.programs = {VERSION: program.read_bytes(), OTHER_VERSION: other.read_bytes()}

    # User actions

    def setup(self, *switches, setup=SETUP, folder=None):
        """Runs an installer silently and returns its exit code."""
        return self.desktop.run([setup, "/S", *switches, *folder_switch(folder)], timeout=90)

    def start_setup(self, *switches, setup=SETUP, folder=None):
        """Starts an installer that shows its pages."""
        return self.desktop.start([setup, *switches, *folder_switch(folder)])

    def uninstall(self, folder=None):
        """Runs the uninstaller silently and waits until its copy in the temporary folder has ended."""
        self.start_uninstaller("/S", folder=folder)
        self.wait_for_uninstaller()

    def start_uninstaller(self, *switches, folder=None):
        self.desktop.run([f"{folder or self.home}\\{UNINSTALLER}", *switches], timeout=60)

    def wait_for_uninstaller(self):
        wait_until(lambda: not self.uninstaller_running(), "the end of the uninstaller")

    def uninstaller_running(self):
        return any(b"~nsu" in read_bytes(f"/proc/{pid}/cmdline") for pid in processes_of(self.prefix.folder))

    def page(self, text, title="Ambrel"):
        """Waits for the dialog that shows `text`."""
        def shown():
            return next((box for box in self.message_boxes()
                         if title in box.title and text in box.text.replace("\r\n", "\n")), None)
        return wait_until(shown, f"a page with '{text}'", state=lambda: [box.text for box in self.message_boxes()])

    def finish_page(self):
        """Waits for the installer's last page with its check boxes."""
        def shown():
            page = self.page("notification area")
            return page if "Launch Ambrel at startup" in page.buttons.values() else None
        return wait_until(shown, "the finish page with its check boxes")

    def box(self, caption, state=None):
        """(checked, enabled) of an installer's check box, after setting it to `state` if that is given."""
        words = [caption] if state is None else [caption, str(int(state))]
        child = self.desktop.start([STAND_IN, "box", *words], stdout=subprocess.PIPE)
        facts = child.stdout.readline().decode().split()
        assert child.wait() == 0, f"there is no box '{caption}'"
        return facts[0] == "checked=1", facts[1] == "enabled=1"

    def press_page_button(self, page, button=1):
        """Presses a page's button: 1 is Next, Install or Finish, 2 Cancel."""
        self.desktop.request("press", page.handle, button)

    @contextmanager
    def stand_in(self, *words, program=STAND_IN):
        """Runs a stand-in within the block; see stand_in.cpp."""
        child = self.desktop.start([program, *words], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        try:
            assert child.stdout.readline().strip() == b"ready"
            yield child
        finally:
            if child.poll() is None:
                child.kill()
            child.wait()

    # State

    def installed_version(self, folder=None):
        """The version whose program file is installed, None without one; a file of neither version fails."""
        file = self.prefix.path(f"{folder or self.home}\\ambrel.exe")
        if not file.exists():
            return None
        content = file.read_bytes()
        return next(version for version, program in self.programs.items() if program == content)

    def listing(self, folder=None):
        """Names of the files in the installed folder, None when there is no folder."""
        path = self.prefix.path(folder or self.home)
        return sorted(file.name for file in path.iterdir()) if path.exists() else None

    def files(self):
        """All files and folders of the drive except those of Windows: {path: size, or None for a folder}."""
        found = {}
        for path in self.prefix.drive_c.rglob("*"):
            name = str(path.relative_to(self.prefix.drive_c))
            if not name.startswith(("windows", "lab")):
                found[name] = path.stat().st_size if path.is_file() else None
        return found

    def registry(self, root):
        """All values below HKCU or HKLM: {(key, name): text as in a .reg file}; a key itself is (key, None)."""
        assert self.desktop.run(["reg", "export", root, "C:\\lab\\dump.reg", "/y"]) == 0
        text = self.prefix.path("C:\\lab\\dump.reg").read_bytes().decode("utf-16")
        found, key = {}, None
        for line in re.sub(r"\\\r\n *", "", text).split("\r\n"):
            if line.startswith("["):
                key = line[1:-1]
                found[key, None] = ""
            elif match := re.match(r'("(?:[^"\\]|\\.)*"|@)=(.*)', line):
                found[key, match.group(1).strip('"')] = match.group(2)
        return found

    def run_entry(self):
        return self.registry_get(RUN_KEY, RUN_VALUE)

    def listed(self, name):
        """A value of Ambrel's entry in the list of apps."""
        return self.registry_get(UNINSTALL_KEY, name)


def folder_switch(folder):
    """The switch for a folder, split at blanks: Wine would quote it otherwise, and NSIS accepts no quotes."""
    return f"/D={folder}".split(" ") if folder else []


def difference(before, after):
    """(new or changed entries, removed entries), both as dictionaries."""
    new = {key: value for key, value in after.items() if key not in before or before[key] != value}
    return new, {key: value for key, value in before.items() if key not in after}
