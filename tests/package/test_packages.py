"""The packages that ./package.sh makes: names, contents, reproducibility, and the facts in the manifests."""

import hashlib
import html
import json
import os
import re
import subprocess
import sys
import zipfile
from pathlib import Path

import pefile
import pytest

from ambrel_packages.facts import PackagingError, Publisher, four_numbers, read_publisher, read_version
from ambrel_packages.manifests import release_notes, scoop_manifest, winget_manifest
from ambrel_packages.page import make_page

ROOT = Path(__file__).resolve().parents[2]
PROGRAM = Path(os.environ.get("AMBREL_BUILD_DIR", ROOT / "build" / "release")) / "ambrel.exe"
VERSION = re.search(r'AMBREL_VERSION "(.*)"', (ROOT / "src/res/version.h").read_text()).group(1)
SETUP, PORTABLE = f"Ambrel-{VERSION}-setup.exe", f"Ambrel-{VERSION}-portable.zip"
OWNER = Publisher("O'Neil & Co", "ONeil", "https://o.example/", "https://o.example/help", "MIT",
                  "https://o.example/{version}")


def sha256(data):
    return hashlib.sha256(data).hexdigest()


@pytest.fixture(scope="module", name="packages")
def packages_fixture(tmp_path_factory):
    return make(tmp_path_factory.mktemp("packages") / "first")


def make(folder):
    """Makes the packages as package.sh does. Neither the time zone nor the locale may affect them."""
    environment = {**os.environ, "TZ": "Pacific/Chatham", "LC_ALL": "C", "PYTHONDONTWRITEBYTECODE": "1"}
    subprocess.run([sys.executable, ROOT / "packaging" / "make_packages.py", PROGRAM, folder], check=True,
                   capture_output=True, env=environment)
    return folder


def content(folder):
    return {str(file.relative_to(folder)): file.read_bytes() for file in folder.rglob("*") if file.is_file()}


def zip_content(packages):
    with zipfile.ZipFile(packages / PORTABLE) as archive:
        return {name: archive.read(name) for name in archive.namelist()}


def page_of(packages, name):
    return zip_content(packages)[f"Ambrel-{VERSION}/{name}"].decode("utf-8")


def test_the_names_of_the_packages_contain_the_version(packages):
    assert {SETUP, PORTABLE, "SHA256SUMS", "release-notes.md"} <= set(content(packages))


def test_two_runs_are_equal_to_the_byte(packages, tmp_path):
    assert content(make(tmp_path / "second")) == content(packages)


def test_the_checksums_match_the_packages(packages):
    subprocess.run(["sha256sum", "--check", "--strict", "SHA256SUMS"], cwd=packages, check=True, capture_output=True)
    assert len((packages / "SHA256SUMS").read_text().splitlines()) == 2


def test_the_zip_contains_the_program_the_guide_the_changes_and_their_checksums(packages):
    held = zip_content(packages)
    names = [f"Ambrel-{VERSION}/{name}" for name in ("ambrel.exe", "guide.html", "changes.html", "SHA256SUMS")]
    assert list(held) == names
    assert held[names[0]] == PROGRAM.read_bytes()
    sums = dict(reversed(line.split("  ")) for line in held[names[3]].decode().splitlines())
    assert sums == {name.partition("/")[2]: sha256(held[name]) for name in names[:3]}


@pytest.mark.parametrize("name", ["guide.html", "changes.html"])
def test_a_page_is_self_contained(packages, name):
    page = page_of(packages, name)
    anchors = set(re.findall(r'id="([^"]+)"', page))
    for target in re.findall(r'href="([^"]*)"', page):
        assert target.startswith(("http:", "https:", "mailto:")) or target[1:] in anchors, target
    for source in re.findall(r'src="([^"]*)"', page):
        assert source.startswith("data:image/png;base64,iVBOR")
    assert not re.search(r"<(script|link|iframe)", page)


