"""The sources follow the layers of docs/architecture.md: no file includes upwards or in a cycle."""

import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SRC = ROOT / "src"
DOCUMENT = ROOT / "docs" / "architecture.md"
MAX_LINES = 400
# The calls in a CMakeLists.txt that name a test's sources.
BUILDING_CALLS = ["add_executable", "add_library", "target_sources", "ambrel_unit_tests", "ambrel_attack"]

# The layers, lowest first. Folders of one layer do not include each other.
LAYERS = [
    ["win32", "res"],
    ["app/state", "filter/model"],
    ["store"],
    ["app/shell"],
    ["filter", "brightness"],
    ["diag"],
    ["ui"],
    ["app"],
]


def sources():
    listed = subprocess.run(["git", "ls-files", "--", "src"], cwd=ROOT, capture_output=True, text=True, check=True)
    files = [ROOT / name for name in listed.stdout.split()]
    return [file for file in files if file.suffix in (".h", ".cpp", ".rc")]


def unit_of(file):
    return str(file.relative_to(SRC).with_suffix(""))


def folder_of(unit):
    return unit.rpartition("/")[0]


def layer_of(unit):
    folder = folder_of(unit)
    for layer, folders in enumerate(LAYERS, 1):
        if folder in folders:
            return layer
    raise AssertionError(f"{folder} is in no layer: add it to the table here and in docs/architecture.md")


def included(file):
    for name in re.findall(r'^#include "([^"]+)"', file.read_text(encoding="utf-8"), re.M):
        target = SRC / name if (SRC / name).exists() else file.parent / name
        assert target.exists(), f"{file} includes {name}, which does not exist"
        yield target


def graph():
    edges = {}
    for file in sources():
        edges.setdefault(unit_of(file), set()).update(unit_of(target) for target in included(file))
    return {unit: targets - {unit} for unit, targets in edges.items()}


def test_the_layers_match_the_document():
    rows = re.findall(r"^\| (\d) \| ([^|]*) \|", DOCUMENT.read_text(encoding="utf-8"), re.M)
    documented = [set(re.findall(r"`src/([^`]+)`", folders)) for _, folders in rows]
    assert [int(number) for number, _ in rows] == list(range(1, len(LAYERS) + 1))
    assert documented == [set(folders) for folders in LAYERS]


def test_there_are_sources_to_check():
    assert len(sources()) > 60


def test_a_file_includes_only_its_own_folder_and_lower_layers():
    wrong = [f"{unit} (layer {layer_of(unit)}) includes {target} (layer {layer_of(target)})"
             for unit, targets in graph().items() for target in targets
             if folder_of(target) != folder_of(unit) and layer_of(target) >= layer_of(unit)]
    assert not wrong, "\n".join(wrong)


def test_includes_have_no_cycle():
    edges, done = graph(), set()

    def visit(unit, path):
        assert unit not in path, " -> ".join([*path, unit])
        if unit not in done:
            for target in edges.get(unit, ()):
                visit(target, [*path, unit])
            done.add(unit)

    for unit in edges:
        visit(unit, [])


def test_windows_h_is_included_once():
    including = [unit_of(file) for file in sources() if re.search(r"#include <windows\.h>", file.read_text())]
    assert sorted(including) == ["res/ambrel", "win32/platform"]


def test_only_the_timer_table_sets_and_kills_timers():
    calling = {unit_of(file) for file in sources() if re.search(r"\b(Set|Kill)Timer\(", file.read_text())}
    assert calling == {"app/state/timers"}


def test_no_header_and_source_together_exceed_the_limit():
    lengths = {}
    for file in sources():
        lengths[unit_of(file)] = lengths.get(unit_of(file), 0) + len(file.read_text().splitlines())
    assert not {unit: length for unit, length in lengths.items() if length > MAX_LINES}


def test_every_unit_test_and_attack_is_built():
    """A source that no CMakeLists.txt names would silently not run."""
    listed = subprocess.run(["git", "ls-files", "--", "tests/unit", "tests/faults", "tests/soak"], cwd=ROOT,
                            capture_output=True, text=True, check=True)
    files = [ROOT / name for name in listed.stdout.split()]
    calls = [(file.parent, arguments) for file in files if file.name == "CMakeLists.txt"
             for arguments in re.findall(rf"^(?:{'|'.join(BUILDING_CALLS)})\(([^)]*)\)",
                                         re.sub("#.*", "", file.read_text(encoding="utf-8")), re.M)]
    built = {folder / word for folder, arguments in calls for word in arguments.split()}
    tests = {file for file in files if file.suffix == ".cpp"}
    assert len(tests) > 100
    assert not [str(file.relative_to(ROOT)) for file in sorted(tests - built)]


def test_no_file_contains_markers_or_local_paths():
    # This file contains the pattern.
    command = ["git", "grep", "-nIE", r"\b(TODO|FIXME|XXX)\b|/(tmp|home)/(\w|$)", "--", ".",
               ":!tests/style/test_layout.py"]
    found = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=False)
    assert found.returncode == 1 and not found.stderr, found.stdout + found.stderr
