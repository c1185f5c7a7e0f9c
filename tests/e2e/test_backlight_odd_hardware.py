"""Faulty, strange and many displays, and a Windows without the means to drive them."""

from backlight import BUILD, SETTLED, Bench, Monitor, Panel, listed, monitor_set, monitors_fetched, quick
from backlight import backlight_desk_fixture, bench_fixture  # noqa: F401

TARGETS = "PWM-safe targets: %d controllable (was 0)"
REVERTING = "PWM-safe: 100%% lock not confirmed (%d of %d) - reverting toggle"
FAILED, INVALID_NAMESPACE, ACCESS_DENIED = 0x80041001, 0x8004100E, 0x80070005
LONG_NAME = "n" * 300
# Every type that CurrentBrightness may come in; only these five hold a percentage.
READABLE = ("i2", "i4", "ui1", "ui2", "ui4")
OTHERS = ("i1", "i8", "ui8", "r8", "bool", "bstr", "null", "empty", "unknown", "missing")


def counted(bench):
    """How many displays the program found at its start."""
    lines = [line for line in bench.log() if line.startswith("PWM-safe targets")]
    return int(lines[0].split()[2]) if lines else 0


# A monitor, what it is locked at, and what it is given back.
STRANGE = [
    (Monitor("below minimum", 5, minimum=10, maximum=100), 100, 10),
    (Monitor("no range", 50, minimum=50, maximum=50), 50, 50),
    (Monitor("upside down", 7, minimum=90, maximum=10), 10, 10),
    (Monitor("above maximum", 200, minimum=0, maximum=100), 100, 100),
    (Monitor("at nothing", 0, minimum=0, maximum=80), 80, 0),
    (Monitor("coarse", 3, minimum=0, maximum=7), 7, 3),
    (Monitor("huge", 0x7FFFFFFF, minimum=0, maximum=0xFFFFFFFF), 0xFFFFFFFF, 0x80000000),
    (Monitor("handle 0", 40, zero_handle=True), 100, 40),
    (Monitor("long", 40, description="Internal \u00e9\t" + "x" * 200), 100, 40),
]


def test_every_unusual_range_is_locked_at_its_maximum_and_restored(bench):
    names = [monitor.name for monitor, _, _ in STRANGE]
    bench.begin([monitor for monitor, _, _ in STRANGE])
    bench.lock(*names)
    assert bench.sets() == [f"set {monitor.name} {locked}" for monitor, locked, _ in STRANGE]
    bench.hardware.forget()
    bench.unlock()
    assert bench.sets() == [f"set {monitor.name} {given_back}" for monitor, _, given_back in STRANGE]


def test_monitors_whose_brightness_cannot_be_read_are_skipped(bench):
    silent = {"incapable": {"capable": False}, "mute": {"fails": "capabilities"}, "unread": {"fails": "read"}}
    bench.begin([Monitor("left", 40), *(Monitor(name, 20, **options) for name, options in silent.items())])
    assert counted(bench) == 1
    bench.lock("left")
    bench.unlock()
    assert bench.sets() == ["set left 100", "set left 40"]
    assert bench.values(*silent) == [20] * 3


def test_a_monitor_is_not_queried_further_after_a_failure(bench):
    bench.begin([Monitor("deaf", fails="capabilities"), Monitor("dumb", capable=False), Monitor("left")])
    assert bench.record() == listed(monitors=["deaf", "dumb", "left"], deaf=["deaf", "dumb"])


def test_monitors_that_cannot_be_counted_or_opened_are_skipped(bench):
    bench.begin(["one", "two"])
    for trouble, calls in (({"count_error": 5}, ["count display0"]), ({"count": 0}, ["count display0"]),
                           ({"fetch_error": 31}, ["count display0", "fetch display0"]),
                           ({"count": 3}, ["count display0", "fetch display0"]),
                           ({"count": 0xFFFFFFFF}, ["count display0"]), ({"count": 100000}, ["count display0"])):
        bench.hardware.monitors(["one", "two"], **trouble)
        bench.hardware.forget()
        bench.tick(SETTLED)
        assert bench.record() == listed()[:-1] + calls, trouble
        assert bench.pwm_log()[-1] == "PWM-safe targets: 0 controllable (was 2)"
        bench.hardware.monitors(["one", "two"])
        bench.tick(SETTLED)
        assert bench.pwm_log()[-1] == "PWM-safe targets: 2 controllable (was 0)"


def test_64_monitors_are_read_locked_and_restored(bench):
    names = [f"m{number}" for number in range(64)]
    bench.begin([quick(Monitor(name, number)) for number, name in enumerate(names)])
    assert bench.record() == listed(monitors=names)
    bench.lock(*names)
    assert bench.sets() == [f"set {name} 100" for name in names]
    assert bench.record()[:7] == listed(monitors=names)[:7]
    second = len(listed(monitors=names)) + len(monitor_set("m0", 100, names))
    assert bench.record()[second:second + 5] == monitors_fetched(names, "read m1", "set m1 100")
    bench.unlock()
    assert bench.values(*names) == list(range(64))


