"""Checks of the simulated displays through a client that uses Windows' interfaces; part of lab.py selftest."""

import json
import subprocess
import threading
import time
from collections import Counter, namedtuple

from .hardware import UNTIL_ENDED, Monitor, Panel
from .lab import Lab
from .waiting import TIMEOUT, wait_until

CLIENT = "C:\\lab\\labhardwarecheck.exe"
NO_RESPONSE, UNPLUGGED, INVALID_HANDLE = 0xC0262582, 0xC026258D, 0xC026258C
BRIGHTNESS, CONTRAST = 2, 4
VARIANT_TYPES = {"i1": 16, "i2": 2, "i4": 3, "i8": 20, "ui1": 17, "ui2": 18, "ui4": 19, "ui8": 21, "r8": 5, "bool": 11,
                 "bstr": 8, "null": 1, "empty": 0, "unknown": 13}
TIMED_OUT, FAILED, INVALID_NAMESPACE = 0x00040004, 0x80041001, 0x8004100E
# The calls of WMI, each with the command of the client that makes it. The client names the call that failed.
WMI_CALLS = [("locator", "panels"), ("connect", "panels"), ("blanket", "panels"), ("query", "panels"),
         ("query_methods", "set"), ("get_object", "set"), ("get_method", "set"), ("spawn", "set"),
         ("put_timeout", "set"), ("put_brightness", "set"), ("exec", "set")]
RETURNING_OBJECTS = ("locator", "connect", "query", "query_methods", "get_object", "get_method", "spawn")

MonitorSeen = namedtuple("MonitorSeen",
                         "description handle capabilities_error capabilities error minimum current maximum")


