"""Facts that the packages share: version, publisher, sizes, checksums."""

import configparser
import hashlib
import re
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
VERSION_HEADER = ROOT / "src" / "res" / "version.h"
PUBLISHER = ROOT / "packaging" / "publisher.ini"
# The oldest Windows that the program runs on: Windows 10, version 1607.
MINIMUM_BUILD = 14393


class PackagingError(Exception):
    """A package cannot be built; the text gives the reason."""


@dataclass(frozen=True)
class Publisher:
    """The fields of packaging/publisher.ini, which explains them."""

    name: str
    word: str
    homepage: str
    support: str
    licence: str
    download: str


@dataclass(frozen=True)
class PackageFile:
    """A finished file, as a manifest describes it."""

    name: str
    size: int
    sha256: str


def read_version():
    """The program's version, such as "1.5", from version.h, its only source."""
    found = re.search(r'^#define AMBREL_VERSION "([0-9]+\.[0-9]+)"$', VERSION_HEADER.read_text(encoding="utf-8"), re.M)
    if not found:
        raise PackagingError(f"{VERSION_HEADER} defines no version")
    return found.group(1)


def four_numbers(version):
    """The version in the form that a version resource needs: "1.5" becomes "1.5.0.0"."""
    return ".".join((version.split(".") + ["0"] * 4)[:4])


def read_publisher(path=PUBLISHER):
    reader = configparser.ConfigParser(interpolation=None)
    reader.read_string(Path(path).read_text(encoding="utf-8"))
    section = reader["publisher"]
    try:
        return Publisher(**{field: section[field].strip() for field in Publisher.__dataclass_fields__})
    except KeyError as missing:
        raise PackagingError(f"{path} lacks {missing}") from None


def package_file(path):
    content = Path(path).read_bytes()
    return PackageFile(Path(path).name, len(content), hashlib.sha256(content).hexdigest())


def checksum_text(files):
    """The input of `sha256sum --check`."""
    return "".join(f"{file.sha256}  {file.name}\n" for file in files)
