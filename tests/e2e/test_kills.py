"""The quick form of the kills at random moments: one or two of each kind. `./soak.sh kills` runs hundreds."""

import os
import sys
from pathlib import Path

from desk import ROOT
from failures import evidence_folder

sys.path.insert(0, str(ROOT / "tests" / "soak"))
import kill_anytime  # noqa: E402  pylint: disable=wrong-import-position

KILLS = 10
SEED = 20


def test_a_start_after_a_kill_restores_everything(request):
    build = os.environ.get("AMBREL_BUILD_DIR")
    evidence = evidence_folder(request.node.nodeid)
    failures, table = kill_anytime.run(KILLS, SEED, build and Path(build), evidence=evidence)
    kill_anytime.print_table(table)
    assert failures == []
    assert sum(table.values()) == KILLS


def test_a_setting_without_a_value_counts_as_damage_and_one_without_a_number_as_a_failure():
    settings = {key: str(value) for key, value in kill_anytime.DEFAULTS.items()}
    seen = {key: {value} for key, value in kill_anytime.DEFAULTS.items()}
    assert not kill_anytime.is_damaged(settings)
    assert not list(kill_anytime.unknown_values(settings, seen))
    settings["Brightness"] = ""
    assert kill_anytime.is_damaged(settings)
    assert not list(kill_anytime.unknown_values(settings, seen))
    settings.update(Brightness="x", Intensity="38", LaunchAtStart="\u00b2")
    assert not kill_anytime.is_damaged(settings)
    assert list(kill_anytime.unknown_values(settings, seen)) == [
        "Intensity=38 was never set", "Brightness=x is not a number", "LaunchAtStart=\u00b2 is not a number"]
