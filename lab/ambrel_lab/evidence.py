"""Evidence of a failure: screenshots, the list of windows, and the logs. The list of repetitions."""

import shutil

from . import paths
from .paths import LabError
from .processes import describe_processes


def record_repetition(what):
    """Adds an action to the list that ./test.sh prints. The output of a test that passes is not shown."""
    with paths.REPETITIONS.open("a", encoding="utf-8") as repetitions:
        repetitions.write(f"{what}\n")


def save_evidence(lab, folder):
    """Writes into `folder` all of these that are available: screen.png (without the gamma ramp), eye.png (with it),
    windows.txt, processes.txt, events.log, settings.ini, wine.log, xorg.log, xorg.out. missing.txt lists the rest with
    the reasons."""
    folder.mkdir(parents=True, exist_ok=True)
    missing = []

    def attempt(what, act):
        try:
            act()
        except (LabError, OSError, AttributeError, LookupError, ValueError) as error:
            missing.append(f"{what}: {error}")

    attempt("screen", lambda: lab.screenshot(folder / "screen.png"))
    attempt("eye", lambda: lab.eye_picture(folder / "eye.png"))
    attempt("processes", lambda: (folder / "processes.txt").write_text(describe_processes(lab.folder / "prefix")))
    attempt("windows", lambda: (folder / "windows.txt").write_text(describe_windows(lab)))
    for name, path in (("events.log", lambda: lab.events_path), ("settings.ini", lambda: lab.settings_path),
                       ("wine.log", lambda: lab.folder / "wine.log"), ("xorg.log", lambda: lab.folder / "xorg.log"),
                       ("xorg.out", lambda: lab.folder / "xorg.out")):
        attempt(name, lambda: shutil.copyfile(path(), folder / name))
    if missing:
        (folder / "missing.txt").write_text("\n".join(missing) + "\n")


def describe_windows(lab):
    """Describes the windows, topmost first, the popup, the tray icons, message boxes and the program's processes."""
    if not lab.desktop.started():
        return "the desktop has not been started\n"
    lines = [repr(window) for window in lab.windows()]
    lines += [f"popup: {lab.window_facts()}", f"icons: {lab.tray_icons()}",
              f"boxes: {lab.message_boxes()}", f"program: {lab.program_pids()}"]
    return "\n".join(lines) + "\n"
