"""Faulty, unusual and many displays, and a system without the functions that control them."""

from backlight import BUILD, SETTLED, Backlight, Monitor, Panel, enumeration, monitor_calls, monitor_set, without_delays
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401

TARGETS = "PWM-safe targets: %d controllable (was 0)"
REVERTING = "PWM-safe: 100%% lock not confirmed (%d of %d) - reverting toggle"
FAILED, INVALID_NAMESPACE, ACCESS_DENIED = 0x80041001, 0x8004100E, 0x80070005
LONG_NAME = "n" * 300
# The types of CurrentBrightness that the program reads, and other types.
READABLE = ("i2", "i4", "ui1", "ui2", "ui4")
OTHERS = ("i1", "i8", "ui8", "r8", "bool", "bstr", "null", "empty", "unknown", "missing")


def count_at_start(backlight):
    """The number of displays that the program found at start-up."""
    lines = [line for line in backlight.log() if line.startswith("PWM-safe targets")]
    return int(lines[0].split()[2]) if lines else 0


# A monitor, the value that it is locked at, and the value that is restored.
UNUSUAL = [
    (Monitor("below minimum", 5, minimum=10, maximum=100), 100, 10),
    (Monitor("no range", 50, minimum=50, maximum=50), 50, 50),
    (Monitor("reversed", 7, minimum=90, maximum=10), 10, 10),
    (Monitor("above maximum", 200, minimum=0, maximum=100), 100, 100),
    (Monitor("at nothing", 0, minimum=0, maximum=80), 80, 0),
    (Monitor("coarse", 3, minimum=0, maximum=7), 7, 3),
    (Monitor("huge", 0x7FFFFFFF, minimum=0, maximum=0xFFFFFFFF), 0xFFFFFFFF, 0x80000000),
    (Monitor("handle 0", 40, zero_handle=True), 100, 40),
    (Monitor("long", 40, description="Internal \u00e9\t" + "x" * 200), 100, 40),
]


def test_every_unusual_range_is_locked_at_its_maximum_and_restored(backlight):
    names = [monitor.name for monitor, _, _ in UNUSUAL]
    backlight.start([monitor for monitor, _, _ in UNUSUAL])
    backlight.lock(*names)
    assert backlight.sets() == [f"set {monitor.name} {locked}" for monitor, locked, _ in UNUSUAL]
    backlight.hardware.clear_calls()
    backlight.unlock()
    assert backlight.sets() == [f"set {monitor.name} {restored}" for monitor, _, restored in UNUSUAL]


def test_monitors_whose_brightness_cannot_be_read_are_skipped(backlight):
    unreadable = {"incapable": {"capable": False}, "no reply": {"fails": "capabilities"}, "unread": {"fails": "read"}}
    backlight.start([Monitor("left", 40), *(Monitor(name, 20, **options) for name, options in unreadable.items())])
    assert count_at_start(backlight) == 1
    backlight.lock("left")
    backlight.unlock()
    assert backlight.sets() == ["set left 100", "set left 40"]
    assert backlight.values(*unreadable) == [20] * 3


def test_a_monitor_is_not_queried_further_after_a_failure(backlight):
    backlight.start([Monitor("unreadable", fails="capabilities"), Monitor("dumb", capable=False), Monitor("left")])
    assert backlight.record() == enumeration(monitors=["unreadable", "dumb", "left"], unreadable=["unreadable", "dumb"])


def test_monitors_that_cannot_be_counted_or_opened_are_skipped(backlight):
    backlight.start(["one", "two"])
    for trouble, calls in (({"count_error": 5}, ["count display0"]), ({"count": 0}, ["count display0"]),
                           ({"fetch_error": 31}, ["count display0", "fetch display0"]),
                           ({"count": 3}, ["count display0", "fetch display0"]),
                           ({"count": 0xFFFFFFFF}, ["count display0"]), ({"count": 100000}, ["count display0"])):
        backlight.hardware.monitors(["one", "two"], **trouble)
        backlight.hardware.clear_calls()
        backlight.tick(SETTLED)
        assert backlight.record() == enumeration()[:-1] + calls, trouble
        assert backlight.pwm_log()[-1] == "PWM-safe targets: 0 controllable (was 2)"
        backlight.hardware.monitors(["one", "two"])
        backlight.tick(SETTLED)
        assert backlight.pwm_log()[-1] == "PWM-safe targets: 2 controllable (was 0)"


def test_64_monitors_are_read_locked_and_restored(backlight):
    names = [f"m{number}" for number in range(64)]
    backlight.start([without_delays(Monitor(name, number)) for number, name in enumerate(names)])
    assert backlight.record() == enumeration(monitors=names)
    backlight.lock(*names)
    assert backlight.sets() == [f"set {name} 100" for name in names]
    assert backlight.record()[:7] == enumeration(monitors=names)[:7]
    second = len(enumeration(monitors=names)) + len(monitor_set("m0", 100, names))
    assert backlight.record()[second:second + 5] == monitor_calls(names, "read m1", "set m1 100")
    backlight.unlock()
    assert backlight.values(*names) == list(range(64))


