"""The documents are consistent: links lead somewhere, and names match the program."""

import re
import subprocess
import sys
from pathlib import Path
from urllib.parse import unquote

import pytest

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "lab"))

from ambrel_lab import LabError  # noqa: E402
from documents.support_bundle import replace_report  # noqa: E402

GUIDE = ROOT / "docs" / "guide.md"
CARD_LABELS = ROOT / "src" / "ui" / "pwm_card_label.cpp"


def tracked(*patterns):
    command = ["git", "ls-files", "--", *patterns]
    listed = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=True)
    return listed.stdout.split()


DOCUMENTS = tracked("*.md")


def prose(document):
    """The text without code blocks and code spans, which contain no links."""
    text = (ROOT / document).read_text(encoding="utf-8")
    return re.sub(r"`[^`\n]+`", "", re.sub(r"^```.*?^```", "", text, flags=re.M | re.S))


def links(document, pattern):
    """(path, part after #) of each relative link of a document."""
    for target in re.findall(pattern, prose(document)):
        if not re.match(r"[a-z]+:", target):
            path, _, part = target.partition("#")
            file = (ROOT / document).parent / unquote(path) if path else ROOT / document
            yield file.resolve(), part


def pictures(document):
    return [file for file, _ in links(document, r"!\[[^\]]*\]\(([^)\s]+)\)")]


def headings(file):
    """Headings as anchors: lower case, no punctuation, hyphens for spaces."""
    titles = re.findall(r"^#+ +(.*)$", prose(file.relative_to(ROOT)), re.M)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def test_there_are_documents_to_check():
    assert {"README.md", "docs/guide.md"} <= set(DOCUMENTS)


@pytest.mark.parametrize("document", DOCUMENTS)
def test_every_relative_link_leads_somewhere(document):
    dead = [f"{file}#{part}" for file, part in links(document, r"\]\(([^)\s]+)\)")
            if not file.exists() or (part and part not in headings(file))]
    assert not dead, f"{document} links to {', '.join(dead)}"


def test_every_picture_is_shown_in_a_document():
    shown = {str(file.relative_to(ROOT)) for document in DOCUMENTS for file in pictures(document)}
    assert shown and shown == set(tracked("docs/pictures"))


def test_the_guide_lists_the_cards_labels():
    guide = GUIDE.read_text(encoding="utf-8")
    table = re.search(r"^\| The card says \|.*\n\|[-| ]+\|\n((?:\|.*\n)+)", guide, re.M)
    listed = [row.split("|")[1].strip() for row in table.group(1).splitlines()]
    labels = re.findall(r'L"([^"]+)"', CARD_LABELS.read_text(encoding="utf-8"))
    assert sorted(listed) == sorted(labels)


def test_the_support_page_has_one_report_and_regenerating_it_keeps_the_prose():
    page = (ROOT / "docs" / "support-bundle.md").read_text(encoding="utf-8")
    before, report, after = re.fullmatch(r"(.*?^```text\n)(TO: .*?=== END DIAGNOSTICS ===\n)(```\n.*)", page,
                                         re.M | re.S).groups()
    assert replace_report(page, "=== NEW ===\n") == f"{before}=== NEW ===\n{after}"
    later = re.sub(r"(?m)^\[\d\d:\d\d:", "[23:59:", re.sub(r"uptime: \d+s", "uptime: 99s", report))
    assert later != report and replace_report(page, later) == page


@pytest.mark.parametrize("page", ["no report", "```text\na\n```\n\n```text\nb\n```\n"])
def test_a_support_page_without_exactly_one_report_is_rejected(page):
    with pytest.raises(LabError):
        replace_report(page, "new")


@pytest.mark.parametrize("document", ["CONTRIBUTING.md", "docs/architecture.md"])
def test_the_code_that_a_document_names_exists(document):
    text = re.sub(r"^```.*?^```", "", (ROOT / document).read_text(encoding="utf-8"), flags=re.M | re.S)
    quoted = {name for name in re.findall(r"`([^`\n]+)`", text) if re.fullmatch(r"[\w./-]+", name)}
    files = {name for name in quoted if "/" in name and not re.search(r"\b(NAME|FOLDER)\b", name)}
    # A unit of the program is named without "src/" and its extension.
    missing = {name for name in files
               if not (ROOT / name).exists() and not list((ROOT / "src").glob(f"{name}.*"))}
    code = " ".join((ROOT / file).read_text(encoding="utf-8") for file in tracked("src/*.h", "src/*.cpp", "tests/*.cpp",
                                                                                 "tests/*.h", "lab/*.txt", "lab/*.cpp",
                                                                                 "lab/*.py"))
    missing |= {name for name in quoted if re.fullmatch(r"[a-z]*[A-Z]\w+", name)} - set(re.findall(r"\w+", code))
    assert len(files) > 15 and not missing, f"{document} names {', '.join(sorted(missing))}"
