"""The figures of the shipped objects: programs that run the program's work and its floor alternately in one process."""

import contextlib
import json
import subprocess

from ambrel_lab import Lab
from ambrel_lab.hardware import Monitor

from figures import Figure, compared, counted, plain

ROUNDS, FULL_ROUNDS = 20, 100
# Seconds after which a benchmark hangs.
LIMIT = 600
# Milliseconds that real monitors take.
REAL = {"capabilities_delay": 300, "read_delay": 40, "set_delay": 50}


# The rounds of a poll of so many real monitors, which takes as many thirds of a second; a round has four. In a full run
# all together take as long as the last, three minutes.
REAL_ROUNDS = {1: 3, 4: 3}
FULL_REAL_ROUNDS = {1: 20, 4: 20, 16: 7, 64: 2}


def figure_of(name, unit, values, floors=None, goal=None, exact=False):
    if exact:
        return counted(name, unit, values[0], goal)
    return plain(name, unit, values, goal) if floors is None else compared(name, unit, values, floors, goal)


def start(lab, build, name, arguments, rounds):
    """Starts a benchmark in the lab."""
    program = build / f"bench/bench_{name}.exe"
    environment = {**lab.desktop.environment, "AMBREL_BENCH_ROUNDS": str(rounds)}
    return lab.desktop.start([str(program), *arguments], env=environment, stdout=subprocess.PIPE)


def finish(lab, child):
    """Waits for a benchmark and returns its Figures."""
    output, _ = child.communicate(timeout=LIMIT)
    if child.returncode != 0:
        raise RuntimeError(f"{' '.join(child.args)} failed: {lab.wine_log()[-2000:]}")
    return [figure_of(**json.loads(line)) for line in output.decode().splitlines()]


def run(lab, build, name, arguments, rounds):
    """Runs a benchmark in the lab and returns its Figures."""
    return finish(lab, start(lab, build, name, arguments, rounds))


def in_one_process(name):
    """The measurement of one group without displays."""
    def measure(build, full):
        with Lab(build, size=(1920, 1080), one_processor=False) as lab:
            yield from run(lab, build, name, [], FULL_ROUNDS if full else ROUNDS)
    return measure


def monitors(count, kind=""):
    return f"{count} {kind}monitor{'s' if count > 1 else ''}"


def increment(of_many, of_few, many, few):
    """The Figure of what each further monitor adds to a poll. The errors of both polls add up."""
    value = (of_many.value - of_few.value) / (many - few)
    floor = (of_many.floor - of_few.floor) / (many - few)

    def total(of_many_share, of_few_share):
        if of_many_share is None or of_few_share is None:
            return None
        return (of_many_share * of_many.value + of_few_share * of_few.value) / (of_many.value - of_few.value)

    first = "first" if few == 1 else f"first {few}"
    return Figure(f"{of_many.name}, each beyond the {first}", value, of_many.unit, floor, value / floor, of_many.goal,
                  total(of_many.spread, of_few.spread), total(of_many.error, of_few.error))


def polls(build, full):
    with Lab(build, one_processor=False) as lab:
        lab.hardware.panels([])
        measured = {}
        for count in (1, 4, 16, 64):
            lab.hardware.monitors([Monitor(f"monitor {i}", 100) for i in range(count)])
            measured[count], = run(lab, build, "polls", [f"poll of {monitors(count)}", str(count)],
                                   FULL_ROUNDS if full else ROUNDS)
            yield measured[count]
            lab.hardware.clear_calls()
        yield increment(measured[64], measured[16], 64, 16)


def real_polls(build, full):
    """Side by side, since a poll of real monitors mostly waits."""
    with contextlib.ExitStack() as stack:
        running, measured = [], []
        counts = FULL_REAL_ROUNDS if full else REAL_ROUNDS
        for count, rounds in counts.items():
            lab = stack.enter_context(Lab(build, one_processor=False))
            lab.hardware.panels([])
            lab.hardware.monitors([Monitor(f"monitor {i}", 100, **REAL) for i in range(count)])
            arguments = [f"poll of {monitors(count, 'real ')}", str(count), "real"]
            running.append((lab, start(lab, build, "polls", arguments, rounds)))
        for lab, child in running:
            measured += finish(lab, child)
            yield measured[-1]
        few, many = sorted(counts)[-2:]
        yield increment(measured[-1], measured[-2], many, few)


GROUPS = {"drag": in_one_process("drag"), "cursors": in_one_process("cursors"),
          "painting": in_one_process("painting"), "files": in_one_process("files"), "polls": polls,
          "real-polls": real_polls}
