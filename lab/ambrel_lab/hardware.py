"""Simulated displays in one prefix: monitors through a double of dxva2.dll, built-in panels through one of WMI."""

import mmap
import time
from dataclasses import dataclass, field, fields, replace

from .paths import LabError

DXVA2 = "C:\\windows\\system32\\dxva2.dll"
DLL_OVERRIDES = "HKCU\\Software\\Wine\\DllOverrides"
LOCATOR = "C:\\lab\\wmi-locator.dll"
LOCATOR_KEY = "HKLM\\Software\\Classes\\CLSID\\{4590F811-1D3A-11D0-891F-00AA004B2E24}\\InprocServer32"
SCRIPT = "C:\\lab\\hardware.script"
LOG = "C:\\lab\\hardware.log"
STATE = "C:\\lab\\hardware.state"

# The layout of the shared state, which consists of 64-bit numbers: see doubles/hardware/state.h.
SCRIPT_SERIAL, WAITING, INVALID_CALLS, ENDED_DELAYS, HELD_CALLS = 1, 3, 8, 9, 10
LEAKS = {"handles": 4, "objects": 5, "values": 6, "arguments": 7}
FIRST_DISPLAY, DISPLAY_SIZE, MAX_DISPLAYS = 16, 4, 500
VALUE, DRIFT_TIME, DRIFT_VALUE = range(3)

BEHAVIOURS = ("ok", "ignores", "sticks", "drifts")
MONITOR_DELAYS = ("capabilities_delay", "read_delay", "set_delay")
# A delay that lasts until end_delays().
UNTIL_ENDED = 3_600_000


def escape(field):
    """Escapes tab, line feed, carriage return and backslash as \\t \\n \\r \\\\."""
    return str(field).replace("\\", "\\\\").replace("\t", "\\t").replace("\n", "\\n").replace("\r", "\\r")


def unescape(field):
    out, letters = "", iter(field)
    for letter in letters:
        out += {"t": "\t", "n": "\n", "r": "\r"}.get(following := next(letters, ""), following) \
            if letter == "\\" else letter
    return out


@dataclass
class Display:
    """One display monitor of Windows. `count` replaces the number of its physical monitors that Windows reports.
    `count_error` and `fetch_error` are the errors of counting and opening them, `delay` (ms) the duration of each."""

    count: int | None = None
    count_error: int = 0
    fetch_error: int = 0
    delay: int = 0


@dataclass
class Monitor:
    """One physical monitor. `minimum`, `current` and `maximum` are raw 32-bit values in any order.

    `behaviour`: ok, ignores (a set succeeds and does nothing), sticks (every set results in `at`), drifts (the value
    becomes `at`, `after` ms after a set). `fails`: any of "capabilities", "read" and "set", which then fail with
    `error`. `capabilities_delay`, `read_delay` and `set_delay` (ms) are the durations of these calls, during which
    nothing is dispatched; change() also takes `delay` for all three. With `zero_handle` the monitor's handle is 0,
    unless another monitor has that one.
    """

    name: str
    current: int = 50
    minimum: int = 0
    maximum: int = 100
    description: str = "Generic PnP Monitor"
    capable: bool = True
    behaviour: str = "ok"
    at: int = 0
    after: int = 0
    fails: tuple = ()
    error: int = 0xC0262582
    capabilities_delay: int = 0
    read_delay: int = 0
    set_delay: int = 0
    zero_handle: bool = False
    present: bool = True


