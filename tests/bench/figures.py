"""The figures of a run: the table, the JSON file, the comparison with an earlier run and the table of the document."""

import json
import math
import statistics
from dataclasses import asdict, dataclass


@dataclass
class Figure:
    """One measured figure. `goal` is the highest acceptable ratio or, without a floor, the highest acceptable value.
    `spread` is half the range of the middle half of the rounds, `error` the distance from the median to the farther
    end of its 95 % confidence interval, both as a share of the median; 0 for what is counted and does not vary, None
    for a measurement of a single round. `commit` is what was measured."""

    name: str
    value: float
    unit: str
    floor: float | None = None
    ratio: float | None = None
    goal: float | None = None
    spread: float | None = 0.0
    error: float | None = 0.0
    commit: str = ""

    @property
    def judged(self):
        """The number that the goal and a comparison apply to."""
        return self.value if self.ratio is None else self.ratio

    @property
    def verdict(self):
        """"met" or "over" if the goal is outside the error of the measurement, otherwise, and without a known error,
        "unclear"; "" without goal."""
        if self.goal is None:
            return ""
        if self.error is None:
            return "unclear"
        if self.judged * (1 + self.error) <= self.goal:
            return "met"
        return "over" if self.judged * (1 - self.error) > self.goal else "unclear"


def error_of_median(values, middle):
    """The distance from the median to the farther end of its 95 % confidence interval. The ends are order statistics,
    so no distribution is assumed; of fewer than six values they are the extremes."""
    ordered, count = sorted(values), len(values)
    rank = max(0, math.floor((count - 1.96 * math.sqrt(count)) / 2) - 1)
    return max(middle - ordered[rank], ordered[count - 1 - rank] - middle)


def summary(values):
    """(median, spread, error) of a list of numbers; a single one has neither spread nor error."""
    middle = statistics.median(values)
    if len(values) < 2:
        return middle, None, None
    if not middle:
        return middle, 0.0, 0.0
    low, _, high = statistics.quantiles(values, n=4, method="inclusive")
    return middle, (high - low) / 2 / abs(middle), error_of_median(values, middle) / abs(middle)


def compared(name, unit, values, floors, goal=None):
    """The Figure of values and floors that were measured in pairs."""
    ratio, spread, error = summary([value / floor for value, floor in zip(values, floors, strict=True)])
    return Figure(name, statistics.median(values), unit, statistics.median(floors), ratio, goal, spread, error)


def plain(name, unit, values, goal=None):
    """The Figure of values without a floor."""
    value, spread, error = summary(values)
    return Figure(name, value, unit, goal=goal, spread=spread, error=error)


def counted(name, unit, value, goal=None):
    """The Figure of a number that is the same in every round."""
    return Figure(name, value, unit, goal=goal)


def in_both_orders(measure, floor, rounds):
    """(values, floors): one of each per round, which is subject, floor, floor, subject, so that each follows each
    equally often."""
    values, floors = [], []
    for _ in range(rounds):
        before, floor_before, floor_after = measure(), floor(), floor()
        values.append(math.sqrt(before * measure()))
        floors.append(math.sqrt(floor_before * floor_after))
    return values, floors


def number(value):
    """A number with about three digits; "" for None."""
    if value is None:
        return ""
    return f"{value:,.0f}" if abs(value) >= 100 else f"{value:.1f}" if abs(value) >= 10 else f"{value:.2f}"


def percent(share):
    return "" if share is None else f"{100 * share:.0f} %"


def cells(figure):
    ratio = "" if figure.ratio is None else f"{figure.ratio:.2f}"
    goal = "" if figure.goal is None else f"{figure.goal:.2f} x" if figure.ratio is not None else number(figure.goal)
    return [figure.name, number(figure.value), figure.unit, number(figure.floor), ratio, goal,
            percent(figure.spread), percent(figure.error), figure.verdict]


HEADINGS = ["figure", "value", "unit", "floor", "ratio", "goal", "spread", "error", ""]
WIDTHS = [70, 9, 5, 9, 6, 8, 6, 5, 7]


def text_row(row):
    return " ".join(cell.ljust(width) if column in (0, 2, 8) else cell.rjust(width)
                    for column, (cell, width) in enumerate(zip(row, WIDTHS, strict=True))).rstrip()


def print_heading():
    print(text_row(HEADINGS), flush=True)


def print_figure(figure):
    print(text_row(cells(figure)), flush=True)


def save(figures, path):
    path.write_text(json.dumps([asdict(figure) for figure in figures], indent=1) + "\n", encoding="utf-8")


def load(path):
    return [Figure(**row) for row in json.loads(path.read_text(encoding="utf-8"))]


def growth(figure, before):
    """By how much a figure has grown beyond the spread, as a text; "" if it has not. Any growth from 0 counts."""
    change = f"{number(before.judged)} to {number(figure.judged)}"
    if (figure.ratio is None) != (before.ratio is None):
        return f"{change}, no longer {'a ratio' if figure.ratio is None else 'a value'}"
    if not before.judged:
        return change if figure.judged > 0 else ""
    share = figure.judged / before.judged - 1
    return f"{change}, +{100 * share:.0f} %" if share > max(figure.spread or 0, before.spread or 0) else ""


def print_comparison(figures, earlier):
    """Prints a line for each figure that has grown by more than its spread, is missing or is new."""
    before = {figure.name: figure for figure in earlier}
    lines = []
    for figure in figures:
        old = before.pop(figure.name, None)
        if old is None:
            lines.append(f"new:     {figure.name}")
        elif change := growth(figure, old):
            lines.append(f"grew:    {figure.name}: {change}")
    lines += [f"missing: {name}" for name in before]
    print("\n".join(["", "Compared with the earlier run:", *(lines or ["nothing grew by more than its spread"])]))


def document_table(figures):
    rows = [HEADINGS, ["---", "--:", "---", "--:", "--:", "--:", "--:", "--:", "---"], *map(cells, figures)]
    return "\n".join("| " + " | ".join(row) + " |" for row in rows) + "\n"


START, END = "<!-- table: ./bench.sh --document -->\n", "<!-- end of the table -->\n"


def write_document(figures, path):
    """Replaces the table of the document and the commit that it was measured at."""
    commits = {figure.commit for figure in figures}
    if len(commits) != 1 or "" in commits:
        raise SystemExit(f"the figures are not of one commit: {', '.join(sorted(commits))}")
    text = path.read_text(encoding="utf-8")
    head, _, rest = text.partition(START)
    _, found, tail = rest.partition(END)
    if not found:
        raise SystemExit(f"{path} has no place for the table")
    path.write_text(f"{head}{START}Measured at commit {commits.pop()}.\n\n{document_table(figures)}{END}{tail}",
                    encoding="utf-8")
