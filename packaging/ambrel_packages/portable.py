"""The portable zip: the program, the guide, the changes, checksums."""

import hashlib
import zipfile

from .facts import ROOT, PackageFile, checksum_text
from .page import make_page

GUIDE = [ROOT / "docs" / "guide.md", ROOT / "docs" / "support-bundle.md"]
CHANGES = [ROOT / "CHANGELOG.md"]
# The earliest time that a zip can store. A fixed time makes the zip reproducible.
MOMENT = (1980, 1, 1, 0, 0, 0)
READABLE_FILE = 0o100644 << 16


def portable_folder(version):
    """The folder in the zip that holds everything."""
    return f"Ambrel-{version}"


def portable_content(version, program):
    """The files of the zip in their order: {name: bytes}."""
    content = {
        "ambrel.exe": program,
        "guide.html": make_page(f"Ambrel {version}: a guide", GUIDE),
        "changes.html": make_page(f"Ambrel {version}: changes", CHANGES),
    }
    files = [PackageFile(name, len(data), hashlib.sha256(data).hexdigest()) for name, data in content.items()]
    return {**content, "SHA256SUMS": checksum_text(files).encode("ascii")}


def make_portable(version, program, target):
    """Writes the zip with fixed entries: order, times and permissions do not depend on the machine."""
    with zipfile.ZipFile(target, "w") as archive:
        for name, data in portable_content(version, program).items():
            entry = zipfile.ZipInfo(f"{portable_folder(version)}/{name}", MOMENT)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = READABLE_FILE
            archive.writestr(entry, data, compresslevel=9)
