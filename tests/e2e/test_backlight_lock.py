"""The card locks what there is at 100%, holds it, and gives the old values back: call by call."""

import time

from backlight import (CLOSE, CONFIRMED, GEAR, POLL, SETTLED, VERIFY, WM_ENDSESSION, Monitor, Panel, listed,
                       monitor_set, panel_set)
from backlight import backlight_desk_fixture, bench_fixture  # noqa: F401

WM_CLOSE, SHOW_POPUP = 0x10, 0x8069



def test_one_monitor_is_locked_and_restored(bench):
    bench.begin([Monitor("left", 40)]).show()
    bench.click_card()
    bench.wait_for_calls(listed(monitors=["left"]), monitor_set("left", 100), listed(monitors=["left"]))
    bench.wait_for_log(CONFIRMED % 1)
    assert bench.hardware.value("left") == 100 and bench.setting() == "1"
    bench.unlock()
    assert bench.hardware.value("left") == 40
    assert bench.pwm_log() == ["PWM-safe targets: 1 controllable (was 0)", "PWM-safe toggled ON by user",
                               CONFIRMED % 1, "PWM-safe toggled OFF by user"]
    assert bench.desk.saves() == 2


def test_two_monitors_are_locked_each_at_its_own_maximum(bench):
    monitors = ["left", "right"]
    bench.begin([Monitor("left", 37), Monitor("right", 55, minimum=10, maximum=80)])
    bench.lock(*monitors)
    bench.wait_for_calls(listed(monitors=monitors), monitor_set("left", 100, monitors),
                         monitor_set("right", 80, monitors), listed(monitors=monitors))
    bench.unlock()
    # 55 is 64 percent of that range, and 64 percent of it is 54.8 when it is given back.
    assert bench.values("left", "right") == [37, 55]


def test_a_laptops_panel_is_locked(bench):
    bench.begin(panels=[Panel("panel", 60)])
    bench.lock("panel")
    bench.wait_for_calls(listed(1), panel_set(100), listed(1))
    assert bench.hardware.value("panel") == 100
    bench.unlock()
    assert bench.hardware.value("panel") == 60


def test_a_laptops_panel_is_locked_before_its_monitor(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("panel", "left")
    both = listed(1, ["left"])
    bench.wait_for_calls(both, panel_set(100), monitor_set("left", 100), both)
    bench.hardware.forget()
    bench.unlock()
    assert bench.sets() == ["exec services 60", "set left 40"]
    assert bench.values("panel", "left") == [60, 40]


def test_a_second_panel_is_found(bench):
    bench.begin(panels=[Panel("inner", 60), Panel("outer", 30)])
    bench.lock("inner", "outer")
    bench.wait_for_calls(listed(2), panel_set(100), panel_set(100, place=1), listed(2))


def asks(bench, act, *expected):
    """What is done asks the displays exactly this."""
    if bench.setting() == "1":
        bench.tick(SETTLED, VERIFY)  # Locked anew: the next poll is two seconds away.
    bench.hardware.forget()
    act()
    bench.wait_for_calls(*expected)
    assert bench.record() == [call for operation in expected for call in operation]


def test_each_operation_makes_the_minimum_of_display_calls(bench):
    one = listed(1, ["left"])
    lock, restore = panel_set(100) + monitor_set("left", 100), panel_set(60) + monitor_set("left", 40)
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    desk = bench.desk
    assert bench.record() == one
    bench.lock("panel", "left")
    asks(bench, lambda: bench.tick(POLL), one)
    asks(bench, lambda: bench.tick(SETTLED), one, one, lock)
    asks(bench, lambda: bench.tick(VERIFY), one)
    asks(bench, lambda: (desk.click_unit(*GEAR), desk.click_unit(*CLOSE)), one)
    desk.send_message(WM_CLOSE)
    asks(bench, lambda: desk.call_window(SHOW_POPUP), one)
    asks(bench, bench.unlock, one, restore, one)
    asks(bench, lambda: bench.tick(SETTLED), one)
    desk.send_message(WM_CLOSE)
    asks(bench, lambda: desk.call_window(SHOW_POPUP), one)
    asks(bench, desk.quit)
    desk.start_fresh({"PWMSafeMode": 1})
    bench.wait_for_calls(one, one, lock)
    asks(bench, lambda: desk.send_message(WM_ENDSESSION, 1, 0), one, restore)


def test_a_monitor_that_the_user_turns_down_is_reset_at_the_next_poll(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.hardware.forget()
    bench.hardware.turn("left", 20)
    one = listed(monitors=["left"])
    bench.wait_for_calls(one, one, monitor_set("left", 100), one)
    assert bench.hardware.value("left") == 100
    bench.wait_for_log(CONFIRMED % 1, times=2)
    # The value from before the first lock, not the one that the hand left.
    bench.unlock()
    assert bench.hardware.value("left") == 40


def test_both_displays_are_reasserted_if_one_does_not_hold(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("left", "panel")
    bench.hardware.turn("panel", 98)
    bench.hardware.forget()
    bench.tick(POLL, VERIFY)
    one = listed(1, ["left"])
    bench.wait_for_calls(one, one, panel_set(100), monitor_set("left", 100), one)


def test_99_percent_counts_as_locked(bench):
    bench.begin([Monitor("left", 40, behaviour="sticks", at=99)])
    bench.lock("left")
    bench.hardware.forget()
    bench.tick(POLL)
    assert bench.record() == listed(monitors=["left"])
    bench.hardware.change("left", behaviour="ok")
    bench.hardware.turn("left", 98)
    bench.tick(POLL)
    assert bench.sets() == ["set left 100"]


def test_a_display_already_at_100_is_set_and_keeps_its_value(bench):
    bench.begin([Monitor("left", 100)])
    bench.lock("left")
    assert bench.sets() == ["set left 100"]
    bench.unlock()
    assert bench.sets() == ["set left 100", "set left 100"] and bench.hardware.value("left") == 100


def test_a_second_lock_stores_new_values(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.unlock()
    bench.hardware.turn("left", 70)
    bench.lock("left")
    bench.unlock()
    assert bench.hardware.value("left") == 70


def test_a_click_during_the_verification_restores_the_value_and_cancels_the_verification(bench):
    bench.begin([Monitor("left", 40)]).show()
    bench.click_card()
    bench.click_card()
    bench.wait_for_log("PWM-safe toggled OFF by user")
    one = listed(monitors=["left"])
    bench.wait_for_calls(one, monitor_set("left", 100), one, monitor_set("left", 40), one)
    assert bench.hardware.value("left") == 40 and bench.setting() == "0"
    bench.hardware.forget()
    time.sleep(1.0)  # For a verification that comes all the same.
    assert bench.record() == []
