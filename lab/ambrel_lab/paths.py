"""Where the lab keeps things and what environment its Windows processes get."""

import shutil
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DEFAULT_BUILD = ROOT / "build" / "release"
STATE = ROOT / "build" / "lab"
WINE_FOLDER = Path("/usr/lib/wine")
WINE = str(WINE_FOLDER / "wine64")
WINESERVER = str(WINE_FOLDER / "wineserver64")
LIBRARIES = Path("/usr/lib/x86_64-linux-gnu")
OPEN_SANS = Path("/usr/share/fonts/truetype/open-sans")
DEJAVU = Path("/usr/share/fonts/truetype/dejavu")
FONT_SOURCES = [OPEN_SANS / "OpenSans-Regular.ttf", OPEN_SANS / "OpenSans-Bold.ttf", DEJAVU / "DejaVuSans.ttf",
                DEJAVU / "DejaVuSans-Bold.ttf", DEJAVU / "DejaVuSansMono.ttf", DEJAVU / "DejaVuSansMono-Bold.ttf"]


class LabError(Exception):
    """The lab could not do what was asked; the text says what to look at."""


def check_packages():
    """Raises LabError naming the first thing that lab/packages.txt would have brought."""
    wanted = [WINE, WINESERVER, "/usr/lib/xorg/modules/drivers/dummy_drv.so", LIBRARIES / "libXtst.so.6", *FONT_SOURCES]
    missing = [str(path) for path in wanted if not Path(path).exists()]
    if not shutil.which("Xorg"):
        missing.append("Xorg")
    if missing:
        raise LabError(f"missing: {', '.join(missing)}; lab/packages.txt lists the Debian packages to install")


def windows_environment(prefix, display, home, debug="-all"):
    """The whole environment of a Windows process: nothing of the caller's own leaks in.

    `debug` is WINEDEBUG. Wine finds no fonts but the prefix's, whatever the machine has installed, and writes
    nothing outside `home` and the prefix.
    """
    return {
        "PATH": "/usr/local/bin:/usr/bin:/bin",
        "HOME": str(home),
        "USER": "ambrel",
        "LANG": "C.UTF-8",
        "LC_ALL": "C.UTF-8",
        "TZ": "UTC",
        "DISPLAY": display,
        "WINEPREFIX": str(prefix),
        "WINEDEBUG": debug,
        # No download of Mono or Gecko is offered, no menu entries are written to the person's home, and a
        # program that crashes ends at once instead of waiting for a debugger.
        "WINEDLLOVERRIDES": "mscoree,mshtml=;winemenubuilder.exe=d;winedbg.exe=d",
        "FONTCONFIG_FILE": str(Path(home) / "fonts.conf"),
        "XDG_CACHE_HOME": str(Path(home) / "cache"),
        "XDG_RUNTIME_DIR": str(home),
        # Where Debian's Wine keeps its server's socket on a machine without /run/user.
        "TMPDIR": str(home),
    }


def make_home(folder):
    """Creates the home folder that windows_environment expects, without any font of the machine in it."""
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "fonts.conf").write_text(
        '<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig></fontconfig>\n')
    return folder
