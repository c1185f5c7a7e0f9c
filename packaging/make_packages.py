#!/usr/bin/python3
"""Builds the packages of a built program: make_packages.py PROGRAM FOLDER. Replaces the folder."""

import shutil
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.dont_write_bytecode = True

from ambrel_packages.facts import PackagingError, checksum_text, package_file  # noqa: E402
from ambrel_packages.facts import read_publisher, read_version  # noqa: E402
from ambrel_packages.installer import make_installer  # noqa: E402
from ambrel_packages.manifests import write_manifests  # noqa: E402
from ambrel_packages.portable import make_portable  # noqa: E402


def make_packages(program, folder):
    """Fills `folder` and returns the two packages, installer first."""
    program, folder = Path(program), Path(folder)
    version, publisher = read_version(), read_publisher()
    if not program.exists():
        raise PackagingError(f"{program} has not been built")
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    setup, portable = folder / f"Ambrel-{version}-setup.exe", folder / f"Ambrel-{version}-portable.zip"
    make_installer(version, program, publisher, setup)
    make_portable(version, program.read_bytes(), portable)
    files = [package_file(setup), package_file(portable)]
    (folder / "SHA256SUMS").write_text(checksum_text(files), encoding="ascii")
    write_manifests(version, publisher, *files, folder)
    return files


def main():
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        for file in make_packages(sys.argv[1], sys.argv[2]):
            print(f"{file.sha256}  {file.name}  {file.size} bytes")
    except PackagingError as error:
        print(f"make_packages: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
