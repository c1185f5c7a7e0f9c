"""The doubles of hardware in one prefix: monitors behind dxva2.dll and built-in panels behind WMI."""

import mmap
import os
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

# The layout of the shared state, as doubles/hardware/state.h describes it: 64-bit numbers.
SCRIPT_SERIAL, WAITING, MISTAKES = 1, 3, 8
LEAKS = {"handles": 4, "objects": 5, "values": 6, "arguments": 7}
FIRST_KNOB, KNOB_SIZE, KNOBS = 16, 4, 500
VALUE, DRIFT_TIME, DRIFT_VALUE = range(3)

BEHAVIOURS = ("ok", "ignores", "sticks", "drifts")
MONITOR_DELAYS = ("capabilities_delay", "read_delay", "set_delay")



def escape(field):
    """Tab, line feed, carriage return and backslash as \\t \\n \\r \\\\, so that a value is one field of one line."""
    return str(field).replace("\\", "\\\\").replace("\t", "\\t").replace("\n", "\\n").replace("\r", "\\r")


def unescape(field):
    out, letters = "", iter(field)
    for letter in letters:
        out += {"t": "\t", "n": "\n", "r": "\r"}.get(following := next(letters, ""), following) \
            if letter == "\\" else letter
    return out


@dataclass
class Display:
    """One display monitor of Windows. `count` is what the counting call claims instead of the truth; the errors are
    those of counting and of fetching. `delay` (ms) is that of both calls."""

    count: int | None = None
    count_error: int = 0
    fetch_error: int = 0
    delay: int = 0


