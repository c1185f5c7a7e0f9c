#!/usr/bin/python3
"""Fails unless the given tag matches the program's version, such as v1.5 for 1.5: check_tag.py TAG"""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.dont_write_bytecode = True

from ambrel_packages.facts import read_version  # noqa: E402


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    wanted = f"v{read_version()}"
    if sys.argv[1] != wanted:
        print(f"The tag is {sys.argv[1]}; the program's version requires {wanted}.", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
