"""Waiting for a state. A wait ends as soon as the state is there, so its limit only bounds how long a failure takes."""

import time

from .paths import LabError

# Generous: a test must also pass on a machine whose processors are all busy.
LIMIT = 60.0
FIRST_PAUSE, LONGEST_PAUSE = 0.002, 0.03


def wait_until(condition, what, limit=LIMIT, seen=None, pause=None):
    """The first true value that condition() returns.

    After `limit` seconds raises LabError, which names `what` was waited for and, with `seen`, the value of seen() that
    was there instead. Without `pause` the condition is checked often at first and less often later.
    """
    deadline = time.monotonic() + limit
    interval = pause or FIRST_PAUSE
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            instead = f"; instead there was {seen()!r}" if seen else ""
            raise LabError(f"waited {limit:g} s in vain for {what}{instead}")
        time.sleep(interval)
        interval = pause or min(interval * 2, LONGEST_PAUSE)


def wait_for_value(read, wanted, what, limit=LIMIT):
    """Waits until read() returns `wanted`; the LabError tells the last value that it returned."""
    last = [None]

    def reached():
        last[0] = read()
        return last[0] == wanted
    wait_until(reached, f"{what} to be {wanted!r}", limit, seen=lambda: last[0])


def wait_until_settled(read, what, pause=0.05, limit=LIMIT):
    """The first true value that read() returns twice in a row, `pause` seconds apart."""
    last = [None]

    def settled():
        before, last[0] = last[0], read()
        return last[0] if before == last[0] else None
    return wait_until(settled, f"{what} to settle", limit, seen=lambda: last[0], pause=pause)