def test_the_guides_page_contains_every_picture_and_heading_of_the_guide(packages):
    page, guide = page_of(packages, "guide.html"), (ROOT / "docs" / "guide.md").read_text(encoding="utf-8")
    assert len(re.findall("<img ", page)) >= len(re.findall(r"!\[", guide)) > 3
    for title in re.findall(r"^#+ (.*)$", guide, re.M):
        assert re.search(rf"<h[1-6] [^>]*>{re.escape(html.escape(title, quote=False))}</h", page), title
    # The page includes the report that the guide links to.
    assert '<a href="#support-bundle">The support report</a>' in page
    assert '<article id="support-bundle">' in page


def test_a_page_with_a_broken_link_is_rejected(tmp_path):
    document = tmp_path / "one.md"
    for text in ("[other](other.md)", "[part](#nowhere)", "![picture](none.png)"):
        document.write_text(f"# One\n\n{text}\n")
        with pytest.raises(PackagingError):
            make_page("One", [document])


def test_equal_headings_of_two_documents_get_different_anchors(tmp_path):
    for name in ("one", "two"):
        (tmp_path / f"{name}.md").write_text("# Title\n\n## Part & parcel\n\n[to](two.md#part--parcel)\n")
    page = make_page("Both", [tmp_path / "one.md", tmp_path / "two.md"]).decode()
    assert re.findall(r'id="([^"]+)"', page) == ["one", "one-title", "one-part--parcel",
                                                 "two", "two-title", "two-part--parcel"]
    assert re.findall(r'href="([^"]+)"', page) == ["#two-part--parcel"] * 2


def test_the_installer_is_a_64_bit_program_without_elevation(packages):
    data = (packages / SETUP).read_bytes()
    header = int.from_bytes(data[60:64], "little")
    assert data[header:header + 6] == b"PE\0\0\x64\x86"
    assert b'level="asInvoker"' in data or b"level='asInvoker'" in data
    assert "Ambrel Setup\0".encode("utf-16-le") in data and f"{VERSION}\0".encode("utf-16-le") in data


def property_of(file, name):
    """A text of a program file's version resource."""
    entries = {}
    for block in pefile.PE(file).FileInfo[0]:
        for table in getattr(block, "StringTable", []):
            entries |= table.entries
    return entries[name.encode()].decode("utf-8")


def test_the_program_and_the_installer_name_the_same_publisher(packages):
    for file in (PROGRAM, packages / SETUP):
        assert property_of(str(file), "CompanyName") == read_publisher().name, file.name


def yaml_facts(text):
    """`key: value` lines of a simple YAML text, regardless of their depth."""
    rows = [re.match(r"^[ -]*([A-Za-z0-9]+): (.+)$", line) for line in text.splitlines()]
    return {row.group(1): row.group(2).strip("'").replace("''", "'") for row in rows if row}


def test_wingets_manifest_states_the_installer(packages):
    publisher = read_publisher()
    name = f"winget/{publisher.word}.Ambrel"
    made = {path: data.decode() for path, data in content(packages).items() if path.startswith("winget/")}
    assert set(made) == {f"{name}.yaml", f"{name}.installer.yaml", f"{name}.locale.en-US.yaml"}
    installer = yaml_facts(made[f"{name}.installer.yaml"])
    assert installer["InstallerSha256"].lower() == sha256((packages / SETUP).read_bytes())
    assert installer["InstallerUrl"] == f"{publisher.download.replace('{version}', VERSION)}/{SETUP}"
    assert (installer["InstallerType"], installer["Scope"], installer["ProductCode"]) == ("nullsoft", "user", "Ambrel")
    assert installer["MinimumOSVersion"] == "10.0.14393.0"
    for text in made.values():
        facts = yaml_facts(text)
        assert (facts["PackageIdentifier"], facts["PackageVersion"]) == (f"{publisher.word}.Ambrel", VERSION)
        assert text.startswith("# Not to be submitted yet") == (not publisher.licence)


def test_wingets_manifest_states_the_publisher():
    file = type("File", (), {"name": "x.exe", "sha256": "ab"})
    made = winget_manifest("1.5", OWNER, file)
    facts = yaml_facts(made["ONeil.Ambrel.locale.en-US.yaml"])
    assert (facts["Publisher"], facts["License"], facts["PackageUrl"]) == ("O'Neil & Co", "MIT", "https://o.example/")
    assert not any("Not to be submitted" in text for text in made.values())


