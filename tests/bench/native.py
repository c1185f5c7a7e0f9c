"""The figures of the shipped objects: programs that run the program's work and its floor alternately in one process."""

import json
import subprocess

from ambrel_lab import Lab
from ambrel_lab.hardware import Monitor

from figures import Figure

ROUNDS, FULL_ROUNDS = 41, 201
# Milliseconds that real monitors take.
REAL = {"capabilities_delay": 300, "read_delay": 40, "set_delay": 50}


def real_rounds(count):
    """The rounds of a poll of real monitors, which takes as many thirds of a second."""
    return 3 if count <= 4 else 1


def run(lab, build, name, arguments, rounds):
    """Runs a benchmark in the lab and returns its Figures."""
    program = build / f"bench/bench_{name}.exe"
    environment = {**lab.desktop.environment, "AMBREL_BENCH_ROUNDS": str(rounds)}
    child = lab.desktop.start([str(program), *arguments], env=environment, stdout=subprocess.PIPE)
    output, _ = child.communicate()
    if child.returncode != 0:
        raise SystemExit(f"bench_{name} {' '.join(arguments)} failed: {lab.wine_log()[-2000:]}")
    return [Figure(**json.loads(line)) for line in output.decode().splitlines()]


def in_one_process(name):
    """The measurement of one group without displays."""
    def measure(build, full):
        with Lab(build, size=(1920, 1080)) as lab:
            yield from run(lab, build, name, [], FULL_ROUNDS if full else ROUNDS)
    return measure


def monitors(count, kind=""):
    return f"{count} {kind}monitor{'s' if count > 1 else ''}"


def proportion(of_many, of_few, times):
    """The Figure that shows whether the time grows faster than the number of monitors."""
    return Figure(f"{of_many.name}, beside {times} x that of 4", of_many.value, of_many.unit, times * of_few.value,
                  of_many.value / (times * of_few.value), of_many.goal, max(of_many.spread, of_few.spread))


def polls(build, full):
    with Lab(build) as lab:
        lab.hardware.panels([])
        measured = {}
        for count in (1, 4, 16, 64):
            lab.hardware.monitors([Monitor(f"monitor {i}", 100) for i in range(count)])
            measured[count], = run(lab, build, "polls", [f"poll of {monitors(count)}", str(count)],
                                   FULL_ROUNDS if full else ROUNDS)
            yield measured[count]
            lab.hardware.clear_calls()
        yield proportion(measured[64], measured[4], 16)
        for count in (1, 4, 16, 64) if full else (1, 4):
            lab.hardware.monitors([Monitor(f"monitor {i}", 100, **REAL) for i in range(count)])
            yield from run(lab, build, "polls", [f"poll of {monitors(count, 'real ')}", str(count)],
                           real_rounds(count))
            lab.hardware.clear_calls()


GROUPS = {"drag": in_one_process("drag"), "cursors": in_one_process("cursors"),
          "painting": in_one_process("painting"), "files": in_one_process("files"), "polls": polls}
