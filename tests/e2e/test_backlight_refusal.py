"""Displays that refuse: the user's switch is undone, other failures are counted, the tenth slows the poll."""

import time

import pytest

from backlight import (CONFIRMED, POLL, POLL_PERIOD, SETTLED, SLOWING, VERIFY, Monitor, Panel, listed,
                       monitor_set, panel_set, wait_until)
from backlight import backlight_desk_fixture, bench_fixture  # noqa: F401

REVERTING = "PWM-safe: 100%% lock not confirmed (%d of %d) - reverting toggle"
PENDING = "PWM-safe: lock pending (%d of %d at 100%%) - poll will re-assert"
RECOVERED = "PWM-safe: lock recovered - normal polling resumed"
PACE_RESET = "PWM-safe: display change - retry pace reset"


def wait_for_a_poll(bench):
    """One that comes sooner than at the slow pace."""
    bench.hardware.forget()
    wait_until(bench.record, "a poll at the normal pace")


def check_that_no_poll_comes(bench):
    bench.hardware.forget()
    time.sleep(POLL_PERIOD + 0.3)
    assert bench.record() == []


def test_a_monitor_that_ignores_the_lock_undoes_the_users_switch(bench):
    bench.begin([Monitor("left", 40, behaviour="ignores")]).show()
    bench.click_card()  # Nothing is hurried here: the verification comes by itself.
    bench.desk.wait_for_saves(2)
    one = listed(monitors=["left"])
    bench.wait_for_calls(one, monitor_set("left", 100), one, one, monitor_set("left", 40), one)
    assert bench.setting() == "0" and bench.hardware.value("left") == 40
    assert bench.pwm_log()[1:] == ["PWM-safe toggled ON by user", REVERTING % (0, 1)]
    check_that_no_poll_comes(bench)


@pytest.mark.parametrize("stubborn", [{"behaviour": "ignores"}, {"behaviour": "sticks", "at": 98},
                                      {"behaviour": "drifts", "at": 70, "after": 0}, {"fails": "set"}], ids=str)
def test_a_refusing_monitor_makes_the_other_one_restored_too(bench, stubborn):
    bench.begin([Monitor("left", 40), Monitor("right", 30, **stubborn)])
    bench.refuse()
    monitors = ["left", "right"]
    one = listed(monitors=monitors)
    bench.wait_for_calls(one, monitor_set("left", 100, monitors), monitor_set("right", 100, monitors), one, one,
                         monitor_set("left", 40, monitors), monitor_set("right", 30, monitors), one)
    assert bench.hardware.value("left") == 40
    assert bench.pwm_log()[-1] == REVERTING % (1, 2)


@pytest.mark.parametrize("stubborn", [{"behaviour": "ignores"}, {"fails": ("set",), "error": 0x80041003}], ids=str)
def test_a_refusing_panel_undoes_the_switch(bench, stubborn):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60, **stubborn)])
    bench.refuse()
    one = listed(1, ["left"])
    bench.wait_for_calls(one, panel_set(100), monitor_set("left", 100), one, one, panel_set(60),
                         monitor_set("left", 40), one)
    assert bench.values("panel", "left") == [60, 40]


def test_two_panels_of_one_name_cannot_both_be_locked(bench):
    bench.begin(panels=[Panel("first", 60, instance="twin"), Panel("second", 30, instance="twin")])
    bench.refuse()
    # Both records lead to the first; its value is the one that was noted.
    assert bench.sets() == ["exec services 100"] * 2 + ["exec services 60"] * 2
    assert bench.values("first", "second") == [60, 30]
    assert bench.pwm_log()[-1] == REVERTING % (1, 2)


def test_a_monitor_that_becomes_unreadable_undoes_the_switch(bench):
    bench.begin([Monitor("left", 40)]).show()
    bench.click_card()
    bench.wait_for_value("left", 100)
    bench.hardware.change("left", fails=("read",))
    bench.tick(VERIFY)
    assert bench.pwm_log()[-2:] == ["PWM-safe targets: 0 controllable (was 1)", REVERTING % (0, 0)]
    assert bench.setting() == "0"


def test_a_later_failure_keeps_the_mode_on(bench):
    bench.begin([Monitor("left", 40, behaviour="ignores")], on=True)
    bench.wait_for_log(PENDING % (0, 1))
    bench.tick(POLL, VERIFY, POLL, VERIFY)
    assert bench.log().count(PENDING % (0, 1)) == 1
    assert bench.setting() == "1" and bench.desk.saves() == 0
    assert set(bench.sets()) == {"set left 100"}
    # A success ends the episode: the next failure is told again.
    bench.hardware.change("left", behaviour="ok")
    bench.tick(POLL, VERIFY)
    bench.wait_for_log(CONFIRMED % 1)
    bench.hardware.change("left", behaviour="ignores")
    bench.hardware.turn("left", 40)
    bench.tick(POLL, VERIFY)
    assert bench.log().count(PENDING % (0, 1)) == 2


def slowed(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.slow_down("left")


def test_the_ninth_failure_does_not_slow_the_poll_yet(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.fail("left", 9)
    assert SLOWING not in bench.log()
    bench.tick(POLL, VERIFY)
    assert SLOWING in bench.log()
    bench.tick(POLL, VERIFY)
    assert bench.log().count(SLOWING) == 1


def test_a_success_restores_the_normal_poll_period(bench):
    slowed(bench)
    bench.hardware.change("left", behaviour="ok")
    bench.tick(POLL, VERIFY)
    assert bench.pwm_log()[-2:] == [RECOVERED, CONFIRMED % 1]
    wait_for_a_poll(bench)
    bench.fail("left", 9)
    assert bench.log().count(SLOWING) == 1


def test_a_display_change_restores_the_normal_poll_period(bench):
    slowed(bench)
    bench.tick(SETTLED)
    assert bench.pwm_log()[-1] == PACE_RESET
    bench.tick(VERIFY)  # Else the verification would be taken for the poll.
    wait_for_a_poll(bench)
    bench.tick(SETTLED)
    assert bench.log().count(PACE_RESET) == 1


def test_the_users_toggle_restores_the_normal_poll_period(bench):
    slowed(bench)
    bench.unlock()
    assert bench.hardware.value("left") == 40
    bench.hardware.change("left", behaviour="ok")
    bench.lock("left")
    wait_for_a_poll(bench)
    assert RECOVERED not in bench.log()


def test_ten_consecutive_failures_slow_the_poll(bench):
    """Nothing is hurried here: the timers are Windows' own."""
    bench.begin([Monitor("left", 40, behaviour="ignores")], on=True)
    bench.desk.wait_for_log(PENDING % (0, 1))
    deadline = time.monotonic() + 45
    while SLOWING not in bench.log() and time.monotonic() < deadline:
        time.sleep(0.2)
    one = listed(monitors=["left"])
    attempt = one + monitor_set("left", 100) + one
    assert bench.record() == one + attempt + (one + attempt) * 9
    # A poll that finds it at 100% by a hand's doing leaves the slow pace.
    bench.hardware.turn("left", 100)
    bench.tick(POLL)
    assert bench.pwm_log()[-1] == SLOWING
    check_that_no_poll_comes(bench)


def test_a_panel_whose_method_returns_a_failure_reverts_the_switch(bench):
    """The call to WMI succeeds all the same; only the verification can tell."""
    bench.begin(panels=[Panel("panel", 60, status=1)])
    bench.refuse()
    assert bench.hardware.calls("ExecMethod")[0].result == 0
    assert bench.hardware.value("panel") == 60
