"""Waiting for a state. A wait ends as soon as the state is reached, so the time-out only bounds the time of a failure."""

import time

from .paths import LabError

# Seconds. Generous: a test must also pass on a machine whose processors are all busy.
TIMEOUT = 60.0
FIRST_PAUSE, MAX_PAUSE = 0.002, 0.03


def wait_until(condition, what, timeout=TIMEOUT, state=None, pause=None):
    """Calls condition() until it returns a true value, and returns that value.

    Raises LabError after `timeout` seconds. Its text contains `what` and, if `state` is given, the value of state().
    Pauses `pause` seconds between calls; without `pause` the pauses grow.
    """
    deadline = time.monotonic() + timeout
    interval = pause or FIRST_PAUSE
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            found = f"; found instead: {state()!r}" if state else ""
            raise LabError(f"no success after {timeout:g} s of waiting for {what}{found}")
        time.sleep(interval)
        interval = pause or min(interval * 2, MAX_PAUSE)


def wait_for_value(read, wanted, what, timeout=TIMEOUT):
    """Waits until read() returns `wanted`. The LabError contains the last value that it returned."""
    last = [None]

    def reached():
        last[0] = read()
        return last[0] == wanted
    wait_until(reached, f"{what} to be {wanted!r}", timeout, state=lambda: last[0])


def wait_until_settled(read, what, pause=0.05, timeout=TIMEOUT):
    """Waits until read() returns the same true value twice in a row, `pause` seconds apart, and returns it."""
    last = [None]

    def settled():
        before, last[0] = last[0], read()
        return last[0] if before == last[0] else None
    return wait_until(settled, f"{what} to settle", timeout, state=lambda: last[0], pause=pause)
