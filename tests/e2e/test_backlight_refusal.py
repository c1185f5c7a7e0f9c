"""Displays that refuse the lock: the user's switch is reverted; other failures are counted, and ten slow the poll."""

import time

import pytest

from backlight import (CONFIRMED, POLL, POLL_PERIOD, SETTLED, SLOWDOWN, VERIFY, Monitor, Panel, enumeration,
                       monitor_set, panel_set, wait_until)
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401
from desk import TIMEOUT

REVERTING = "PWM-safe: 100%% lock not confirmed (%d of %d) - reverting toggle"
PENDING = "PWM-safe: lock pending (%d of %d at 100%%) - poll will re-assert"
RECOVERED = "PWM-safe: lock recovered - normal polling resumed"
PACE_RESET = "PWM-safe: display change - retry pace reset"


def wait_for_a_poll(backlight):
    """Waits for a poll, for less than the long period of 30 seconds."""
    backlight.hardware.clear_calls()
    wait_until(backlight.record, "a poll with the normal period", timeout=25)


def check_that_no_poll_comes(backlight):
    backlight.hardware.clear_calls()
    time.sleep(POLL_PERIOD + 0.3)
    assert backlight.record() == []


def test_a_monitor_that_ignores_the_lock_undoes_the_users_switch(backlight):
    backlight.start([Monitor("left", 40, behaviour="ignores")], timers=True).show()
    backlight.click_card()
    backlight.desk.wait_for_saves(2)
    one = enumeration(monitors=["left"])
    backlight.wait_for_calls(one, monitor_set("left", 100), one, one, monitor_set("left", 40), one)
    assert backlight.setting() == "0" and backlight.hardware.value("left") == 40
    assert backlight.pwm_log()[1:] == ["PWM-safe toggled ON by user", REVERTING % (0, 1)]
    check_that_no_poll_comes(backlight)


@pytest.mark.parametrize("stubborn", [{"behaviour": "ignores"}, {"behaviour": "sticks", "at": 98},
                                      {"behaviour": "drifts", "at": 70, "after": 0}, {"fails": "set"}], ids=str)
def test_a_monitor_that_refuses_also_restores_the_other_one(backlight, stubborn):
    backlight.start([Monitor("left", 40), Monitor("right", 30, **stubborn)])
    backlight.lock_and_expect_revert()
    monitors = ["left", "right"]
    one = enumeration(monitors=monitors)
    backlight.wait_for_calls(one, monitor_set("left", 100, monitors), monitor_set("right", 100, monitors), one, one,
                             monitor_set("left", 40, monitors), monitor_set("right", 30, monitors), one)
    assert backlight.hardware.value("left") == 40
    assert backlight.pwm_log()[-1] == REVERTING % (1, 2)


@pytest.mark.parametrize("stubborn", [{"behaviour": "ignores"}, {"fails": ("set",), "error": 0x80041003}], ids=str)
def test_a_refusing_panel_undoes_the_switch(backlight, stubborn):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60, **stubborn)])
    backlight.lock_and_expect_revert()
    one = enumeration(1, ["left"])
    backlight.wait_for_calls(one, panel_set(100), monitor_set("left", 100), one, one, panel_set(60),
                             monitor_set("left", 40), one)
    assert backlight.values("panel", "left") == [60, 40]


def test_two_panels_of_one_name_cannot_both_be_locked(backlight):
    backlight.start(panels=[Panel("first", 60, instance="twin"), Panel("second", 30, instance="twin")])
    backlight.lock_and_expect_revert()
    # Both targets name the first panel, and its value is the saved one.
    assert backlight.sets() == ["exec services 100"] * 2 + ["exec services 60"] * 2
    assert backlight.values("first", "second") == [60, 30]
    assert backlight.pwm_log()[-1] == REVERTING % (1, 2)


def test_a_monitor_that_becomes_unreadable_undoes_the_switch(backlight):
    backlight.start([Monitor("left", 40)]).show()
    backlight.click_card()
    backlight.desk.wait_for_saves(1)
    backlight.hardware.change("left", fails=("read",))
    backlight.tick(VERIFY)
    assert backlight.pwm_log()[-2:] == ["PWM-safe targets: 0 controllable (was 1)", REVERTING % (0, 0)]
    assert backlight.setting() == "0"