@dataclass
class Panel:
    """One built-in panel. `instance` is its InstanceName (by default `name`), `path` the __PATH of its methods.

    `instance_type` and `path_type`: bstr, nullbstr, null, i4, missing. `brightness_type`: i1, i2, i4, i8, ui1, ui2,
    ui4, ui8, r8, bool, bstr, null, empty, unknown, missing. `without` is the query ("brightness" or "methods") that
    does not return it. `fails` may be "set"; `error` is an HRESULT. With a `status` other than 0 the call of its
    method succeeds and sets nothing. `delay` (ms) is the duration of the method; in a single-threaded apartment COM
    dispatches messages during it. The other fields are those of Monitor.
    """

    name: str
    current: int = 50
    instance: str | None = None
    instance_type: str = "bstr"
    path: str | None = None
    path_type: str = "bstr"
    brightness_type: str = "ui1"
    without: str = ""
    behaviour: str = "ok"
    at: int = 0
    after: int = 0
    fails: tuple = ()
    error: int = 0x80041001
    status: int = 0
    delay: int = 0
    present: bool = True

    def __post_init__(self):
        if self.instance is None:
            self.instance = self.name
        if self.path is None:
            self.path = f'\\\\LAB\\ROOT\\WMI:WmiMonitorBrightnessMethods.InstanceName="{escape(self.instance)}"'


@dataclass
class Call:
    """One call of the program. `number` orders calls by their start, and `time` is the time of the start (seconds as
    in time.time). `target` is the name of the monitor or of the object that was called. `result` is a BOOL (then
    `error` is the last error) or an HRESULT. The function "Released" is the last release of a WMI object."""

    number: int
    time: float
    process: int
    function: str
    target: str
    result: int
    error: int
    arguments: dict = field(default_factory=dict)

    @property
    def invalid(self):
        """The reason why no correct program makes this call; "" if the call is valid."""
        return self.arguments.get("invalid", "")


def number_or_text(text):
    try:
        return int(text)
    except ValueError:
        return text


def parse_call(line):
    number, moment, process, function, target, result, error, *arguments = line.split("\t")
    pairs = (argument.partition("=") for argument in arguments)
    return Call(int(number), int(moment) / 1000, int(process), function, unescape(target), int(result, 0), int(error),
                {name: number_or_text(unescape(value)) for name, _, value in pairs})


def script_line(kind, values):
    """Returns a line of the script. None is omitted, a flag becomes 0 or 1, a sequence a comma-separated list."""
    words = [kind]
    for name, value in values.items():
        if isinstance(value, bool):
            value = int(value)
        elif isinstance(value, (tuple, list, set)):
            value = ",".join(map(str, value))
        if value is not None:
            words.append(f"{name}={escape(value)}")
    return "\t".join(words)


