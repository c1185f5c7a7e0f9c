#!/usr/bin/env python3
"""Kills the program at random moments, starts it again and quits it: nothing that it changed may stay changed.

    kill_anytime.py [--kills N] [--seed S] [--only MOMENT] [--build FOLDER]

After each kill, the next start and a Quit: the screen's ramp is the identity, each simulated display has the
brightness that it had before the first start, settings.ini contains no record, each setting has a value that was once
set or its default, and the log is readable UTF-8. Prints the seed, each failure, and a table by kind of moment. The
first failed kills save evidence in build/failures/kills.

The private-profile functions do not replace settings.ini in one step: they empty the file and write it section by
section. A kill in the middle of a write may lose keys, and with them the record. Such kills are counted as damaged
files, not as failures, if the moment has writes, the file is the beginning of a complete one, and they are few, because
a write takes a small part of the time. Wine does not replace system cursors: only the program's request to reset them
at the next start could be checked, and other tests do that.
"""

import argparse
import random
import shutil
import sys
import time
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "lab"), str(ROOT / "tests" / "e2e")]

# pylint: disable=wrong-import-position
import model  # noqa: E402
from ambrel_lab.evidence import save_evidence  # noqa: E402
from ambrel_lab.hardware import Monitor, Panel  # noqa: E402
from ambrel_lab.layout import CARD, POWER, PRESETS, SLIDER_X, SLIDER_Y  # noqa: E402
from ambrel_lab.paths import FAILURES  # noqa: E402
from backlight import CONFIRMED  # noqa: E402
from desk import Desk, LabError  # noqa: E402

WM_TIMER, WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP = 0x113, 0x200, 0x201, 0x202
SAVE, VERIFY = 1, 5
LOG_LIMIT = 262144
OWN = {"panel": 60, "left": 40, "right": 56}
DEFAULTS = {"Intensity": 385, "Brightness": 1000, "LaunchAtStart": 0, "AllowExtremeDim": 0, "UseLegacyGamma": 0,
            "LegacyModeAutoSet": 0, "PWMSafeMode": 0, "GammaFixEpoch": 0}
DRAG = 40
# Failed kills that save evidence, and kills without an end after which a run gives up.
MAX_EVIDENCE, MAX_ERRORS = 3, 3
# The largest share of damaged files among the kills in moments with writes, and the number that a short run may have.
# About one in ten kills during continuous saves damages the file.
MAX_DAMAGED_SHARE, MAX_DAMAGED_IN_SHORT_RUN = 0.25, 3