def test_a_later_failure_keeps_the_mode_on(backlight):
    backlight.start([Monitor("left", 40, behaviour="ignores")], on=True)
    backlight.tick(VERIFY)
    assert backlight.log().count(PENDING % (0, 1)) == 1
    backlight.tick(POLL, VERIFY, POLL, VERIFY)
    assert backlight.log().count(PENDING % (0, 1)) == 1
    assert backlight.setting() == "1" and backlight.desk.saves() == 0
    assert set(backlight.sets()) == {"set left 100"}
    # A success ends the episode: the next failure is logged again.
    backlight.hardware.change("left", behaviour="ok")
    backlight.tick(POLL, VERIFY)
    backlight.wait_for_log(CONFIRMED % 1)
    backlight.hardware.change("left", behaviour="ignores")
    backlight.hardware.set_by_user("left", 40)
    backlight.tick(POLL, VERIFY)
    assert backlight.log().count(PENDING % (0, 1)) == 2


def slowed(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.slow_down("left")


def test_the_ninth_failure_does_not_slow_the_poll_yet(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.fail("left", 9)
    assert SLOWDOWN not in backlight.log()
    backlight.tick(POLL, VERIFY)
    assert SLOWDOWN in backlight.log()
    backlight.tick(POLL, VERIFY)
    assert backlight.log().count(SLOWDOWN) == 1


def test_a_success_restores_the_normal_poll_period(backlight):
    slowed(backlight)
    backlight.hardware.change("left", behaviour="ok")
    backlight.run_timers(POLL)
    backlight.tick(POLL, VERIFY)
    assert backlight.pwm_log()[-2:] == [RECOVERED, CONFIRMED % 1]
    wait_for_a_poll(backlight)
    backlight.hold_timers()
    backlight.fail("left", 9)
    assert backlight.log().count(SLOWDOWN) == 1


def test_a_display_change_restores_the_normal_poll_period(backlight):
    slowed(backlight)
    backlight.run_timers(POLL)
    backlight.tick(SETTLED)
    assert backlight.pwm_log()[-1] == PACE_RESET
    backlight.tick(VERIFY)  # The verification must not be mistaken for the poll.
    wait_for_a_poll(backlight)
    backlight.tick(SETTLED)
    assert backlight.log().count(PACE_RESET) == 1


def test_the_users_toggle_restores_the_normal_poll_period(backlight):
    slowed(backlight)
    backlight.unlock()
    assert backlight.hardware.value("left") == 40
    backlight.hardware.change("left", behaviour="ok")
    backlight.run_timers(POLL)
    backlight.lock("left")
    wait_for_a_poll(backlight)
    assert RECOVERED not in backlight.log()


def test_ten_consecutive_failures_slow_the_poll(backlight):
    backlight.start([Monitor("left", 40, behaviour="ignores")], on=True, timers=True)
    backlight.desk.wait_for_log(PENDING % (0, 1))
    # Ten polls take 20 seconds.
    wait_until(lambda: SLOWDOWN in backlight.log(), SLOWDOWN, timeout=2 * TIMEOUT, state=backlight.log)
    one = enumeration(monitors=["left"])
    attempt = one + monitor_set("left", 100) + one
    assert backlight.record() == one + attempt + (one + attempt) * 9
    # A poll that finds the display at 100% because of the user does not reset the long period.
    backlight.hardware.set_by_user("left", 100)
    backlight.tick(POLL)
    assert backlight.pwm_log()[-1] == SLOWDOWN
    check_that_no_poll_comes(backlight)


def test_a_panel_whose_method_returns_a_failure_reverts_the_switch(backlight):
    """The call to WMI succeeds; only the verification detects the failure."""
    backlight.start(panels=[Panel("panel", 60, status=1)])
    backlight.lock_and_expect_revert()
    assert backlight.hardware.calls("ExecMethod")[0].result == 0
    assert backlight.hardware.value("panel") == 60
