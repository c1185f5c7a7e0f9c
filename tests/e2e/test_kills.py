"""The quick form of the kills at random moments: one or two of each kind. `./soak.sh kills` runs hundreds."""

import os
import sys
from pathlib import Path

from desk import ROOT
from failures import evidence_folder

sys.path.insert(0, str(ROOT / "tests" / "soak"))
import kill_anytime  # noqa: E402  pylint: disable=wrong-import-position

KILLS = 12
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
    assert not kill_anytime.is_beginning(settings)
    settings.update(Brightness="x", Intensity="38", LaunchAtStart="\u00b2")
    assert not kill_anytime.is_damaged(settings)
    assert list(kill_anytime.unknown_values(settings, seen)) == [
        "Intensity=38 was never set", "Brightness=x is not a number", "LaunchAtStart=\u00b2 is not a number"]


def test_a_damaged_file_must_be_the_beginning_of_a_complete_one():
    complete = [(key, str(value)) for key, value in kill_anytime.DEFAULTS.items()]
    for length in range(len(complete)):
        beginning = dict(complete[:length])
        assert kill_anytime.is_damaged(beginning) and kill_anytime.is_beginning(beginning)
    without_value = dict([*complete[:2], (complete[2][0], "")])
    assert kill_anytime.is_beginning(without_value)
    for wrong in (complete[1:], complete[:2] + complete[3:], [*complete[:2], ("Ramp", "1")],
                  [(complete[0][0], ""), *complete[1:]]):
        assert kill_anytime.is_damaged(dict(wrong)) and not kill_anytime.is_beginning(dict(wrong))


def test_the_number_of_damaged_files_is_limited():
    few = {("saving", "damaged file"): 3, ("saving", "ok"): 0}
    assert not kill_anytime.too_many_are_damaged(few)
    assert kill_anytime.too_many_are_damaged({**few, ("dragging", "damaged file"): 1})
    many = {("saving", "damaged file"): 25, ("tinting", "ok"): 75}
    assert not kill_anytime.too_many_are_damaged(many)
    assert kill_anytime.too_many_are_damaged({**many, ("saving", "damaged file"): 26})
    # Kills in moments without writes do not raise the limit.
    assert kill_anytime.too_many_are_damaged({("starting", "damaged file"): 4, ("resting", "ok"): 96})
