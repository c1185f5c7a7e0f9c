#!/usr/bin/python3
"""Command line of the lab. Run it without arguments to list its commands."""

import argparse
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.dont_write_bytecode = True

from ambrel_lab import Lab, LabError  # noqa: E402
from ambrel_lab.display import run_on_display  # noqa: E402
from ambrel_lab.paths import DEFAULT_BUILD  # noqa: E402
from ambrel_lab.prefix import template, template_lock  # noqa: E402
from ambrel_lab.selftest import selftest  # noqa: E402
from ambrel_lab.console_runner import end_on_signals  # noqa: E402


def prepare(_arguments):
    with template_lock():
        print(template())
    return 0


def show(arguments):
    return run_on_display(build_dir=arguments.build, dpi=arguments.dpi)


def picture(arguments):
    end_on_signals()
    with Lab(arguments.build, dpi=arguments.dpi) as lab:
        lab.install_program()
        lab.start_program()
        lab.open_popup()
        lab.eye_picture(arguments.file)
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=Path, default=DEFAULT_BUILD, help="folder of the built program")
    parser.add_argument("--dpi", type=int, default=96, help="96, 120, 144 or 192")
    commands = parser.add_subparsers(required=True)
    commands.add_parser("prepare", help="create the template prefix now").set_defaults(run=prepare)
    commands.add_parser("selftest", help="run the checks of the lab itself").set_defaults(
        run=lambda arguments: selftest(arguments.build))
    commands.add_parser("show", help="run the program on $DISPLAY").set_defaults(run=show)
    one = commands.add_parser("picture", help="open the popup and save the screen as the eye sees it")
    one.add_argument("file")
    one.set_defaults(run=picture)
    arguments = parser.parse_args()
    try:
        return arguments.run(arguments)
    except LabError as error:
        print(f"lab: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