class Victim:
    """The program with simulated displays, and everything that a user has set so far. Failed kills save evidence in
    folders of `evidence`."""

    def __init__(self, desk, rng, evidence):
        self.desk, self.rng, self.evidence = desk, rng, evidence
        self.kill, self.failures, self.failed_kills, self.left = "", [], 0, ""
        self.seen = {key: {value} for key, value in DEFAULTS.items()}
        for key in ("PWMSafeMode", "UseLegacyGamma"):
            self.seen[key] |= {0, 1}
        for preset in model.PRESETS.values():
            self.set_filter(preset.intensity, preset.brightness)

    def set_filter(self, intensity, brightness):
        self.seen["Intensity"].add(model.per_mille(intensity))
        self.seen["Brightness"].add(model.per_mille(brightness))

    # Input, posted: the popup need not be visible.

    def post(self, message, x, y):
        self.desk.post_message(message, 0, (y << 16) | x)

    def click(self, place):
        self.post(WM_LBUTTONDOWN, *place)
        self.post(WM_LBUTTONUP, *place)

    def drag(self):
        """Drags the warmth up from DAY. Every position may be saved."""
        self.click(PRESETS["DAY"])
        x, start = SLIDER_X["WARMTH"], model.PRESETS["DAY"].intensity
        self.post(WM_LBUTTONDOWN, x, SLIDER_Y)
        for step in range(1, DRAG + 1):
            self.post(WM_MOUSEMOVE, x, SLIDER_Y - step)
            self.seen["Intensity"].add(model.per_mille(start + step / model.TRAVEL))
        self.post(WM_LBUTTONUP, x, SLIDER_Y - DRAG)

    def save(self):
        """Saves without a pause."""
        for _ in range(30):
            self.desk.post_message(WM_TIMER, SAVE, 0)

    # The moments: each acts on a program that has started, or starts it. WRITING lists those in which the program may
    # write settings.ini. In those in STARTING it writes only the record of displays that it locks.

    def starting(self):
        self.desk.start_program()
        self.pause(0.8)

    def trimming(self):
        self.desk.write_events("[12:00:00.000] Saved settings \u2014 \u00e9\n".replace("\n", "\r\n") * 8000)
        assert self.desk.events_path.stat().st_size > LOG_LIMIT
        self.starting()

    def resting(self):
        """Everything is saved, and the displays are locked or not."""
        self.start()
        if self.mode:
            self.desk.wait_for_log(CONFIRMED % len(OWN))
        self.click(PRESETS["DAY"])
        self.desk.wait_until_posted_messages_are_handled()
        self.pause(0.5)

    def saving(self):
        self.start()
        self.click(PRESETS[self.rng.choice(list(PRESETS))])
        self.save()
        self.pause(0.5)

    def dragging(self):
        self.start()
        self.drag()
        self.pause(0.5)

    def tinting(self):
        """The filter goes on and off."""
        self.start()
        for _ in range(self.rng.randint(1, 6)):
            self.click(POWER)
        self.pause(0.3)

    def locking(self):
        self.start()
        self.click(CARD)
        self.pause(1.5)

    def releasing(self):
        self.start()
        self.click(CARD)
        if self.rng.random() < 0.5:
            self.desk.post_message(WM_TIMER, VERIFY, 0)
        self.click(CARD)
        self.pause(1.5)

    STARTING = (starting, trimming)
    WRITING = (saving, dragging, tinting, locking, releasing)
    MOMENTS = (*STARTING, resting, *WRITING)

    def start(self):
        self.desk.start()

    def pause(self, longest):
        time.sleep(self.rng.uniform(0, longest))

    # One kill and what follows it

    def kill_in(self, moment, number):
        """Kills the program in the middle of `moment`, starts it again and quits it. Returns whether the kill has
        damaged settings.ini, and the failures."""
        self.kill, self.failures, self.left = f"{number}-{moment.__name__}", [], ""
        legacy, self.mode = self.rng.randint(0, 1), self.rng.randint(0, 1)
        values = {"Intensity": 385, "Brightness": 1000, **dict.fromkeys(list(DEFAULTS)[2:], 0),
                  "UseLegacyGamma": legacy, "PWMSafeMode": self.mode}
        self.desk.clear(values)
        moment(self)
        self.desk.kill_program()
        self.desk.hardware.reset_outstanding()
        found = self.desk.settings()
        self.left = self.desk.settings_text()
        damaged = is_damaged(found)
        if damaged and moment not in self.WRITING and not (self.mode and moment in self.STARTING):
            self.fail(f"nothing writes settings.ini, but it is {self.left!r}")
        if damaged and not is_beginning(found):
            self.fail(f"settings.ini is not the beginning of a complete file: {self.left!r}")
        for text in unknown_values(found, self.seen):
            self.fail(text)
        self.desk.start()
        if not damaged and not self.desk.ramp_is_plain():
            self.fail("the start leaves the ramp")
        if self.desk.quit() != 0:
            self.fail("the exit code is not 0")
        for text in self.remains(damaged):
            self.fail(text)
        return damaged, self.failures

    def fail(self, text):
        """Records a failure of the kill. The first one of a kill saves evidence, as long as few kills have failed."""
        if not self.failures:
            self.failed_kills += 1
            if self.failed_kills <= MAX_EVIDENCE:
                text += f"; evidence: {self.save_evidence()}"
        self.failures.append(text)

    def save_evidence(self):
        """Saves the present state and settings.ini as the kill left it, and returns the folder."""
        folder = self.evidence / self.kill
        save_evidence(self.desk, folder)
        (folder / "killed-settings.ini").write_text(self.left)
        return folder

    def remains(self, damaged):
        """What the program has left changed. A damaged file may have lost the displays' brightness."""
        values = {name: self.desk.hardware.value(name) for name in OWN}
        if values != OWN and not damaged:
            yield f"the displays show {values}"
        if not self.desk.ramp_is_plain():
            yield "the ramp is not the identity"
        if "[Restore]" in self.desk.settings_text():
            yield f"the record is left: {self.desk.settings_text()!r}"
        try:
            # The trimmed log may begin in the middle of a character.
            self.desk.events_path.read_bytes().lstrip(bytes(range(0x80, 0xC0))).decode("utf-8")
        except UnicodeDecodeError as error:
            yield f"the log is not UTF-8: {error}"

    def reset(self):
        """The displays and the screen as before the first start, for the next kill."""
        self.desk.set_ramp(model.ramp(model.IDENTITY))
        for name, value in OWN.items():
            self.desk.hardware.set_by_user(name, value)