@dataclass
class Monitor:
    """One monitor. Raw values from `minimum` to `maximum`, in any order and of any size that 32 bits hold.

    `behaviour`: ok, ignores (every set is answered well and does nothing), sticks (every set leads to `at`), drifts
    (`after` ms after a set it shows `at`). `fails` holds any of "capabilities", "read" and "set", which then fail with
    `error`. `capabilities_delay`, `read_delay` and `set_delay` (ms) are how long those calls take, `delay` sets all
    three in change(); nothing is dispatched meanwhile. With `zero_handle` its handle is 0, unless that one is in use.
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
    """One built-in panel. `instance` is its InstanceName (`name` when not given), `path` the __PATH of its methods.

    `instance_type` and `path_type`: bstr, nullbstr, null, i4, missing. `brightness_type`: i1, i2, i4, i8, ui1, ui2,
    ui4, ui8, r8, bool, bstr, null, empty, unknown, missing. `without` is the query ("brightness" or "methods") that
    does not find it. `fails` may be "set"; `error` is an HRESULT. With a `status` other than 0 its method sets nothing,
    though the call succeeds. `delay` (ms) is how long the method takes; in a single-threaded apartment the wait
    dispatches what COM dispatches. The rest is as with a Monitor.
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
    """One call of the program. `number` orders calls by their beginning, `time` is when that was (seconds as in
    time.time). `target` is the monitor's name or what else was called. `result` is a BOOL (then `error` is the last
    error) or an HRESULT. "Released" is the end of an object of WMI."""

    number: int
    time: float
    process: int
    function: str
    target: str
    result: int
    error: int
    arguments: dict = field(default_factory=dict)

    @property
    def mistake(self):
        """Why no correct program makes this call, "" when it is right."""
        return self.arguments.get("mistake", "")


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
    """A line of the script. None is left out, a flag becomes 0 or 1, a sequence a list with commas."""
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
    """Neither double is there until it is asked for: monitors() and panels() install theirs. A program that has
    already loaded Wine's own library keeps it, so call them, with [] if need be, before it starts."""

    def __init__(self, lab, double_folder):
        self.lab, self.double_folder = lab, double_folder
        self.displays, self.devices, self.steps = {}, {}, {}
        self.slots, self.numbers, self.installed = {}, None, set()
        self.dxva2_disabled = False

    def install_monitors(self, without=()):
        """Puts the double of dxva2.dll into system32, lacking the functions named in `without`."""
        self._prepare()
        image = (self.double_folder / "dxva2.dll").read_bytes()
        for function in without:
            name = b"\0" + function.encode() + b"\0"
            if name not in image:
                raise LabError(f"dxva2.dll has no {function}")
            # Another last letter: the function cannot be found by its name, and the table of names stays in order.
            image = image.replace(name, name[:-2] + b"_\0")
        target = self.lab.prefix.path(DXVA2)
        target.unlink(missing_ok=True)
        target.write_bytes(image)
        if self.dxva2_disabled:
            self.lab.registry_set(DLL_OVERRIDES, "dxva2", "native,builtin")
            self.dxva2_disabled = False
        self.installed.add("monitors")

    def remove_monitors(self):
        """From now on a program that starts finds no dxva2.dll at all, not even Wine's."""
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
        """The monitors behind a display monitor from now on (Monitors, or names for ordinary ones), in this order.
        `options` are fields of Display."""
        if "monitors" not in self.installed:
            self.install_monitors()
        self.displays[display] = Display(**options)
        self._replace(lambda kind, place: (kind, place) == ("monitor", display), "monitor", display,
                      [Monitor(monitor) if isinstance(monitor, str) else replace(monitor) for monitor in monitors])

    def panels(self, panels):
        """The built-in panels from now on (Panels, or names for ordinary ones), in this order."""
        if "panels" not in self.installed:
            self.install_panels()
        self._replace(lambda kind, _: kind == "panel", "panel", None,
                      [Panel(panel) if isinstance(panel, str) else replace(panel) for panel in panels])

    def display(self, index=0, **options):
        """Changes fields of a Display."""
        self.displays[index] = replace(self.displays[index], **options)
        self._write()

    def wmi(self, **steps):
        """What WMI's steps answer from now on; a step that is not named works, and wmi() puts all right.

        locator, connect, blanket, query, query_methods, get_object, get_method, spawn, put_timeout, put_brightness,
        exec: an HRESULT, or "null" for success that hands nothing out. next, next_methods: a list of them for the
        calls of one enumeration, in which 0 works and "timedout" is a time-out. delay_STEP (ms).
        """
        if "panels" not in self.installed:
            self.install_panels()
        self.steps = steps
        self._write()

    def change(self, name, **options):
        """Changes fields of a Monitor or Panel while the program runs; its present value stays."""
        kind, place, device = self._device(name)
        if options.get("name", name) != name or "current" in options:
            raise LabError("a name stays, and the value is changed by turn()")
        if kind == "monitor" and "delay" in options:
            options = {**dict.fromkeys(MONITOR_DELAYS, options["delay"]), **options}
            del options["delay"]
        self.devices[name] = (kind, place, self._checked(replace(device, **options)))
        self._write()

    def unplug(self, name):
        """Takes a monitor away; a panel becomes inactive. Windows is told nothing (WM_DISPLAYCHANGE is the test's)."""
        self.change(name, present=False)

    def plug(self, name):
        """Brings it back, in its old place of the order and with its value."""
        self.change(name, present=True)

    def value(self, name):
        """The raw value that a display shows now."""
        self._device(name)
        knob = self._knob(name)
        drift = self.numbers[knob + DRIFT_TIME]
        drifted = drift and self._now() >= drift
        return self.numbers[knob + (DRIFT_VALUE if drifted else VALUE)]

    def turn(self, name, value):
        """Turns a display's knob by hand."""
        self._device(name)
        self._turn(name, value)

    def calls(self, function=None, target=None):
        """Every call that has ended, in the order in which they began; only those of a function or of a target when
        one is named."""
        path = self.lab.prefix.path(LOG)
        text = path.read_text(encoding="utf-8") if path.exists() else ""
        # What comes after the last line's end is still being written.
        calls = sorted(map(parse_call, text.split("\n")[:-1]), key=lambda call: call.number)
        return [call for call in calls if function in (None, call.function) and target in (None, call.target)]

    def forget(self):
        """Empties the record of calls."""
        self.lab.prefix.path(LOG).unlink(missing_ok=True)

    def waiting(self):
        """How many calls are being delayed at this moment."""
        return self._counter(WAITING)

    def leaks(self):
        """What is outstanding: monitor handles, WMI objects, texts in VARIANTs handed out, BSTRs passed in."""
        return {name: self._counter(index) for name, index in LEAKS.items()}

    def outstanding(self):
        """How much is outstanding in all."""
        return sum(self.leaks().values())

    def forget_outstanding(self):
        """Counts from 0 again, as after a program that was killed."""
        for index in (*LEAKS.values(), WAITING, MISTAKES):
            self.numbers[index] = 0

    def mistakes(self):
        """Recorded calls that no correct program makes, such as one with a handle that was destroyed."""
        return [call for call in self.calls() if call.mistake]

    @staticmethod
    def _now():
        return int(time.time() * 1000)

    def _counter(self, index):
        return self.numbers[index] if self.numbers else 0

    def _device(self, name):
        if name not in self.devices:
            raise LabError(f"there is no {name}; there are {', '.join(self.devices) or 'none'}")
        return self.devices[name]

    def _knob(self, name):
        """Where a display's numbers begin. A name keeps its place for as long as the lab lives."""
        slot = self.slots.setdefault(name, len(self.slots))
        if slot >= KNOBS:
            raise LabError(f"more than {KNOBS} displays")
        return FIRST_KNOB + KNOB_SIZE * slot

    @staticmethod
    def _checked(device):
        if device.behaviour not in BEHAVIOURS:
            raise LabError(f"no such behaviour: {device.behaviour}; there are {', '.join(BEHAVIOURS)}")
        if isinstance(device.fails, str):
            device = replace(device, fails=(device.fails,))
        return device

    def _replace(self, is_old, kind, place, devices):
        kept = {name: entry for name, entry in self.devices.items() if not is_old(*entry[:2])}
        names = [device.name for device in devices]
        if len({*names, *kept}) != len(names) + len(kept):
            raise LabError(f"a name is there twice: {', '.join([*names, *kept])}")
        for device in devices:
            kept[device.name] = (kind, place, self._checked(device))
            self._turn(device.name, device.current)
        self.devices = kept
        self._write()

    def _turn(self, name, value):
        knob = self._knob(name)
        self.numbers[knob + DRIFT_TIME] = 0
        self.numbers[knob + VALUE] = value

    def _prepare(self):
        """Makes the shared state. The file is written to and never replaced: the doubles have it in memory."""
        if self.numbers is None:
            path = self.lab.prefix.path(STATE)
            path.write_bytes(bytes(8 * (FIRST_KNOB + KNOB_SIZE * KNOBS)))
            with open(path, "r+b") as file:
                self.numbers = memoryview(mmap.mmap(file.fileno(), 0)).cast("q")
            self._write()

    def _write(self):
        lines = [script_line("display", {"index": index, **vars(display)}) for index, display in self.displays.items()]
        for name, (kind, place, device) in self.devices.items():
            values = {item.name: getattr(device, item.name) for item in fields(device) if item.name != "current"}
            lines.append(script_line(kind, {"display": place, "slot": self.slots[name], **values}))
        lines.append(script_line("wmi", self.steps))
        path = self.lab.prefix.path(SCRIPT)
        temporary = path.with_suffix(".new")
        temporary.write_text("\n".join(lines) + "\n", encoding="utf-8")
        os.replace(temporary, path)
        self.numbers[SCRIPT_SERIAL] += 1
