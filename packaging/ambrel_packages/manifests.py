"""Manifests for winget and Scoop, and the release notes."""

import json
import re
from pathlib import Path

from .facts import MINIMUM_BUILD, ROOT, PackagingError
from .portable import portable_folder

CHANGELOG = ROOT / "CHANGELOG.md"
SCHEMA = "1.6.0"
SHORT_DESCRIPTION = "Makes the screen warmer and dimmer for the night."
# The name of the installer's key in Windows' list of apps.
PRODUCT_CODE = "Ambrel"
NO_LICENCE = "Not chosen yet"


def quoted(text):
    """`text` as a quoted YAML scalar."""
    return "'" + text.replace("'", "''") + "'"


def download_folder(publisher, version):
    return publisher.download.replace("{version}", version)


def winget_file(kind, publisher, version, lines):
    """One file of a winget manifest: the lines common to all three, and its own."""
    note = "" if publisher.licence else (
        "# Not to be submitted yet: the owner of Ambrel has to choose a licence (packaging/publisher.ini).\n")
    head = [f"PackageIdentifier: {publisher.word}.Ambrel", f"PackageVersion: {quoted(version)}"]
    tail = [f"ManifestType: {kind}", f"ManifestVersion: {SCHEMA}"]
    schema = f"# yaml-language-server: $schema=https://aka.ms/winget-manifest.{kind}.{SCHEMA}.schema.json\n"
    return note + schema + "---\n" + "\n".join(head + lines + tail) + "\n"


def winget_manifest(version, publisher, installer):
    """The three files of winget's manifest: {name: text}."""
    name = f"{publisher.word}.Ambrel"
    folder = download_folder(publisher, version)
    return {
        f"{name}.yaml": winget_file("version", publisher, version, ["DefaultLocale: en-US"]),
        f"{name}.installer.yaml": winget_file("installer", publisher, version, [
            f"MinimumOSVersion: 10.0.{MINIMUM_BUILD}.0",
            "InstallerType: nullsoft",
            "Scope: user",
            "InstallModes:",
            "  - interactive",
            "  - silent",
            "UpgradeBehavior: install",
            f"ProductCode: {PRODUCT_CODE}",
            "Installers:",
            "  - Architecture: x64",
            f"    InstallerUrl: {quoted(f'{folder}/{installer.name}')}",
            f"    InstallerSha256: {installer.sha256.upper()}",
        ]),
        f"{name}.locale.en-US.yaml": winget_file("defaultLocale", publisher, version, [
            "PackageLocale: en-US",
            f"Publisher: {quoted(publisher.name)}",
            f"PublisherSupportUrl: {quoted(publisher.support)}",
            "PackageName: Ambrel",
            f"PackageUrl: {quoted(publisher.homepage)}",
            f"License: {quoted(publisher.licence or NO_LICENCE)}",
            f"ShortDescription: {quoted(SHORT_DESCRIPTION)}",
        ]),
    }


def scoop_manifest(version, publisher, portable):
    """The text of Scoop's manifest, which installs the portable zip."""
    generic = publisher.download.replace("{version}", "$version")
    manifest = {
        "version": version,
        "description": SHORT_DESCRIPTION,
        "homepage": publisher.homepage,
        "license": publisher.licence or "Unknown",
        "architecture": {"64bit": {"url": f"{download_folder(publisher, version)}/{portable.name}",
                                   "hash": portable.sha256}},
        "extract_dir": portable_folder(version),
        "shortcuts": [["ambrel.exe", "Ambrel"]],
        "notes": "Turn off LAUNCH AT STARTUP and quit Ambrel before you uninstall it.",
        "autoupdate": {
            "architecture": {"64bit": {"url": f"{generic}/{portable.name.replace(version, '$version')}"}},
            "extract_dir": portable_folder("$version"),
            "hash": {"url": "$baseurl/SHA256SUMS"},
        },
    }
    return json.dumps(manifest, indent=4) + "\n"


def changes_of(version):
    """The section of a version in CHANGELOG.md, without its heading."""
    parts = re.split(r"^## ", CHANGELOG.read_text(encoding="utf-8"), flags=re.M)[1:]
    for part in parts:
        heading, _, text = part.partition("\n")
        if heading.split()[0] == version:
            return text.strip()
    raise PackagingError(f"{CHANGELOG} has no section for {version}")


def release_notes(version, files):
    """The text of the release page: the changes, and each file with its size and checksum."""
    rows = "".join(f"| {file.name} | {file.size:,} | `{file.sha256}` |\n" for file in files)
    return f"{changes_of(version)}\n\n| File | Bytes | SHA-256 |\n|---|---:|---|\n{rows}"


def write_manifests(version, publisher, installer, portable, folder):
    folder = Path(folder)
    for name, text in winget_manifest(version, publisher, installer).items():
        (folder / "winget").mkdir(exist_ok=True)
        (folder / "winget" / name).write_text(text, encoding="utf-8")
    (folder / "scoop").mkdir(exist_ok=True)
    (folder / "scoop" / "ambrel.json").write_text(scoop_manifest(version, publisher, portable), encoding="utf-8")
    (folder / "release-notes.md").write_text(release_notes(version, [installer, portable]), encoding="utf-8")
