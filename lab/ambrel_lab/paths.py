"""Paths of the lab, and the environment of its Windows processes."""

import shutil
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DEFAULT_BUILD = ROOT / "build" / "release"
STATE = ROOT / "build" / "lab"
# Keeps the exit codes of Wine's processes on a busy machine; see linux/prompt_exit.c.
PROMPT_EXIT = DEFAULT_BUILD / "lab" / "prompt_exit.so"
# Compiled Python modules, outside the source folders.
BYTECODE = ROOT / "build" / "pycache"
# The evidence of failed tests.
FAILURES = ROOT / "build" / "failures"
# One line for each action that a test run has repeated because of Wine.
REPETITIONS = ROOT / "build" / "repetitions.log"
WINE_FOLDER = Path("/usr/lib/wine")
WINE = str(WINE_FOLDER / "wine64")
WINESERVER = str(WINE_FOLDER / "wineserver64")
LIBRARIES = Path("/usr/lib/x86_64-linux-gnu")
OPEN_SANS = Path("/usr/share/fonts/truetype/open-sans")
DEJAVU = Path("/usr/share/fonts/truetype/dejavu")
FONT_SOURCES = [OPEN_SANS / "OpenSans-Regular.ttf", OPEN_SANS / "OpenSans-Bold.ttf", DEJAVU / "DejaVuSans.ttf",
                DEJAVU / "DejaVuSans-Bold.ttf", DEJAVU / "DejaVuSansMono.ttf", DEJAVU / "DejaVuSansMono-Bold.ttf"]


class LabError(Exception):
    """An operation of the lab failed; the text describes why."""


def check_packages():
    """Raises LabError if files of the packages in lab/packages.txt are missing."""
    wanted = [WINE, WINESERVER, "/usr/lib/xorg/modules/drivers/dummy_drv.so", LIBRARIES / "libXtst.so.6", *FONT_SOURCES]
    missing = [str(path) for path in wanted if not Path(path).exists()]
    if not shutil.which("Xorg"):
        missing.append("Xorg")
    if missing:
        raise LabError(f"missing: {', '.join(missing)}; lab/packages.txt lists the Debian packages to install")


def windows_environment(prefix, display, home, debug="-all"):
    """The complete environment of a Windows process; nothing is inherited from the caller.

    `debug` is WINEDEBUG. Wine finds the prefix's fonts only, regardless of the machine's, and writes nothing outside
    `home` and the prefix.
    """
    return {
        **({"LD_PRELOAD": str(PROMPT_EXIT)} if PROMPT_EXIT.exists() else {}),
        "PATH": "/usr/local/bin:/usr/bin:/bin",
        "HOME": str(home),
        "USER": "ambrel",
        "LANG": "C.UTF-8",
        "LC_ALL": "C.UTF-8",
        "TZ": "UTC",
        "DISPLAY": display,
        "WINEPREFIX": str(prefix),
        "WINEDEBUG": debug,
        # Wine does not offer to download Mono or Gecko and does not write menu entries into the user's home, and a
        # program that crashes ends immediately instead of waiting for a debugger.
        "WINEDLLOVERRIDES": "mscoree,mshtml=;winemenubuilder.exe=d;winedbg.exe=d",
        "FONTCONFIG_FILE": str(Path(home) / "fonts.conf"),
        "XDG_CACHE_HOME": str(Path(home) / "cache"),
        "XDG_RUNTIME_DIR": str(home),
        # Debian's Wine keeps its server's socket here on a machine without /run/user.
        "TMPDIR": str(home),
    }


def make_home(folder):
    """Creates the home folder that windows_environment expects, without any of the machine's fonts."""
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "fonts.conf").write_text(
        '<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig></fontconfig>\n')
    return folder
