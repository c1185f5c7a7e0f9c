"""The installer, which NSIS compiles from packaging/installer/ambrel.nsi."""

import os
import subprocess
import tempfile
from pathlib import Path

from PIL import Image

from .facts import MINIMUM_BUILD, ROOT, PackagingError, four_numbers

SCRIPT = ROOT / "packaging" / "installer" / "ambrel.nsi"
ICON = ROOT / "src" / "res" / "app.ico"
WARMTH = ROOT / "docs" / "pictures" / "warmth.png"
# Twice the size at 96 DPI, so that the picture stays sharp at 200%.
WIZARD_SIZE = (328, 628)
WIZARD_ICON = 128
WIZARD_ICON_TOP = 120
STRIP = (148, 300, 180, 560)  # left, top, right, bottom
STRIP_SOURCE_HEIGHT = 64  # the rows of the picture above its scale
BACKGROUND = (13, 13, 13)  # that of the popup


def wizard_picture():
    """The picture at the left of the first and the last page: the program's icon over the filter's colours."""
    picture = Image.new("RGB", WIZARD_SIZE, BACKGROUND)
    icon = Image.open(ICON).convert("RGBA").resize((WIZARD_ICON, WIZARD_ICON), Image.LANCZOS)
    picture.paste(icon, ((WIZARD_SIZE[0] - WIZARD_ICON) // 2, WIZARD_ICON_TOP), icon)
    colours = Image.open(WARMTH).convert("RGB")
    colours = colours.crop((0, 0, colours.width, STRIP_SOURCE_HEIGHT)).transpose(Image.ROTATE_270)
    left, top, right, bottom = STRIP
    picture.paste(colours.resize((right - left, bottom - top), Image.BOX), (left, top))
    return picture


def make_installer(version, program, publisher, target):
    """Compiles the installer of the program file `program` to `target`. The result is reproducible."""
    with tempfile.TemporaryDirectory() as folder:
        wizard = Path(folder) / "wizard.bmp"
        wizard_picture().save(wizard)
        facts = {
            "VERSION": version, "VERSION_NUMBERS": four_numbers(version), "MINIMUM_BUILD": MINIMUM_BUILD,
            "PUBLISHER": publisher.name, "HOMEPAGE": publisher.homepage, "SUPPORT": publisher.support,
            "PROGRAM_FILE": Path(program).resolve(), "ICON_FILE": ICON, "WIZARD_FILE": wizard,
            "OUTPUT": Path(target).resolve(),
        }
        # All warnings are errors, except the one about a missing copyright.
        command = ["makensis", "-V2", "-WX", "-NOCONFIG", *(f"-D{name}={value}" for name, value in facts.items()),
                   "-X!pragma warning disable 9100", str(SCRIPT)]
        done = subprocess.run(command, capture_output=True, text=True, env={**os.environ, "LC_ALL": "C.UTF-8"})
    if done.returncode != 0:
        raise PackagingError(f"makensis failed:\n{done.stdout}{done.stderr}")
