"""The sources keep to the floors of docs/architecture.md: nothing includes upwards or in a circle."""

import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SRC = ROOT / "src"
DOCUMENT = ROOT / "docs" / "architecture.md"
MOST_LINES = 400

# A file belongs to the first row that names it or its folder.
FLOORS = [
    (1, ["win32", "app/app_state", "app/timers", "app/messages", "app/program_names", "store/event_log",
         "brightness/monitor_functions", "res"]),
    (2, ["filter/warmth", "filter/cursor_pixels", "app/scaled_resources", "app/tray_icon", "app/foreground",
         "brightness/display_target", "brightness/physical_monitors", "diag/system_probe"]),
    (3, ["app/refresh", "store/settings", "store/autostart", "filter/tinted_cursor", "filter/cursor_tint",
         "brightness/ddc", "brightness/wmi", "brightness/monitor_probe"]),
    (4, ["filter/magnification", "filter/legacy_gamma", "brightness/display_targets", "filter/gamma_range",
         "filter/gamma_fix", "brightness/pwm_safe", "brightness/pwm_card_label"]),
    (5, ["filter/filter", "diag/support_facts", "diag/support_text"]),
    (6, ["ui", "diag/support_bundle", "app/popup"]),
    (7, ["app"]),
]


def sources():
    listed = subprocess.run(["git", "ls-files", "--", "src"], cwd=ROOT, capture_output=True, text=True, check=True)
    files = [ROOT / name for name in listed.stdout.split()]
    return [file for file in files if file.suffix in (".h", ".cpp", ".rc")]


def unit_of(file):
    return str(file.relative_to(SRC).with_suffix(""))


def floor_of(unit):
    for floor, names in FLOORS:
        if unit in names or unit.split("/")[0] in names:
            return floor
    raise AssertionError(f"{unit} stands on no floor: add it to the table here and in docs/architecture.md")


def included(file):
    for name in re.findall(r'^#include "([^"]+)"', file.read_text(encoding="utf-8"), re.M):
        target = SRC / name if (SRC / name).exists() else file.parent / name
        assert target.exists(), f"{file} includes {name}, which is not there"
        yield target


def graph():
    edges = {}
    for file in sources():
        edges.setdefault(unit_of(file), set()).update(unit_of(target) for target in included(file))
    return {unit: targets - {unit} for unit, targets in edges.items()}


def test_the_floors_are_those_of_the_documents():
    told = {}
    for floor, files in re.findall(r"^\| (\d) \| (.*) \|$", DOCUMENT.read_text(encoding="utf-8"), re.M):
        told[int(floor)] = {name.removesuffix("/*").rstrip("/") for name in re.findall(r"`([^`]+)`", files)}
    assert told == {floor: set(names) for floor, names in FLOORS}


def test_there_are_sources_to_check():
    assert len(sources()) > 60


def test_no_file_includes_upwards():
    wrong = [f"{unit} (floor {floor_of(unit)}) includes {target} (floor {floor_of(target)})"
             for unit, targets in graph().items() for target in targets if floor_of(target) > floor_of(unit)]
    assert not wrong, "\n".join(wrong)


def test_no_circle_of_includes():
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
    assert calling == {"app/timers"}


def test_no_header_and_source_together_exceed_the_limit():
    lengths = {}
    for file in sources():
        lengths[unit_of(file)] = lengths.get(unit_of(file), 0) + len(file.read_text().splitlines())
    assert not {unit: length for unit, length in lengths.items() if length > MOST_LINES}


def test_no_tracked_source_speaks_of_what_is_not_the_project():
    pattern = re.compile(r"TODO|FIXME|XXX|/tmp/|/home/")
    wrong = [f"{file}:{number}" for file in sources()
             for number, line in enumerate(file.read_text().splitlines(), 1) if pattern.search(line)]
    assert not wrong, "\n".join(wrong)
