#!/usr/bin/python3
"""The program on real input, in a lab: demo.py FOLDER-FOR-PICTURES

Every step waits for what a person would see of it. A step that does not happen ends the demonstration with a
sentence that says which, and with exit code 1."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.dont_write_bytecode = True

from ambrel_lab import Lab, LabError  # noqa: E402
from ambrel_lab.unit import end_on_signals  # noqa: E402
from demonstration import backlight, main_job, options, support  # noqa: E402
from demonstration.stage import Stage  # noqa: E402

ACTS = (("The main job", main_job.show), ("The options", options.show), ("The backlight", backlight.show),
        ("The support report", support.show))


def main(pictures):
    pictures.mkdir(parents=True, exist_ok=True)
    end_on_signals()
    for title, act in ACTS:
        print(f"\n{title}", flush=True)
        with Lab() as lab:
            act(Stage(lab, pictures))
    print(f"\nPictures are in {pictures}")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    try:
        main(Path(sys.argv[1]))
    except LabError as error:
        print(f"\n{error}", file=sys.stderr)
        sys.exit(1)
