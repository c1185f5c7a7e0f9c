"""Displays that connect and disconnect while the program runs; display changes and resume from sleep."""

import time

import pytest

from backlight import (CONFIRMED, POLL, SETTLED, VERIFY, WM_DISPLAYCHANGE, WM_POWERBROADCAST, Monitor, Panel,
                       enumeration, monitor_set, panel_set)
from desk import act_within
from panels import wait_for_panel
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401

RESTORED = "PWM-safe restored from settings: %d target(s) visible at startup"
NONE_YET = " (none yet - will re-probe via poll)"
TARGETS = "PWM-safe targets: %d controllable (was %d)"
RESUME_AUTOMATIC, RESUME_SUSPEND, SUSPEND = 18, 7, 4
SETTLE_DELAY = 0.3  # seconds


def test_the_mode_of_the_last_run_locks_at_the_start(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)], on=True)
    one, lock = enumeration(1, ["left"]), panel_set(100) + monitor_set("left", 100)
    backlight.tick(VERIFY)
    backlight.wait_for_calls(one, one, lock, one)
    assert backlight.pwm_log() == [TARGETS % (2, 0), RESTORED % 2, CONFIRMED % 2]
    assert backlight.setting() == "1" and backlight.desk.saves() == 0
    backlight.unlock()
    assert backlight.values("panel", "left") == [60, 40]


def test_a_start_without_a_display_waits_for_one_and_locks_it_at_the_next_poll(backlight):
    backlight.start([Monitor("left", 40, present=False)], on=True, timers=True)
    assert backlight.pwm_log() == [RESTORED % 0 + NONE_YET]
    none, one = enumeration(), enumeration(monitors=["left"])
    backlight.wait_for_calls(none, none)
    backlight.hardware.plug("left")
    backlight.wait_for_log(CONFIRMED % 1)
    backlight.expect_after_polls(none, one, one, monitor_set("left", 100), one)
    assert backlight.pwm_log()[1:] == [TARGETS % (1, 0), CONFIRMED % 1]
    backlight.unlock()
    assert backlight.hardware.value("left") == 40


def test_a_start_with_the_mode_off_queries_the_displays_once(backlight):
    backlight.start([Monitor("left", 40)], timers=True)
    assert backlight.record() == enumeration(monitors=["left"])
    time.sleep(2.3)  # A poll would have run by now.
    assert backlight.record() == enumeration(monitors=["left"])
    assert backlight.pwm_log() == [TARGETS % (1, 0)]


def test_a_reconnected_monitor_is_locked_and_keeps_its_old_value(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.hardware.unplug("left")
    backlight.tick(POLL)
    assert backlight.pwm_log()[-1] == TARGETS % (0, 1)
    backlight.hardware.set_by_user("left", 55)
    backlight.hardware.plug("left")
    backlight.tick(POLL, VERIFY)
    assert backlight.log().count(CONFIRMED % 1) == 2
    assert backlight.hardware.value("left") == 100
    backlight.unlock()
    assert backlight.hardware.value("left") == 40


def unplug_before_unlocking(backlight, name):
    """Locks two monitors, at 40 and 30, and unlocks them after one has been unplugged."""
    backlight.start([Monitor("left", 40), Monitor("right", 30)])
    backlight.lock("left", "right")
    backlight.hardware.unplug(name)
    backlight.tick(POLL)
    backlight.unlock()


def test_a_monitor_disconnected_when_the_mode_ends_is_not_restored_later(backlight):
    unplug_before_unlocking(backlight, "right")
    assert backlight.values("left", "right") == [40, 100]
    backlight.hardware.plug("right")
    backlight.hardware.clear_calls()
    backlight.tick(SETTLED)
    assert backlight.sets() == [] and backlight.hardware.value("right") == 100
    # Its saved value was discarded with the lock. The next lock saves the current one.
    backlight.hardware.set_by_user("right", 70)
    backlight.lock("left", "right")
    backlight.unlock()
    assert backlight.values("left", "right") == [40, 70]


def test_a_monitor_at_another_position_is_a_different_display(backlight):
    """A display is named by its position: the value saved for a position is restored to the display there."""
    unplug_before_unlocking(backlight, "left")
    assert backlight.values("left", "right") == [100, 40]


def test_without_a_display_there_is_no_card_to_click(backlight):
    backlight.start().show()
    backlight.click_card()
    backlight.desk.show_settings()
    wait_for_panel(backlight.desk, "settings")  # The click before has been handled, too.
    assert "PWM-safe toggled ON by user" not in backlight.log() and backlight.desk.saves() == 0


def test_a_click_on_the_card_after_the_display_disconnected_turns_the_mode_off(backlight):
    backlight.start([Monitor("left", 40)], timers=True).show()
    backlight.hardware.unplug("left")
    backlight.click_card()
    backlight.desk.wait_for_saves(1)
    assert backlight.record() == enumeration() and backlight.setting() == "0"
    assert backlight.pwm_log()[1:] == ["PWM-safe toggled ON by user", TARGETS % (0, 1)]
    time.sleep(1.0)  # A verification would have run by now.
    assert backlight.record() == enumeration() and backlight.desk.saves() == 1


def test_the_mode_can_be_turned_off_without_a_display(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.hardware.unplug("left")
    backlight.tick(POLL)
    backlight.hardware.clear_calls()
    backlight.unlock()
    assert backlight.record() == enumeration() * 2


def test_a_burst_of_display_changes_asserts_the_lock_once(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")

    def post_burst():
        backlight.wait_until_idle()
        backlight.tick(SETTLED, VERIFY)
        backlight.hardware.clear_calls()
        return lambda: [backlight.desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780) for _ in range(8)]

    act_within(SETTLE_DELAY, post_burst)
    one = enumeration(monitors=["left"])
    backlight.wait_for_calls(one, one, monitor_set("left", 100))
    backlight.tick(VERIFY)
    assert backlight.record() == one + one + monitor_set("left", 100) + one


@pytest.mark.parametrize("event", [RESUME_AUTOMATIC, RESUME_SUSPEND])
def test_a_display_that_sleep_has_reset_is_locked_again(backlight, event):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.slow_down("left")
    backlight.desk.send_message(WM_POWERBROADCAST, SUSPEND, 0)
    backlight.hardware.change("left", behaviour="ok")
    backlight.hardware.clear_calls()
    assert backlight.hardware.value("left") == 40
    assert backlight.desk.send_message(WM_POWERBROADCAST, event, 0) == 1
    one = enumeration(monitors=["left"])
    backlight.wait_for_calls(one, one, monitor_set("left", 100))
    backlight.tick(VERIFY)
    assert backlight.record() == one + one + monitor_set("left", 100) + one
    backlight.unlock()
    assert backlight.hardware.value("left") == 40


def test_a_display_change_with_the_mode_off_only_reads_the_displays(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.hardware.clear_calls()
    backlight.desk.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    backlight.wait_for_calls(enumeration(monitors=["left"]))
    backlight.wait_until_idle()
    assert backlight.record() == enumeration(monitors=["left"])


def test_a_display_connected_during_a_lock_is_locked_and_restored_too(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30, present=False)])
    backlight.lock("left")
    backlight.hardware.plug("right")
    backlight.tick(POLL, VERIFY)
    assert CONFIRMED % 2 in backlight.log()
    assert TARGETS % (2, 1) in backlight.log()
    backlight.unlock()
    assert backlight.values("left", "right") == [40, 30]