def test_a_panels_brightness_is_read_in_every_integer_type(backlight):
    backlight.start(panels=[Panel(kind, 60, brightness_type=kind) for kind in READABLE])
    backlight.lock(*READABLE)
    backlight.unlock()
    assert backlight.values(*READABLE) == [60] * len(READABLE)


def test_panels_with_other_value_types_are_skipped(backlight):
    backlight.start(panels=[Panel(kind, 100, brightness_type=kind) for kind in OTHERS])
    assert count_at_start(backlight) == len(OTHERS)
    backlight.lock_and_expect_revert()
    assert backlight.pwm_log()[-1] == REVERTING % (0, len(OTHERS))
    assert backlight.values(*OTHERS) == [0] * len(OTHERS)


def test_a_percentage_out_of_range_is_restored_clamped(backlight):
    backlight.start(panels=[Panel("below", -5, brightness_type="i4"), Panel("above", 120)])
    backlight.lock("below", "above")
    backlight.unlock()
    assert backlight.values("below", "above") == [0, 100]


def test_panels_without_a_name_are_skipped(backlight):
    backlight.start(panels=[Panel("empty", instance=""), Panel("number", instance_type="i4"),
                            Panel("null", instance_type="null"), Panel("nothing", instance_type="nullbstr"),
                            Panel("missing", instance_type="missing"), Panel("long", 30, instance=LONG_NAME),
                            Panel("named", 60)])
    assert count_at_start(backlight) == 2
    backlight.lock("long", "named")
    backlight.unlock()
    assert backlight.values("long", "named", "empty") == [30, 60, 50]


def test_panels_without_methods_cannot_be_locked(backlight):
    pathless = {"no path": {"path_type": "missing"}, "number": {"path_type": "i4"}, "unlisted": {"without": "methods"}}
    backlight.start(panels=[Panel(name, 60, **options) for name, options in pathless.items()])
    backlight.lock_and_expect_revert()
    assert backlight.pwm_log()[-1] == REVERTING % (0, 3) and backlight.values(*pathless) == [60] * 3


LISTING_FAILS = [("locator", FAILED), ("locator", "null"), ("connect", INVALID_NAMESPACE), ("connect", "null"),
                 ("blanket", ACCESS_DENIED), ("query", FAILED), ("query", "null"), ("next", [FAILED]),
                 ("next", ["timedout"]), ("next", ["null"])]
SETTING_FAILS = [("query_methods", FAILED), ("next_methods", ["timedout"]), ("get_object", FAILED),
                 ("get_method", "null"), ("spawn", FAILED), ("put_timeout", FAILED), ("put_brightness", FAILED),
                 ("exec", ACCESS_DENIED)]


def test_when_wmi_fails_only_the_monitors_are_used(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    for step, answer in LISTING_FAILS:
        backlight.hardware.wmi(**{step: answer})
        backlight.tick(SETTLED)
        assert backlight.pwm_log()[-1] == "PWM-safe targets: 1 controllable (was 2)", (step, answer)
        assert backlight.hardware.outstanding() == 0, (step, answer)
        backlight.hardware.wmi()
        backlight.tick(SETTLED)
        assert backlight.pwm_log()[-1] == "PWM-safe targets: 2 controllable (was 1)", (step, answer)


def test_a_failed_step_while_setting_a_panel_affects_only_that_panel(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("panel", "left")
    for step, answer in SETTING_FAILS:
        backlight.hardware.set_by_user("panel", 60)
        backlight.hardware.set_by_user("left", 40)
        backlight.hardware.wmi(**{step: answer})
        backlight.tick(SETTLED)
        assert backlight.values("panel", "left") == [60, 100], (step, answer)
        assert backlight.hardware.outstanding() == 0, (step, answer)
        backlight.hardware.wmi()
        backlight.tick(SETTLED)
        assert backlight.values("panel", "left") == [100, 100], (step, answer)


def test_without_monitor_functions_only_the_panel_is_used(make_desk):
    desk = make_desk(build_dir=BUILD)
    backlight = Backlight(desk)
    backlight.hardware.install_monitors(without=("SetMonitorBrightness",))
    backlight.hardware.monitors([Monitor("left", 40)])
    backlight.hardware.panels([Panel("panel", 60)])
    desk.start()
    assert TARGETS % 1 in backlight.log()
    backlight.lock("panel")
    backlight.unlock()
    assert backlight.values("panel", "left") == [60, 40]
    desk.kill_program()
    backlight.hardware.remove_monitors()
    desk.start_fresh()
    backlight.lock("panel")
    desk.quit()
    assert backlight.values("panel", "left") == [60, 40]
    assert not {call.function for call in backlight.hardware.calls()} & {"GetMonitorBrightness", "SetMonitorBrightness"}
    backlight.expect_no_leaks()