class Client:
    """The running client. run() executes a command and returns the rows of its output and the number of timer messages
    that were dispatched during it."""

    def __init__(self, lab):
        lab.prefix.put(lab.build_dir / "lab" / "labhardwarecheck.exe", CLIENT)
        self.process = lab.desktop.start([CLIENT], stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(TIMEOUT)

    def run(self, *words):
        self.process.stdin.write((json.dumps(list(map(str, words)), ensure_ascii=False) + "\n").encode())
        self.process.stdin.flush()
        rows = []
        while isinstance(row := self._read_row(), list):
            rows.append([str(value) for value in row])
        return rows, row

    def _read_row(self):
        line = self.process.stdout.readline()
        assert line, "the client has ended"
        return json.loads(line)

    def monitors(self):
        return [MonitorSeen(row[0], *map(int, row[1:])) if len(row) == 8 else tuple(row)
                for row in self.run("monitors")[0]]

    def set_monitor(self, index, value):
        return int(self.run("monitor-set", index, value)[0][0][0])

    def panels(self):
        """Returns [(name, type, value)], and the row that follows the last panel."""
        rows = self.run("panels")[0]
        return [(row[5], int(row[4]), row[6]) for row in rows if row[0] == "panel"], rows[-1]

    def set_panel(self, instance, percent):
        return self.run("panel-set", instance, percent)[0][-1]


def check_monitor_values(hardware, client):
    hardware.monitors([Monitor("left", 37, description="Left \u00e9\t\\"), Monitor("right", 55, 10, 90)])
    hardware.clear_calls()
    left, right = client.monitors()
    assert left.description == "Left \u00e9\t\\" and left[2:] == (0, BRIGHTNESS | CONTRAST, 0, 0, 37, 100), left
    assert right[2:] == (0, BRIGHTNESS | CONTRAST, 0, 10, 55, 90), right
    recorded = [(call.function, call.target) for call in hardware.calls()]
    assert recorded == [("GetNumberOfPhysicalMonitorsFromHMONITOR", "display0"),
                    ("GetPhysicalMonitorsFromHMONITOR", "display0"),
                    ("GetMonitorCapabilities", "left"), ("GetMonitorBrightness", "left"),
                    ("GetMonitorCapabilities", "right"), ("GetMonitorBrightness", "right"),
                    ("DestroyPhysicalMonitors", "left,right")], recorded
    assert client.set_monitor(1, 80) == 0 and hardware.value("right") == 80
    [call] = hardware.calls("SetMonitorBrightness")
    assert (call.target, call.arguments["value"], call.result) == ("right", 80, 1), call
    hardware.set_by_user("left", 12)
    assert client.monitors()[0].current == 12
    assert hardware.outstanding() == 0 and not hardware.invalid_calls()


def check_unusual_monitors(hardware, client):
    hardware.monitors([Monitor("zero", zero_handle=True), Monitor("below", 5, 10, 100), Monitor("equal", 7, 50, 50),
                       Monitor("above", 7, 90, 10), Monitor("incapable", capable=False),
                       Monitor("large", 0xFFFFFFFF, 0, 0xFFFFFFFF, description="x" * 200)])
    zero, below, equal, above, incapable, large = client.monitors()
    assert zero.handle == 0 and below.handle != 0
    assert [seen[5:] for seen in (below, equal, above)] == [(10, 5, 100), (50, 7, 50), (90, 7, 10)]
    assert incapable.capabilities == CONTRAST and large.current == 0xFFFFFFFF and large.description == "x" * 127
    hardware.monitors([Monitor(f"m{number}", number) for number in range(64)])
    assert [seen.current for seen in client.monitors()] == list(range(64))
    hardware.monitors([])
    assert client.monitors() == []
    hardware.monitors(["one"], count_error=5)
    assert client.monitors() == [("count", "5")]
    hardware.monitors(["one"], fetch_error=6)
    assert client.monitors() == [("fetch", "6")]
    hardware.display(count=3, fetch_error=0)
    assert client.monitors() == [("fetch", "87")]
    hardware.display(count=0)
    assert client.monitors() == [] and hardware.outstanding() == 0 and not hardware.invalid_calls()


def check_behaviours(hardware, client):
    names = ("ok", "ignores", "sticks", "drifts")
    hardware.monitors([Monitor(name, 40, behaviour=name, at=25, after=UNTIL_ENDED) for name in names])
    assert [client.set_monitor(index, 100) for index in range(4)] == [0] * 4
    assert [hardware.value(name) for name in names] == [100, 40, 25, 100]
    hardware.change("drifts", after=400)
    assert client.set_monitor(3, 100) == 0
    wait_until(lambda: hardware.value("drifts") == 25, "the drift", state=lambda: hardware.value("drifts"))
    assert [seen.current for seen in client.monitors()] == [100, 40, 25, 25]
    hardware.set_by_user("drifts", 60)
    hardware.change("ignores", behaviour="ok")
    client.set_monitor(1, 99)
    assert (hardware.value("drifts"), hardware.value("ignores")) == (60, 99)
    hardware.monitors([Monitor("a", fails="capabilities"), Monitor("b", fails=("read",)),
                       Monitor("c", fails=("set",), error=31)])
    a, b, c = client.monitors()
    assert (a.capabilities_error, a.error, b.capabilities_error, b.error) == (NO_RESPONSE, 0, 0, NO_RESPONSE)
    assert (c.error, client.set_monitor(2, 1), hardware.value("c")) == (0, 31, 50)
    hardware.unplug("b")
    assert len(client.monitors()) == 2
    hardware.plug("b")
    assert len(client.monitors()) == 3 and hardware.outstanding() == 0


def shortest_run(client, limit):
    """The seconds of the first run that takes less than `limit`. A busy machine makes a run longer, never shorter."""
    for _ in range(20):
        started = time.monotonic()
        client.run("monitors")
        if (seconds := time.monotonic() - started) < limit:
            return seconds
    raise AssertionError(f"every run took {limit} seconds or more")


def check_held_timers(hardware, client):
    assert client.run("timer")[0] == [["1"]]
    hardware.hold_timers(4, 7)
    assert client.run("timer")[0] == [["0"]]
    hardware.hold_timers(7)
    assert client.run("timer")[0] == [["1"]]
    hardware.hold_timers()


def check_waiting(hardware, client):
    hardware.monitors(["slow", "other"])
    hardware.change("slow", delay=300)
    assert 0.6 <= shortest_run(client, 3) and client.run("monitors")[1] == 0
    hardware.change("slow", delay=0, capabilities_delay=400)
    assert 0.4 <= shortest_run(client, 2)
    # A monitor is unplugged during a call: that call and the later ones fail, and its handle is released.
    hardware.change("slow", delay=UNTIL_ENDED)
    hardware.clear_calls()
    monitors = []
    reading = threading.Thread(target=lambda: monitors.extend(client.monitors()))
    reading.start()
    wait_until(hardware.held_calls, "a call that waits")
    hardware.unplug("slow")
    hardware.end_delays()
    reading.join(TIMEOUT)
    assert (monitors[0].capabilities_error, monitors[0].error) == (UNPLUGGED, UNPLUGGED), monitors
    assert monitors[1].error == 0 and hardware.outstanding() == 0 and hardware.waiting() == 0


def check_monitor_misuse(hardware, client):
    hardware.monitors(["one", "two"])
    client.run("monitor-misuse")
    assert hardware.leaks()["handles"] == 2
    hardware.reset_outstanding()
    assert client.run("monitor-misuse", "destroyed")[0] == [["0", str(INVALID_HANDLE), "0"]]
    invalid = [call.function for call in hardware.invalid_calls()]
    assert invalid == ["SetMonitorBrightness", "DestroyPhysicalMonitor"] and hardware.outstanding() == 0, invalid
    hardware.clear_calls()


def check_panel_values(hardware, client):
    assert client.panels() == ([], ["end", "0x00000001"])
    hardware.panels([Panel(kind, 80, brightness_type=kind) for kind in VARIANT_TYPES])
    panels, _ = client.panels()
    assert [(name, kind) for name, kind, _ in panels] == list(VARIANT_TYPES.items()), panels
    assert [value for name, _, value in panels if name in ("i2", "i4", "ui1", "ui2", "ui4", "bstr")] == ["80"] * 6
    hardware.panels([Panel("i2", -3, brightness_type="i2"), Panel("i4", -4, brightness_type="i4"),
                     Panel("ui4", 120, brightness_type="ui4"), Panel("none", brightness_type="missing")])
    panels, _ = client.panels()
    assert [value for _, _, value in panels] == ["-3", "-4", "120", ""] and panels[3][1] == 0, panels
    hardware.panels([Panel("empty", instance=""), Panel("long", instance="n" * 300), Panel("twin1", instance="twin"),
                     Panel("twin2", instance="twin"), Panel("4", instance_type="i4"),
                     Panel("null", instance_type="null"), Panel("nothing", instance_type="nullbstr"),
                     Panel("hidden", without="brightness"), Panel("missing", instance_type="missing")])
    names = [name for name, _, _ in client.panels()[0]]
    assert names == ["", "n" * 300, "twin", "twin", "4", "", "(null)", ""], names
    assert hardware.outstanding() == 0 and not hardware.invalid_calls()


def check_panel_set(hardware, client):
    hardware.panels([Panel("panel \u00e9", 30), Panel("twin1", instance="twin"), Panel("twin2", instance="twin"),
                     Panel("stubborn", behaviour="ignores"), Panel("broken", fails="set"), Panel("failing", status=1)])
    hardware.clear_calls()
    assert client.set_panel("panel \u00e9", 100) == ["set"] and hardware.value("panel \u00e9") == 100
    [call] = hardware.calls("ExecMethod")
    names = ("method", "flags", "timeout", "brightness", "out", "call_result")
    arguments = {name: call.arguments[name] for name in names}
    assert arguments == {"method": "WmiSetBrightness", "flags": 0, "timeout": 0, "brightness": 100, "out": 0,
                    "call_result": 0}, arguments
    puts = [(put.arguments["property"], put.arguments["type"]) for put in hardware.calls("Put")]
    assert puts == [("Timeout", 3), ("Brightness", 17)], puts
    released = [call.target for call in hardware.calls("Released")]
    assert Counter(released) == Counter(["locator", "services", "enumerator", "methods", "class", "signature",
                                         "in-parameters"]), released
    blanket = hardware.calls("SetBlanket")[0].arguments
    assert [blanket[name] for name in ("authentication", "authorization", "level", "impersonation")] == [10, 0, 3, 3]
    assert client.set_panel("twin", 70) == ["set"]
    assert (hardware.value("twin1"), hardware.value("twin2")) == (70, 50)
    assert client.set_panel("stubborn", 70) == ["set"] and hardware.value("stubborn") == 50
    assert client.set_panel("broken", 70) == ["not set"] and hardware.value("broken") == 50
    assert client.set_panel("failing", 70) == ["set"] and hardware.value("failing") == 50
    hardware.unplug("panel \u00e9")
    assert client.set_panel("panel \u00e9", 10) == ["end", "0x00000001"]
    assert len(client.panels()[0]) == 5 and hardware.outstanding() == 0 and not hardware.invalid_calls()


def messages_during_a_held_call(hardware, client):
    """The number of timer messages that the client dispatches during a call that is held for a second."""
    hardware.wmi(delay_next=UNTIL_ENDED)
    messages = []
    listing = threading.Thread(target=lambda: messages.append(client.run("panels")[1]))
    listing.start()
    wait_until(hardware.held_calls, "a call that is held")
    time.sleep(1)  # 50 periods of the client's timer.
    hardware.wmi()
    hardware.end_delays()
    listing.join(TIMEOUT)
    return messages[0]


def check_failing_wmi_calls(hardware, client):
    hardware.panels(["first", "second"])

    def failure(command):
        return client.run("panels")[0][-1] if command == "panels" else client.run("panel-set", "first", 5)[0][0]

    for call, command in WMI_CALLS:
        name = call.replace("_methods", "")
        for result in (FAILED, INVALID_NAMESPACE):
            hardware.wmi(**{call: result})
            assert failure(command) == [name, f"0x{result:08x}"], (call, failure(command))
        if call in RETURNING_OBJECTS:
            hardware.wmi(**{call: "null"})
            assert failure(command) == [name, "0x00000000"], (call, failure(command))
        assert hardware.value("first") == 50 and hardware.outstanding() == 0, (call, hardware.leaks())
    hardware.wmi(next=["timedout"])
    assert client.panels() == ([], ["end", f"0x{TIMED_OUT:08x}"])
    hardware.wmi(next=[0, FAILED], next_methods=["null"])
    panels, end = client.panels()
    assert len(panels) == 1 and end == ["end", f"0x{FAILED:08x}"] and failure("set") == ["end", "0x00000000"]
    assert messages_during_a_held_call(hardware, client) > 0
    assert client.run("panels")[1] == 0
    assert len(client.panels()[0]) == 2 and hardware.outstanding() == 0 and not hardware.invalid_calls()


def check_panel_misuse(hardware, client):
    hardware.panels(["first"])
    hardware.clear_calls()
    for what, leak in (("object", "objects"), ("value", "values"), ("argument", "arguments")):
        client.run("panel-misuse", what)
        assert hardware.leaks() == {**dict.fromkeys(hardware.leaks(), 0), leak: 1}, (what, hardware.leaks())
        hardware.reset_outstanding()
    client.run("panel-misuse", "literal")
    assert [call.function for call in hardware.invalid_calls()] == ["GetObject"] and hardware.outstanding() == 0
    hardware.clear_calls()


def check_libraries(lab):
    """Wine's library, the double without a function, no library, and both doubles in two programs, in this order. The
    desktop runs throughout."""
    with Client(lab) as client:
        assert client.monitors() == [("count", "120")]
        # Without the lab's locator, Wine's locator connects and finds no panel.
        assert client.panels()[0] == []
    assert lab.hardware.calls() == [] and lab.hardware.outstanding() == 0
    lab.hardware.install_monitors(without=("SetMonitorBrightness", "DestroyPhysicalMonitors"))
    with Client(lab) as client:
        assert client.monitors() == [("lacks", "SetMonitorBrightness"), ("lacks", "DestroyPhysicalMonitors")]
    lab.hardware.remove_monitors()
    with Client(lab) as client:
        assert len(client.monitors()) == 7
    lab.hardware.monitors(["one"])
    lab.hardware.panels(["panel"])
    with Client(lab) as client, Client(lab) as other:
        assert len(client.monitors()) == 1 and client.set_monitor(0, 77) == 0
        assert other.monitors()[0].current == 77 and other.panels()[0] == [("panel", 17, "50")]
    assert len({call.process for call in lab.hardware.calls()}) == 2 and lab.hardware.outstanding() == 0


CHECKS = (check_monitor_values, check_unusual_monitors, check_behaviours, check_held_timers, check_waiting,
          check_monitor_misuse, check_panel_values, check_panel_set, check_failing_wmi_calls, check_panel_misuse)


def hardware_checks(check, build_dir, evidence):
    """Runs every check through check(name, call, lab). A lab that fails outside a check saves its
    evidence in a folder of `evidence`."""
    with Lab(build_dir, evidence=evidence / "hardware") as lab:
        lab.hardware.monitors([])
        lab.hardware.panels([])
        with Client(lab) as client:
            for call in CHECKS:
                check(call.__name__, lambda call=call: call(lab.hardware, client), lab)
    with Lab(build_dir, evidence=evidence / "libraries") as lab:
        check("check_libraries", lambda: check_libraries(lab), lab)
