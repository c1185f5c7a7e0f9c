"""The card locks the displays at 100%, keeps them there and restores them: the exact calls."""

import time

from backlight import (CLOSE, CONFIRMED, GEAR, POLL, SETTLED, VERIFY, VERIFY_DELAY, WM_ENDSESSION, Monitor, Panel,
                       enumeration, monitor_set, panel_set, without_delays)
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401
from desk import act_within

WM_CLOSE, SHOW_POPUP = 0x10, 0x8069


def test_one_monitor_is_locked_and_restored(backlight):
    backlight.start([Monitor("left", 40)], timers=True).show()
    backlight.click_card()
    backlight.wait_for_calls(enumeration(monitors=["left"]), monitor_set("left", 100), enumeration(monitors=["left"]))
    backlight.wait_for_log(CONFIRMED % 1)
    assert backlight.hardware.value("left") == 100 and backlight.setting() == "1"
    backlight.unlock()
    assert backlight.hardware.value("left") == 40
    assert backlight.pwm_log() == ["PWM-safe targets: 1 controllable (was 0)", "PWM-safe toggled ON by user",
                                   CONFIRMED % 1, "PWM-safe toggled OFF by user"]
    assert backlight.desk.saves() == 2


def test_two_monitors_are_locked_each_at_its_own_maximum(backlight):
    monitors = ["left", "right"]
    backlight.start([Monitor("left", 37), Monitor("right", 55, minimum=10, maximum=80)])
    backlight.lock(*monitors)
    backlight.wait_for_calls(enumeration(monitors=monitors), monitor_set("left", 100, monitors),
                             monitor_set("right", 80, monitors), enumeration(monitors=monitors))
    backlight.unlock()
    # 55 is 64 percent of the range, and 64 percent of the range is 54.8.
    assert backlight.values("left", "right") == [37, 55]


def test_a_laptops_panel_is_locked(backlight):
    backlight.start(panels=[Panel("panel", 60)])
    backlight.lock("panel")
    backlight.wait_for_calls(enumeration(1), panel_set(100), enumeration(1))
    assert backlight.hardware.value("panel") == 100
    backlight.unlock()
    assert backlight.hardware.value("panel") == 60


def test_a_laptops_panel_is_locked_before_its_monitor(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("panel", "left")
    both = enumeration(1, ["left"])
    backlight.wait_for_calls(both, panel_set(100), monitor_set("left", 100), both)
    backlight.hardware.clear_calls()
    backlight.unlock()
    assert backlight.sets() == ["exec services 60", "set left 40"]
    assert backlight.values("panel", "left") == [60, 40]


def test_a_second_panel_is_found(backlight):
    backlight.start(panels=[Panel("inner", 60), Panel("outer", 30)])
    backlight.lock("inner", "outer")
    backlight.wait_for_calls(enumeration(2), panel_set(100), panel_set(100, position=1), enumeration(2))


def expect_calls(backlight, act, *expected):
    """Performs `act` and compares its calls with the expected operations; no other call may follow."""
    backlight.hardware.clear_calls()
    act()
    backlight.wait_for_calls(*expected)
    assert backlight.record() == [call for operation in expected for call in operation]


def test_each_operation_makes_the_minimum_of_display_calls(backlight):
    one = enumeration(1, ["left"])
    lock, restore = panel_set(100) + monitor_set("left", 100), panel_set(60) + monitor_set("left", 40)
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    desk = backlight.desk
    assert backlight.record() == one
    backlight.lock("panel", "left")
    expect_calls(backlight, lambda: backlight.tick(POLL), one)
    expect_calls(backlight, lambda: backlight.tick(SETTLED), one, one, lock)
    expect_calls(backlight, lambda: backlight.tick(VERIFY), one)
    expect_calls(backlight, lambda: (desk.click_unit(*GEAR), desk.click_unit(*CLOSE)), one)
    desk.send_message(WM_CLOSE)
    expect_calls(backlight, lambda: desk.call_window(SHOW_POPUP), one)
    expect_calls(backlight, backlight.unlock, one, restore, one)
    expect_calls(backlight, lambda: backlight.tick(SETTLED), one)
    desk.send_message(WM_CLOSE)
    expect_calls(backlight, lambda: desk.call_window(SHOW_POPUP), one)
    expect_calls(backlight, desk.quit)
    desk.start_fresh({"PWMSafeMode": 1})
    backlight.wait_for_calls(one, one, lock)
    backlight.tick(VERIFY)
    expect_calls(backlight, lambda: desk.send_message(WM_ENDSESSION, 1, 0), one, restore)


def test_a_monitor_that_the_user_turns_down_is_reset_at_the_next_poll(backlight):
    backlight.start([Monitor("left", 40)], timers=True)
    backlight.lock("left")
    one = enumeration(monitors=["left"])
    locked = one + monitor_set("left", 100) + one
    assert backlight.record()[:len(locked)] == locked
    backlight.hardware.set_by_user("left", 20)
    backlight.wait_for_log(CONFIRMED % 1, times=2)
    backlight.expect_after_polls(one, one, one, monitor_set("left", 100), one, start=len(locked))
    assert backlight.hardware.value("left") == 100
    # The value from before the first lock, not the one that the user set during it.
    backlight.unlock()
    assert backlight.hardware.value("left") == 40


def test_both_displays_are_reasserted_if_one_does_not_hold(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("left", "panel")
    backlight.hardware.set_by_user("panel", 98)
    backlight.hardware.clear_calls()
    backlight.tick(POLL, VERIFY)
    one = enumeration(1, ["left"])
    backlight.wait_for_calls(one, one, panel_set(100), monitor_set("left", 100), one)


def test_99_percent_counts_as_locked(backlight):
    backlight.start([Monitor("left", 40, behaviour="sticks", at=99)])
    backlight.lock("left")
    backlight.hardware.clear_calls()
    backlight.tick(POLL)
    assert backlight.record() == enumeration(monitors=["left"])
    backlight.hardware.change("left", behaviour="ok")
    backlight.hardware.set_by_user("left", 98)
    backlight.tick(POLL)
    assert backlight.sets() == ["set left 100"]


def test_a_display_already_at_100_is_set_and_keeps_its_value(backlight):
    backlight.start([Monitor("left", 100)])
    backlight.lock("left")
    assert backlight.sets() == ["set left 100"]
    backlight.unlock()
    assert backlight.sets() == ["set left 100", "set left 100"] and backlight.hardware.value("left") == 100


def test_a_second_lock_stores_new_values(backlight):
    backlight.start([Monitor("left", 40)])
    backlight.lock("left")
    backlight.unlock()
    backlight.hardware.set_by_user("left", 70)
    backlight.lock("left")
    backlight.unlock()
    assert backlight.hardware.value("left") == 70


def test_a_click_during_the_verification_restores_the_value_and_cancels_the_verification(backlight):
    def click_twice():
        backlight.clear()
        backlight.start([without_delays(Monitor("left", 40))], timers=True).show()
        return clicks

    def clicks():
        backlight.click_card()
        backlight.click_card()
        backlight.wait_for_log("PWM-safe toggled OFF by user")

    # Otherwise the verification may be first.
    act_within(VERIFY_DELAY, click_twice)
    backlight.desk.wait_for_saves(2)
    one = enumeration(monitors=["left"])
    backlight.wait_for_calls(one, monitor_set("left", 100), one, monitor_set("left", 40), one)
    assert backlight.hardware.value("left") == 40 and backlight.setting() == "0"
    backlight.hardware.clear_calls()
    time.sleep(1.0)  # A verification would have run by now.
    assert backlight.record() == []
