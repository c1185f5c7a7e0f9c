"""Waiting for a state. A wait ends as soon as the state is reached, so the limit only bounds the time of a failure."""

import time

from .paths import LabError

# Seconds. Generous: a test must also pass on a machine whose processors are all busy.
LIMIT = 60.0
FIRST_PAUSE, MAX_PAUSE = 0.002, 0.03


def wait_until(condition, what, limit=LIMIT, actual=None, pause=None):
    """Calls condition() until it returns a true value, and returns that value.

    Raises LabError after `limit` seconds. Its text contains `what` and, if `actual` is given, the value of actual().
    Pauses `pause` seconds between calls; without `pause` the pauses grow.
    """
    deadline = time.monotonic() + limit
    interval = pause or FIRST_PAUSE
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            found = f"; found instead: {actual()!r}" if actual else ""
            raise LabError(f"no success after {limit:g} s of waiting for {what}{found}")
        time.sleep(interval)
        interval = pause or min(interval * 2, MAX_PAUSE)


def wait_for_value(read, wanted, what, limit=LIMIT):
    """Waits until read() returns `wanted`. The LabError contains the last value that it returned."""
    last = [None]

    def reached():
        last[0] = read()
        return last[0] == wanted
    wait_until(reached, f"{what} to be {wanted!r}", limit, actual=lambda: last[0])


def wait_until_settled(read, what, pause=0.05, limit=LIMIT):
    """Waits until read() returns the same true value twice in a row, `pause` seconds apart, and returns it."""
    last = [None]

    def settled():
        before, last[0] = last[0], read()
        return last[0] if before == last[0] else None
    return wait_until(settled, f"{what} to settle", limit, actual=lambda: last[0], pause=pause)
