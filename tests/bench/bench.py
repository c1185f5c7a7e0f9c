#!/usr/bin/python3
"""Measures the shipped program against floors that are measured in the same run: see docs/performance.md."""

import argparse
import subprocess
import sys
import time
import traceback
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
    parser.add_argument("--json", type=Path, metavar="FILE", help="write the figures to FILE, after each group")
    parser.add_argument("--compare", type=Path, metavar="FILE", help="mark what has grown since the run in FILE")
    parser.add_argument("--document", type=Path, metavar="FILE",
                        help="measure nothing; write the table of docs/performance.md from FILE")
    options = parser.parse_args()
    if unknown := set(options.groups) - set(GROUPS):
        parser.error(f"no such group: {', '.join(sorted(unknown))}")
    return options


def git(*words):
    return subprocess.run(["git", *words], cwd=ROOT, capture_output=True, text=True, check=False).stdout.strip()


def measured_commit():
    """The commit, and whether something that is measured differs from it."""
    changed = git("status", "--porcelain", "--", "src", "tests/bench", "cmake", "CMakeLists.txt")
    return (git("rev-parse", "--short", "HEAD") or "unknown") + (" with changes" if changed else "")


def measure_group(name, full, commit, found):
    """Appends the figures of a group to `found` as they are measured. Returns whether all were."""
    started = time.monotonic()
    try:
        for figure in GROUPS[name](BUILD, full):
            figure.commit = commit
            figures.print_figure(figure)
            found.append(figure)
    except Exception:  # The other groups are measured anyway.
        traceback.print_exc()
        return False
    print(f"({name}: {time.monotonic() - started:.0f} s)", file=sys.stderr, flush=True)
    return True


def measure(options):
    """(figures, names of the groups that failed)."""
    found, failed, commit = [], [], measured_commit()
    figures.print_heading()
    for name in options.groups or GROUPS:
        if not measure_group(name, options.full, commit, found):
            failed.append(name)
        if options.json:
            figures.save(found, options.json)
    return found, failed


def main():
    options = arguments()
    if options.document:
        figures.write_document(figures.load(options.document), DOCUMENT)
        return
    # Before the long measurement: a wrong name should fail immediately.
    earlier = options.compare and figures.load(options.compare)
    found, failed = measure(options)
    if earlier:
        figures.print_comparison(found, [old for old in earlier if not options.groups or
                                         old.name in {figure.name for figure in found}])
    if failed:
        sys.exit(f"failed: {', '.join(failed)}")


if __name__ == "__main__":
    main()
