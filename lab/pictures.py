#!/usr/bin/python3
"""Regenerates the screenshots, the sample support report and the accessibility walk in docs/: pictures.py [NAME...]

Without a name it regenerates all of them. Each comes from the built program in a separate lab and is written to docs/
only when it is complete: if a step fails, this names the step, exits with code 1 and leaves the document unchanged."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.dont_write_bytecode = True

from ambrel_lab import Lab, LabError  # noqa: E402
from ambrel_lab.paths import ROOT  # noqa: E402
from ambrel_lab.console_runner import end_on_signals  # noqa: E402
from documents import accessibility, guide, support_bundle  # noqa: E402

DOCS = ROOT / "docs"
# Functions by name. Each takes a lab in which nothing runs yet and returns {path below docs/: content}.
GENERATORS = {"guide": guide.generate, "support-bundle": support_bundle.generate,
              "accessibility": accessibility.generate}


def main(names):
    end_on_signals()
    for name in names or GENERATORS:
        print(name, flush=True)
        with Lab() as lab:
            contents = GENERATORS[name](lab)
        for path, content in contents.items():
            target = DOCS / path
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(content)
            print(f"  {target.relative_to(ROOT)}")


if __name__ == "__main__":
    if not GENERATORS.keys() >= set(sys.argv[1:]):
        sys.exit(f"{__doc__}\n\nNames: {', '.join(GENERATORS)}")
    try:
        main(sys.argv[1:])
    except LabError as error:
        print(f"\n{error}", file=sys.stderr)
        sys.exit(1)
