"""Displays that come and go while the program runs, and what a change of displays or a resume does."""

import time

import pytest

from backlight import (CONFIRMED, POLL, SETTLED, VERIFY, WM_DISPLAYCHANGE, WM_POWERBROADCAST, Monitor, Panel, listed,
                       monitor_set, panel_set)
from backlight import backlight_desk_fixture, bench_fixture  # noqa: F401

RESTORED = "PWM-safe restored from settings: %d target(s) visible at startup"
NONE_YET = " (none yet - will re-probe via poll)"
TARGETS = "PWM-safe targets: %d controllable (was %d)"
RESUME_AUTOMATIC, RESUME_SUSPEND, SUSPEND = 18, 7, 4


def test_the_mode_of_the_last_run_locks_at_the_start(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)], on=True)
    one, lock = listed(1, ["left"]), panel_set(100) + monitor_set("left", 100)
    bench.tick(VERIFY)
    bench.wait_for_calls(one, one, lock, one)
    assert bench.pwm_log() == [TARGETS % (2, 0), RESTORED % 2, CONFIRMED % 2]
    assert bench.setting() == "1" and bench.desk.saves() == 0
    bench.unlock()
    assert bench.values("panel", "left") == [60, 40]


def test_a_start_without_a_display_waits_for_one_and_locks_it_at_the_next_poll(bench):
    bench.begin([Monitor("left", 40, present=False)], on=True)
    assert bench.pwm_log() == [RESTORED % 0 + NONE_YET]
    none, one = listed(), listed(monitors=["left"])
    bench.wait_for_calls(none, none)
    bench.hardware.forget()
    bench.hardware.plug("left")
    bench.wait_for_calls(one, one, monitor_set("left", 100), one)
    bench.wait_for_log(CONFIRMED % 1)
    assert bench.pwm_log()[1:] == [TARGETS % (1, 0), CONFIRMED % 1]
    bench.unlock()
    assert bench.hardware.value("left") == 40


def test_a_start_with_the_mode_off_queries_the_displays_once(bench):
    bench.begin([Monitor("left", 40)])
    assert bench.record() == listed(monitors=["left"])
    time.sleep(2.3)  # For a poll that is not wanted.
    assert bench.record() == listed(monitors=["left"])
    assert bench.pwm_log() == [TARGETS % (1, 0)]


def test_a_reconnected_monitor_is_locked_and_keeps_its_old_value(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.hardware.unplug("left")
    bench.tick(POLL)
    assert bench.pwm_log()[-1] == TARGETS % (0, 1)
    bench.hardware.turn("left", 55)
    bench.hardware.plug("left")
    bench.tick(POLL, VERIFY)
    assert bench.log().count(CONFIRMED % 1) == 2
    assert bench.hardware.value("left") == 100
    bench.unlock()
    assert bench.hardware.value("left") == 40


def test_a_monitor_disconnected_when_the_mode_ends_is_not_restored_later(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30)])
    bench.lock("left", "right")
    bench.hardware.unplug("right")
    bench.tick(POLL)
    bench.unlock()
    assert bench.values("left", "right") == [40, 100]
    bench.hardware.plug("right")
    bench.hardware.forget()
    bench.tick(SETTLED)
    assert bench.sets() == [] and bench.hardware.value("right") == 100
    # Its old value was forgotten with the lock: the next one notes what it shows now.
    bench.hardware.turn("right", 70)
    bench.lock("left", "right")
    bench.unlock()
    assert bench.values("left", "right") == [40, 70]


def test_a_monitor_at_another_position_is_a_different_display(bench):
    """Its name is its place: what was noted of the place is given to whatever stands there at the end."""
    bench.begin([Monitor("left", 40), Monitor("right", 30)])
    bench.lock("left", "right")
    bench.hardware.unplug("left")
    bench.tick(POLL)
    bench.unlock()
    assert bench.values("left", "right") == [100, 40]


def test_without_a_display_there_is_no_card_to_click(bench):
    bench.begin().show()
    bench.click_card()
    bench.tick(POLL)  # Answered after the click.
    assert "PWM-safe toggled ON by user" not in bench.log() and bench.desk.saves() == 0


def test_a_click_on_the_card_after_the_display_disconnected_turns_the_mode_off(bench):
    bench.begin([Monitor("left", 40)]).show()
    bench.hardware.unplug("left")
    bench.click_card()
    bench.desk.wait_for_saves(1)
    assert bench.record() == listed() and bench.setting() == "0"
    assert bench.pwm_log()[1:] == ["PWM-safe toggled ON by user", TARGETS % (0, 1)]
    time.sleep(1.0)  # For a verification that is not wanted.
    assert bench.record() == listed() and bench.desk.saves() == 1


def test_the_mode_can_be_turned_off_without_a_display(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.hardware.unplug("left")
    bench.tick(POLL)
    bench.hardware.forget()
    bench.unlock()
    assert bench.record() == listed() * 2


def test_a_burst_of_display_changes_asserts_the_lock_once(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.tick(SETTLED)  # Locked anew: the next poll is two seconds away.
    bench.tick(VERIFY)
    bench.hardware.forget()
    for _ in range(8):
        bench.desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    one = listed(monitors=["left"])
    bench.wait_for_calls(one, one, monitor_set("left", 100), one)
    assert bench.sets() == ["set left 100"]


@pytest.mark.parametrize("event", [RESUME_AUTOMATIC, RESUME_SUSPEND])
def test_a_display_that_sleep_has_reset_is_locked_again(bench, event):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.slow_down("left")  # What locks it now is not the poll: that is half a minute away.
    bench.desk.send_message(WM_POWERBROADCAST, SUSPEND, 0)
    bench.hardware.change("left", behaviour="ok")
    bench.hardware.forget()
    assert bench.hardware.value("left") == 40
    assert bench.desk.send_message(WM_POWERBROADCAST, event, 0) == 1
    one = listed(monitors=["left"])
    bench.wait_for_calls(one, one, monitor_set("left", 100), one)
    bench.unlock()
    assert bench.hardware.value("left") == 40


def test_a_display_change_with_the_mode_off_only_reads_the_displays(bench):
    bench.begin([Monitor("left", 40)])
    bench.hardware.forget()
    bench.desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    bench.wait_for_calls(listed(monitors=["left"]))
    bench.come_to_rest()
    assert bench.record() == listed(monitors=["left"])


def test_a_display_connected_during_a_lock_is_locked_and_restored_too(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30, present=False)])
    bench.lock("left")
    bench.hardware.plug("right")
    bench.tick(POLL, VERIFY)
    assert CONFIRMED % 2 in bench.log()
    assert TARGETS % (2, 1) in bench.log()
    bench.unlock()
    assert bench.values("left", "right") == [40, 30]
