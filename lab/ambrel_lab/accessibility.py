"""A client of the program's accessible object, as a screen reader is one. Mixed into Lab."""

import json
import os
from collections import namedtuple
from contextlib import contextmanager

from .popup import WINDOW_CLASS, Rect
from .waiting import TIMEOUT, wait_until

# Microsoft's numbers (oleacc.h, winuser.h) by name.
ROLES = {0x08: "alert", 0x09: "window", 0x0A: "client", 0x29: "text", 0x2B: "button", 0x2C: "check button",
         0x2D: "radio button", 0x33: "slider"}
STATES = {0x1: "unavailable", 0x4: "focused", 0x10: "checked", 0x40: "read-only", 0x8000: "invisible",
          0x100000: "focusable", 0x200000: "selectable", 0x8000000: "alert"}
EVENTS = {0x8002: "show", 0x8003: "hide", 0x8004: "reorder", 0x800A: "state", 0x800C: "name", 0x800D: "description",
          0x800E: "value", 0x8010: "help"}
OBJID_CLIENT = 0xFFFFFFFC
OK, NONE = 0, 1  # S_OK, S_FALSE
INVALID_ARGUMENT, NOT_SUPPORTED, ACCESS_DENIED = 0x80070057, 0x80020003, 0x80070005
NOT_CONNECTED = 0x800401FD  # CO_E_OBJNOTCONNECTED
# RPC_E_SERVER_DIED, RPC_E_DISCONNECTED, RPC_S_UNKNOWN_IF, RPC_S_SERVER_UNAVAILABLE, RPC_S_CALL_FAILED: the process has
# ended, or COM has already unregistered its interfaces.
SERVER_GONE = 0x80010007, 0x80010108, 0x800706B5, 0x800706BA, 0x800706BE

# `state` is a frozenset of names, `rect` in pixels of the screen.
Control = namedtuple("Control", "id name role state value description help action rect")


def control_from(row):
    unknown = row["state"] & ~sum(STATES)
    state = frozenset(name for bit, name in STATES.items() if row["state"] & bit) | ({hex(unknown)} if unknown else set())
    rect = Rect(*(row[edge] for edge in ("left", "top", "right", "bottom")))
    return Control(row["id"], row["name"], ROLES.get(row["role"], row["role"]), state, row["value"],
                   row["description"], row["help"], row["action"], rect)


class AccessibilityActions:
    """Needs `desktop` of Lab."""

    def accessible_popup(self):
        """The object of the client area itself, as a Control with the id 0."""
        return self._accessible_tree()[0]

    def accessible_controls(self):
        """The controls and texts of the panel in order, as Controls."""
        return self._accessible_tree()[1:]

    def accessible_control(self, name, role=None):
        """The first control with that name, other than a text, or with that role."""
        controls = self.accessible_controls()
        found = [control for control in controls
                 if control.name == name and (control.role == role if role else control.role != "text")]
        assert found, f"no control {name!r} {role or ''} among {controls}"
        return found[0]

    def accessible_parent_window(self):
        """The handle of the window whose object contains the client area's, as text; "" if there is no parent."""
        return self.desktop.request("accessible", WINDOW_CLASS)["parent_window"]

    def accessible_press(self, child):
        """The result of a control's default action, which happens later."""
        return self._accessible_result("accessible-press", getattr(child, "id", child))

    def accessible_set(self, child, text):
        """The result of setting a control's value, which happens later."""
        return self._accessible_result("accessible-set", getattr(child, "id", child), text)

    def accessible_select(self, child, flags):
        return self._accessible_result("accessible-select", getattr(child, "id", child), flags)

    def accessible_at(self, x, y):
        """(result, child) at a point of the screen; the child is -1 if there is none."""
        answer = self.desktop.request("accessible-hit", WINDOW_CLASS, x, y)
        return answer["result"], answer["child"]

    def accessible_navigate(self, direction, child):
        """(result, child) that a direction (NAVDIR_...) leads to; the child is -1 if there is none."""
        answer = self.desktop.request("accessible-navigate", WINDOW_CLASS, direction, child)
        return answer["result"], answer["child"]

    def accessible_random(self, seed, count, acts):
        """Makes random calls, with `acts` also those that act: {"succeeded", "refused", "lost"}."""
        return self.desktop.request("accessible-random", WINDOW_CLASS, seed, count, int(acts),
                                    timeout=TIMEOUT + count)

    @contextmanager
    def accessible_holder(self):
        """Context in which a client holds the object and reads from it. Yields a function that waits until a call has
        failed and the client has ended, and returns that call's result."""
        child = self.desktop.start_tool("accessible-hold", WINDOW_CLASS)
        try:
            yield lambda: json.loads(child.communicate(timeout=TIMEOUT)[0])["result"]
        finally:
            child.kill()
            child.wait()

    @contextmanager
    def accessible_events(self):
        """Context in which the events of the program are recorded. Yields an EventRecord."""
        self.paint()  # Changes are announced when they are painted.
        child = self.desktop.start_tool("accessible-events", WINDOW_CLASS)
        try:
            yield EventRecord(child.stdout)
        finally:
            child.kill()
            child.wait()

    def _accessible_tree(self):
        return [control_from(row) for row in self.desktop.request("accessible", WINDOW_CLASS)["controls"]]

    def _accessible_result(self, command, *arguments):
        return self.desktop.request(command, WINDOW_CLASS, *arguments)["result"]


class EventRecord:
    """The events for the client area so far: (name of the event, child). `lines` are all events of the process."""

    def __init__(self, stream):
        self.stream, self.rest, self.events, self.lines = stream, b"", [], []
        os.set_blocking(stream.fileno(), False)

    def read(self):
        """All events so far that have not been taken."""
        *lines, self.rest = (self.rest + (self.stream.read() or b"")).split(b"\n")
        self.lines += lines
        for event in map(json.loads, lines):
            if event["object"] == OBJID_CLIENT and event["event"] in EVENTS:
                self.events.append((EVENTS[event["event"]], event["child"]))
        return self.events

    def take(self):
        """The events since the last call."""
        events, self.events = self.read(), []
        return events

    def wait_for(self, *expected):
        """Waits until these events have come, in any order, and takes them with all others so far."""
        wait_until(lambda: set(expected) <= set(self.read()), f"the events {expected}",
                   state=lambda: (self.read(), self.lines[-100:]))
        return self.take()
