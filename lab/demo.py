#!/usr/bin/python3
"""Demonstrates the program in a lab with simulated mouse input: demo.py FOLDER-FOR-PICTURES

Every step waits for its visible result. If a step fails, the demonstration names it and exits with code 1."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.dont_write_bytecode = True

from ambrel_lab import Lab, LabError  # noqa: E402
from ambrel_lab.console_runner import end_on_signals  # noqa: E402
from demonstration import backlight, filter_scenario, options, support  # noqa: E402
from demonstration.stage import Stage  # noqa: E402

SCENARIOS = (("The filter", filter_scenario.show), ("The options", options.show), ("The backlight", backlight.show),
        ("The support report", support.show))


def main(pictures):
    pictures.mkdir(parents=True, exist_ok=True)
    end_on_signals()
    for title, show in SCENARIOS:
        print(f"\n{title}", flush=True)
        with Lab() as lab:
            show(Stage(lab, pictures))
    print(f"\nPictures are in {pictures}")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    try:
        main(Path(sys.argv[1]))
    except LabError as error:
        print(f"\n{error}", file=sys.stderr)
        sys.exit(1)
