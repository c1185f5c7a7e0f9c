"""Waiting for something to become true."""

import time

from .places import LabError


def wait_until(condition, timeout, what, pause=0.02):
    """The first true value that condition() returns; LabError naming `what` when `timeout` seconds have passed."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise LabError(f"waited {timeout} s in vain for {what}")
        time.sleep(pause)
