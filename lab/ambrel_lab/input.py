"""Mouse and keyboard of a lab's screen, as a person would use them."""

import os
import subprocess

from .places import LabError

SETTLE = 0.03


class Hands:
    """All places are pixels of the screen."""

    def __init__(self, display):
        self.environment = dict(os.environ, DISPLAY=display)

    def xdotool(self, *words):
        done = subprocess.run(["xdotool", *map(str, words)], env=self.environment, capture_output=True, text=True,
                              timeout=60)
        if done.returncode != 0:
            raise LabError(f"xdotool {words}: {done.stderr.strip()}")
        return done.stdout

    def move(self, x, y):
        self.xdotool("mousemove", round(x), round(y), "sleep", SETTLE)

    def click(self, x, y, button=1):
        self.xdotool("mousemove", round(x), round(y), "sleep", SETTLE, "mousedown", button, "sleep", SETTLE,
                     "mouseup", button)

    def press(self, x, y, button=1):
        self.xdotool("mousemove", round(x), round(y), "sleep", SETTLE, "mousedown", button, "sleep", SETTLE)

    def release(self, button=1):
        self.xdotool("mouseup", button)

    def drag(self, x0, y0, x1, y1, steps=10, button=1, release=True):
        """Presses at the first place and moves to the second in `steps` equal moves of 10 ms each."""
        words = ["mousemove", round(x0), round(y0), "sleep", SETTLE, "mousedown", button, "sleep", SETTLE]
        for step in range(1, steps + 1):
            part = step / steps
            words += ["mousemove", round(x0 + (x1 - x0) * part), round(y0 + (y1 - y0) * part), "sleep", 0.01]
        self.xdotool(*words, "sleep", SETTLE, *(["mouseup", button] if release else []))

    def key(self, combination):
        """Such as "alt+F4", "Escape", "Return"."""
        self.xdotool("key", combination)

    def position(self):
        """(x, y) of the mouse pointer."""
        place = dict(line.split("=") for line in self.xdotool("getmouselocation", "--shell").split())
        return int(place["X"]), int(place["Y"])