def is_damaged(settings):
    """Whether the kill has interrupted a write of settings.ini: keys are missing or have no value."""
    return any(not settings.get(key) for key in DEFAULTS)


def is_beginning(settings):
    """Whether these are the first keys of a complete file, and only the last one may lack its value."""
    return list(settings) == list(DEFAULTS)[:len(settings)] and all(list(settings.values())[:-1])


def unknown_values(settings, seen):
    """The settings that were never set to the value that they have; `seen` has the values of each key."""
    tolerance = {"Intensity": 1, "Brightness": 1}
    for key, text in settings.items():
        if key not in seen or not text:
            continue
        if not text.isascii() or not text.isdigit():
            yield f"{key}={text} is not a number"
        elif not any(abs(int(text) - value) <= tolerance.get(key, 0) for value in seen[key]):
            yield f"{key}={text} was never set"


def prepare(desk):
    """Displays that take as long to set as real ones, so that kills fall between their calls."""
    desk.hardware.monitors([Monitor("left", OWN["left"], read_delay=20, set_delay=50),
                            Monitor("right", OWN["right"], maximum=80, read_delay=20, set_delay=50)])
    desk.hardware.panels([Panel("panel", OWN["panel"], delay=50)])


def run(kills, seed, build=None, report=0, only=None, evidence=FAILURES / "kills"):
    """Kills the program `kills` times, in every kind of moment or in those called `only`, and prints the totals after
    every `report` kills. Returns (failures, table): texts, and counts by (moment, result). Saves the evidence of
    failures in the folder `evidence`."""
    shutil.rmtree(evidence, ignore_errors=True)
    rng = random.Random(seed)
    failures, table, errors = [], Counter(), 0
    with Desk(evidence=evidence / "desk", **({"build_dir": build} if build else {})) as desk:
        prepare(desk)
        victim = Victim(desk, rng, evidence)
        moments = [moment for moment in victim.MOMENTS if only in (None, moment.__name__)]
        for number in range(kills):
            moment = moments[number % len(moments)]
            try:
                damaged, found = victim.kill_in(moment, number)
            except LabError as error:
                victim.fail(str(error))
                damaged, found, errors = False, victim.failures, errors + 1
            table[moment.__name__, "failed" if found else "damaged file" if damaged else "ok"] += 1
            failures += [f"seed {seed}, kill {number}, {moment.__name__}: {text}" for text in found]
            if errors == MAX_ERRORS:
                failures.append(f"the run gives up after {number + 1} kills")
                break
            victim.reset()
            if report and (number + 1) % report == 0:
                print(f"after {number + 1} kills: {totals(table)}", flush=True)
    if too_many_are_damaged(table):
        failures.append(f"too many kills have damaged settings.ini: {dict(table)}")
    return failures, table


def too_many_are_damaged(table):
    names = {moment.__name__ for moment in Victim.WRITING}
    kills = sum(count for (moment, _), count in table.items() if moment in names)
    return totals(table).get("damaged file", 0) > max(MAX_DAMAGED_SHARE * kills, MAX_DAMAGED_IN_SHORT_RUN)


def totals(table):
    return dict(sum((Counter({result: count}) for (_, result), count in table.items()), Counter()))


def print_table(table):
    results = ("ok", "damaged file", "failed")
    print(f"{'killed while':14}" + "".join(f"{result:>14}" for result in results))
    for moment in dict.fromkeys(moment for moment, _ in table):
        print(f"{moment:14}" + "".join(f"{table[moment, result]:14}" for result in results))
    print(f"{'all':14}" + "".join(f"{totals(table).get(result, 0):14}" for result in results))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--kills", type=int, default=500)
    parser.add_argument("--seed", type=int, default=int(time.time()))
    parser.add_argument("--only", choices=[moment.__name__ for moment in Victim.MOMENTS])
    parser.add_argument("--build", type=Path)
    options = parser.parse_args()
    print(f"{options.kills} kills, seed {options.seed}", flush=True)
    failures, table = run(options.kills, options.seed, options.build, 50, options.only)
    for failure in failures:
        print(failure)
    print_table(table)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
