"""The quick form of the kills at random moments: one or two of each kind. `./soak.sh kills` runs hundreds."""

import os
import sys
from pathlib import Path

from desk import ROOT

sys.path.insert(0, str(ROOT / "tests" / "soak"))
import kill_anytime  # noqa: E402  pylint: disable=wrong-import-position

KILLS = 10
SEED = 20


def test_a_start_after_a_kill_restores_everything():
    build = os.environ.get("AMBREL_BUILD_DIR")
    failures, table = kill_anytime.run(KILLS, SEED, build and Path(build))
    kill_anytime.print_table(table)
    assert failures == []
    assert sum(table.values()) == KILLS