def test_scoops_manifest_states_the_zip(packages):
    manifest = json.loads((packages / "scoop" / "ambrel.json").read_text())
    archive = manifest["architecture"]["64bit"]
    assert archive["hash"] == sha256((packages / PORTABLE).read_bytes())
    assert archive["url"].endswith(f"/{PORTABLE}")
    assert manifest["version"] == VERSION
    assert manifest["license"] == (read_publisher().licence or "Unknown")
    assert {name.partition("/")[0] for name in zip_content(packages)} == {manifest["extract_dir"]}
    program, title = manifest["shortcuts"][0]
    assert f"{manifest['extract_dir']}/{program}" in zip_content(packages) and title == "Ambrel"
    # Scoop derives the address of another version from this one.
    assert manifest["autoupdate"]["architecture"]["64bit"]["url"].replace("$version", VERSION) == archive["url"]


def test_scoops_licence_is_the_owners():
    file = type("File", (), {"name": "Ambrel-1.5-portable.zip", "sha256": "ab"})
    assert json.loads(scoop_manifest("1.5", OWNER, file))["license"] == "MIT"


def test_the_release_notes_contain_the_changes_and_each_package_with_size_and_checksum(packages):
    notes = (packages / "release-notes.md").read_text(encoding="utf-8")
    changes = (ROOT / "CHANGELOG.md").read_text(encoding="utf-8")
    assert notes.splitlines()[0] in changes and not notes.startswith("#")
    for name in (SETUP, PORTABLE):
        data = (packages / name).read_bytes()
        assert f"| {name} | {len(data):,} | `{sha256(data)}` |" in notes
    with pytest.raises(PackagingError):
        release_notes("0.1", [])


def check_program(*words):
    environment = {**os.environ, "AMBREL_BUILD_DIR": str(PROGRAM.parent)}
    done = subprocess.run([ROOT / "scripts" / "check-program.sh", *words], capture_output=True, text=True,
                          env=environment)
    return done.returncode, done.stdout


def test_the_windows_runners_check_accepts_the_program_and_rejects_another():
    code, text = check_program(PROGRAM)
    assert code == 0, text
    assert "ok: its window is there" in text and "ok: its exit code is 0" in text
    code, text = check_program(PROGRAM.parent / "package" / "package_stand_in.exe")
    assert code != 0 and "FAILED: its window is there" in text


def test_workflows_forms_and_manifests_are_valid_yaml(packages):
    files = sorted([*(ROOT / ".github").rglob("*.yml"), *(packages / "winget").glob("*.yaml")])
    assert len(files) >= 7
    done = subprocess.run(["yamllint", "--strict", "-c", ROOT / ".github" / "yamllint.yml", *files],
                          capture_output=True, text=True)
    assert done.returncode == 0, done.stdout


def test_every_script_that_a_workflow_calls_exists():
    called = set()
    for file in (ROOT / ".github" / "workflows").glob("*.yml"):
        called |= set(re.findall(r"(?:^| )(?:\./)?((?:scripts/|packaging/)?[a-z_-]+\.(?:sh|py))\b",
                                 file.read_text(encoding="utf-8"), re.M))
    assert {"test.sh", "package.sh", "scripts/check-program.sh", "packaging/check_tag.py"} <= called
    for name in called:
        assert os.access(ROOT / name, os.X_OK), name


@pytest.mark.parametrize("tag, good", [(f"v{VERSION}", True), (VERSION, False), ("v0.1", False), (f"v{VERSION}.1", False)])
def test_a_release_requires_the_tag_of_this_version(tag, good):
    done = subprocess.run([ROOT / "packaging" / "check_tag.py", tag], capture_output=True, text=True)
    assert (done.returncode == 0) == good


def test_the_version_is_defined_once():
    assert read_version() == VERSION
    assert four_numbers(VERSION) == f"{VERSION}.0.0"
    listed = subprocess.run(["git", "ls-files", "packaging", "package.sh", ".github"], cwd=ROOT, capture_output=True,
                            text=True, check=True)
    for name in listed.stdout.split():
        assert VERSION not in (ROOT / name).read_text(encoding="utf-8"), name