class Hardware:
    """The simulated displays. monitors() and panels() each install their double at the first call. Call them, with []
    if necessary, before the program starts: a program that has loaded Wine's library does not load the double."""

    def __init__(self, lab, double_folder):
        self.lab, self.double_folder = lab, double_folder
        self.displays, self.devices, self.wmi_results = {}, {}, {}
        self.slots, self.numbers, self.installed, self.held_timers = {}, None, set(), ()
        self.dxva2_disabled = False

    def install_monitors(self, without=()):
        """Installs the double of dxva2.dll, which lacks the functions named in `without`."""
        self._prepare()
        image = (self.double_folder / "dxva2.dll").read_bytes()
        for function in without:
            name = b"\0" + function.encode() + b"\0"
            if name not in image:
                raise LabError(f"dxva2.dll has no {function}")
            # Changing the last letter hides the function and keeps the table of names sorted.
            image = image.replace(name, name[:-2] + b"_\0")
        target = self.lab.prefix.path(DXVA2)
        target.unlink(missing_ok=True)
        target.write_bytes(image)
        if self.dxva2_disabled:
            self.lab.registry_set(DLL_OVERRIDES, "dxva2", "native,builtin")
            self.dxva2_disabled = False
        self.installed.add("monitors")

    def remove_monitors(self):
        """Disables dxva2.dll, including Wine's, for programs that start from now on."""
        self.lab.registry_set(DLL_OVERRIDES, "dxva2", "")
        self.installed.discard("monitors")
        self.dxva2_disabled = True

    def install_panels(self):
        """Registers the double of WMI's locator."""
        self._prepare()
        self.lab.prefix.put(self.double_folder / "wmi-locator.dll", LOCATOR)
        self.lab.registry_set(LOCATOR_KEY, "", LOCATOR)
        self.installed.add("panels")

    def monitors(self, monitors, display=0, **options):
        """Replaces the physical monitors of a display monitor. Each is a Monitor, or a name for a default Monitor;
        their order is that of the enumeration. `options` are fields of Display."""
        if "monitors" not in self.installed:
            self.install_monitors()
        self.displays[display] = Display(**options)
        self._replace(lambda kind, index: (kind, index) == ("monitor", display), "monitor", display,
                      [Monitor(monitor) if isinstance(monitor, str) else replace(monitor) for monitor in monitors])

    def panels(self, panels):
        """Replaces the built-in panels. Each is a Panel, or a name for a default Panel; their order is that of the
        queries' results."""
        if "panels" not in self.installed:
            self.install_panels()
        self._replace(lambda kind, _: kind == "panel", "panel", None,
                      [Panel(panel) if isinstance(panel, str) else replace(panel) for panel in panels])

    def display(self, index=0, **options):
        """Changes fields of a Display."""
        self.displays[index] = replace(self.displays[index], **options)
        self._write()

    def wmi(self, **results):
        """Sets the results of WMI calls. Calls that are not named succeed; wmi() resets all.

        locator, connect, blanket, query, query_methods, get_object, get_method, spawn, put_timeout, put_brightness,
        exec: an HRESULT, or "null" for success without an object. next, next_methods: a list of results for the
        calls of one enumeration, in which 0 is success and "timedout" a time-out. delay_CALL: its duration in ms.
        """
        if "panels" not in self.installed:
            self.install_panels()
        self.wmi_results = results
        self._write()

    def change(self, name, **options):
        """Changes fields of a Monitor or Panel while the program runs, without changing its brightness."""
        kind, display, device = self._device(name)
        if options.get("name", name) != name or "current" in options:
            raise LabError("a name cannot be changed, and set_by_user() changes the value")
        if kind == "monitor" and "delay" in options:
            options = {**dict.fromkeys(MONITOR_DELAYS, options["delay"]), **options}
            del options["delay"]
        self.devices[name] = (kind, display, self._checked(replace(device, **options)))
        self._write()

    def unplug(self, name):
        """Disconnects a monitor, or makes a panel inactive. Does not send WM_DISPLAYCHANGE."""
        self.change(name, present=False)

    def plug(self, name):
        """Reconnects a monitor or panel, at its previous position and with its brightness."""
        self.change(name, present=True)

    def value(self, name):
        """Returns the current raw brightness of a display."""
        self._device(name)
        start = self._first_number(name)
        drift = self.numbers[start + DRIFT_TIME]
        drifted = drift and self._now() >= drift
        return self.numbers[start + (DRIFT_VALUE if drifted else VALUE)]

    def set_by_user(self, name, value):
        """Sets the raw brightness of a display, as with its buttons."""
        self._device(name)
        self._set_value(name, value)

    def calls(self, function=None, target=None):
        """Returns the calls that have ended, in the order in which they started; optionally only those of a function
        or of a target."""
        path = self.lab.prefix.path(LOG)
        data = path.read_bytes() if path.exists() else b""
        # An incomplete last line is still being written.
        lines = data[:data.rfind(b"\n") + 1].decode().split("\n")[:-1]
        calls = sorted(map(parse_call, lines), key=lambda call: call.number)
        return [call for call in calls if function in (None, call.function) and target in (None, call.target)]

    def clear_calls(self):
        """Deletes the record of calls."""
        self.lab.prefix.path(LOG).unlink(missing_ok=True)

    def waiting(self):
        """Returns the number of calls whose delay is running."""
        return self._counter(WAITING)

    def held_calls(self):
        """Returns the number of calls whose delay is UNTIL_ENDED and is running."""
        return self._counter(HELD_CALLS)

    def end_delays(self):
        """Ends the delays that are running. Later calls take as long as they are set to."""
        self.numbers[ENDED_DELAYS] += 1

    def hold_timers(self, *ids):
        """From now on the program's timers with these ids do not fire by themselves, and all others do. A timer that
        is running is held when the program starts it again."""
        self.held_timers = ids
        self._write()

    def leaks(self):
        """Returns the numbers of resources that are not released: open monitor handles, WMI objects, strings that the
        program received in VARIANTs, and BSTRs that it passed as arguments."""
        return {name: self._counter(index) for name, index in LEAKS.items()}

    def outstanding(self):
        """Returns the total number of resources that are not released."""
        return sum(self.leaks().values())

    def reset_outstanding(self):
        """Resets the counters, for instance after the program has been killed."""
        for index in (*LEAKS.values(), WAITING, HELD_CALLS, INVALID_CALLS):
            self.numbers[index] = 0

    def invalid_calls(self):
        """Returns the recorded calls that no correct program makes, such as one with a destroyed handle."""
        return [call for call in self.calls() if call.invalid]

    @staticmethod
    def _now():
        return int(time.time() * 1000)

    def _counter(self, index):
        return self.numbers[index] if self.numbers else 0

    def _device(self, name):
        if name not in self.devices:
            raise LabError(f"there is no {name}; there are {', '.join(self.devices) or 'none'}")
        return self.devices[name]

    def _first_number(self, name):
        """Returns the index of a display's first number. A name keeps its slot as long as the lab runs."""
        slot = self.slots.setdefault(name, len(self.slots))
        if slot >= MAX_DISPLAYS:
            raise LabError(f"more than {MAX_DISPLAYS} displays")
        return FIRST_DISPLAY + DISPLAY_SIZE * slot

    @staticmethod
    def _checked(device):
        if device.behaviour not in BEHAVIOURS:
            raise LabError(f"no such behaviour: {device.behaviour}; there are {', '.join(BEHAVIOURS)}")
        if isinstance(device.fails, str):
            device = replace(device, fails=(device.fails,))
        return device

    def _replace(self, is_old, kind, display, devices):
        kept = {name: entry for name, entry in self.devices.items() if not is_old(*entry[:2])}
        names = [device.name for device in devices]
        if len({*names, *kept}) != len(names) + len(kept):
            raise LabError(f"a name is used twice: {', '.join([*names, *kept])}")
        for device in devices:
            kept[device.name] = (kind, display, self._checked(device))
            self._set_value(device.name, device.current)
        self.devices = kept
        self._write()

    def _set_value(self, name, value):
        start = self._first_number(name)
        self.numbers[start + DRIFT_TIME] = 0
        self.numbers[start + VALUE] = value

    def _prepare(self):
        """Creates the shared state. The file is never replaced, because the doubles have mapped it into memory."""
        if self.numbers is None:
            path = self.lab.prefix.path(STATE)
            path.write_bytes(bytes(8 * (FIRST_DISPLAY + DISPLAY_SIZE * MAX_DISPLAYS)))
            with open(path, "r+b") as file:
                self.numbers = memoryview(mmap.mmap(file.fileno(), 0)).cast("q")
            self._write()

    def _write(self):
        lines = [script_line("display", {"index": index, **vars(display)}) for index, display in self.displays.items()]
        for name, (kind, display, device) in self.devices.items():
            values = {item.name: getattr(device, item.name) for item in fields(device) if item.name != "current"}
            lines.append(script_line(kind, {"display": display, "slot": self.slots[name], **values}))
        lines.append(script_line("wmi", self.wmi_results))
        lines.append(script_line("timers", {"held": self.held_timers}))
        self.lab.prefix.replace_text(SCRIPT, "\n".join(lines) + "\n")
        self.numbers[SCRIPT_SERIAL] += 1
