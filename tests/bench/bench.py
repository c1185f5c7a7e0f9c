#!/usr/bin/python3
"""Measures the shipped program against floors that are measured in the same run: see docs/performance.md."""

import argparse
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "lab"))
sys.dont_write_bytecode = True

import figures  # noqa: E402
import native  # noqa: E402
import program  # noqa: E402
import size  # noqa: E402

BUILD = ROOT / "build" / "release"
DOCUMENT = ROOT / "docs" / "performance.md"
GROUPS = {**native.GROUPS, **program.GROUPS, "size": size.size}


def arguments():
    parser = argparse.ArgumentParser(prog="bench.sh", description="Measures time, memory, wake-ups and size.")
    parser.add_argument("groups", nargs="*", metavar="GROUP", help=f"of {', '.join(GROUPS)}; all by default")
    parser.add_argument("--full", action="store_true", help="more rounds, and waits of 60 s instead of shorter ones")
    parser.add_argument("--json", type=Path, metavar="FILE", help="write the figures to FILE")
    parser.add_argument("--compare", type=Path, metavar="FILE", help="mark what has grown since the run in FILE")
    parser.add_argument("--document", type=Path, metavar="FILE",
                        help="measure nothing; write the table of docs/performance.md from FILE")
    options = parser.parse_args()
    if unknown := set(options.groups) - set(GROUPS):
        parser.error(f"no such group: {', '.join(sorted(unknown))}")
    return options


def commit():
    return subprocess.run(["git", "rev-parse", "--short", "HEAD"], cwd=ROOT, capture_output=True, text=True,
                          check=True).stdout.strip()


def measure(options):
    found = []
    figures.print_heading()
    for name in options.groups or GROUPS:
        for figure in GROUPS[name](BUILD, options.full):
            figures.print_figure(figure)
            found.append(figure)
    return found


def main():
    options = arguments()
    if options.document:
        figures.write_document(figures.load(options.document), DOCUMENT, commit())
        return
    # Before the long measurement: a wrong name should fail at once.
    earlier = options.compare and figures.load(options.compare)
    found = measure(options)
    if options.json:
        figures.save(found, options.json)
    if earlier:
        figures.print_comparison(found, [old for old in earlier if not options.groups or
                                         old.name in {figure.name for figure in found}])


if __name__ == "__main__":
    main()