def test_a_panels_brightness_is_read_in_every_integer_type(bench):
    bench.begin(panels=[Panel(kind, 60, brightness_type=kind) for kind in READABLE])
    bench.lock(*READABLE)
    bench.unlock()
    assert bench.values(*READABLE) == [60] * len(READABLE)


def test_panels_with_other_value_types_are_skipped(bench):
    bench.begin(panels=[Panel(kind, 100, brightness_type=kind) for kind in OTHERS])
    assert counted(bench) == len(OTHERS)
    bench.refuse()
    assert bench.pwm_log()[-1] == REVERTING % (0, len(OTHERS))
    assert bench.values(*OTHERS) == [0] * len(OTHERS)


def test_a_percentage_out_of_range_is_restored_clamped(bench):
    bench.begin(panels=[Panel("below", -5, brightness_type="i4"), Panel("above", 120)])
    bench.lock("below", "above")
    bench.unlock()
    assert bench.values("below", "above") == [0, 100]


def test_panels_without_a_name_are_skipped(bench):
    bench.begin(panels=[Panel("empty", instance=""), Panel("number", instance_type="i4"),
                        Panel("null", instance_type="null"), Panel("nothing", instance_type="nullbstr"),
                        Panel("missing", instance_type="missing"), Panel("long", 30, instance=LONG_NAME),
                        Panel("named", 60)])
    assert counted(bench) == 2
    bench.lock("long", "named")
    bench.unlock()
    assert bench.values("long", "named", "empty") == [30, 60, 50]


def test_panels_without_methods_cannot_be_locked(bench):
    lost = {"no path": {"path_type": "missing"}, "number": {"path_type": "i4"}, "unlisted": {"without": "methods"}}
    bench.begin(panels=[Panel(name, 60, **options) for name, options in lost.items()])
    bench.refuse()
    assert bench.pwm_log()[-1] == REVERTING % (0, 3) and bench.values(*lost) == [60] * 3


LISTING_FAILS = [("locator", FAILED), ("locator", "null"), ("connect", INVALID_NAMESPACE), ("connect", "null"),
                 ("blanket", ACCESS_DENIED), ("query", FAILED), ("query", "null"), ("next", [FAILED]),
                 ("next", ["timedout"]), ("next", ["null"])]
SETTING_FAILS = [("query_methods", FAILED), ("next_methods", ["timedout"]), ("get_object", FAILED),
                 ("get_method", "null"), ("spawn", FAILED), ("put_timeout", FAILED), ("put_brightness", FAILED),
                 ("exec", ACCESS_DENIED)]


def test_when_wmi_fails_only_the_monitors_are_used(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    for step, answer in LISTING_FAILS:
        bench.hardware.wmi(**{step: answer})
        bench.tick(SETTLED)
        assert bench.pwm_log()[-1] == "PWM-safe targets: 1 controllable (was 2)", (step, answer)
        assert bench.hardware.outstanding() == 0, (step, answer)
        bench.hardware.wmi()
        bench.tick(SETTLED)
        assert bench.pwm_log()[-1] == "PWM-safe targets: 2 controllable (was 1)", (step, answer)


def test_a_failed_step_while_setting_a_panel_affects_only_that_panel(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("panel", "left")
    for step, answer in SETTING_FAILS:
        bench.hardware.turn("panel", 60)
        bench.hardware.turn("left", 40)
        bench.hardware.wmi(**{step: answer})
        bench.tick(SETTLED)
        assert bench.values("panel", "left") == [60, 100], (step, answer)
        assert bench.hardware.outstanding() == 0, (step, answer)
        bench.hardware.wmi()
        bench.tick(SETTLED)
        assert bench.values("panel", "left") == [100, 100], (step, answer)


def test_without_monitor_functions_only_the_panel_is_used(make_desk):
    desk = make_desk(build_dir=BUILD)
    bench = Bench(desk)
    bench.hardware.install_monitors(without=("SetMonitorBrightness",))
    bench.hardware.monitors([Monitor("left", 40)])
    bench.hardware.panels([Panel("panel", 60)])
    desk.start()
    assert TARGETS % 1 in bench.log()
    bench.lock("panel")
    bench.unlock()
    assert bench.values("panel", "left") == [60, 40]
    desk.kill_program()
    bench.hardware.remove_monitors()
    desk.start_fresh()
    bench.lock("panel")
    desk.quit()
    assert bench.values("panel", "left") == [60, 40]
    assert not {call.function for call in bench.hardware.calls()} & {"GetMonitorBrightness", "SetMonitorBrightness"}
    bench.check_books()
