"""Slow and dead displays are asked no more often than quick ones, and what happens while they are waited for."""

import threading

import pytest

from backlight import (CARD, CONFIRMED, POLL, SAVE, SETTLED, VERIFY, WM_ENDSESSION, WM_TIMER, Monitor,
                       Panel, listed, monitor_set, wait_until)
from backlight import backlight_desk_fixture, bench_fixture  # noqa: F401

MONITORS = ["left", "right"]
SHOW_POPUP = 0x8069
# Long enough that a test can act while the call waits.
A_WHILE = 200
# And longer than the displays are given to settle.
LONG = 1500
THREE_SECONDS = 3000
CLOSEAPP = 1


def test_slow_monitors_are_queried_as_often_as_fast_ones(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30)], delay=40)
    one = listed(monitors=MONITORS)
    assert bench.record() == one
    bench.lock(*MONITORS)
    bench.wait_for_calls(one, monitor_set("left", 100, MONITORS), monitor_set("right", 100, MONITORS), one)
    bench.unlock()
    assert bench.values(*MONITORS) == [40, 30]


def test_a_dead_channel_delays_only_its_own_call(bench):
    bench.begin([Monitor("left", 40), Monitor("dead", 30), Monitor("right", 20)]).show()
    monitors = ["left", "dead", "right"]
    bench.hardware.change("dead", delay=3500, fails=("capabilities", "read", "set"))
    bench.click_card()
    wait_until(lambda: bench.hardware.value("right") == 100, "the lock of the others")
    # Setting the others never touches it.
    bench.wait_for_calls(listed(monitors=monitors, deaf=["dead"]), monitor_set("left", 100, monitors),
                         monitor_set("right", 100, monitors))
    assert bench.hardware.value("dead") == 30
    bench.hardware.change("dead", delay=0)
    bench.wait_for_log(CONFIRMED % 2)
    bench.unlock()
    assert bench.values(*monitors) == [40, 30, 20]


def test_a_locked_display_with_a_dead_channel_delays_the_restore_once(bench):
    """It answered when it was locked. Then it is gone; the others get their values, and none waits twice."""
    bench.begin([Monitor("dead", 30), Monitor("left", 40)])
    bench.lock("dead", "left")
    bench.hardware.change("dead", fails=("capabilities", "read", "set"))
    menu = bench.open_menu_at_rest()
    bench.hardware.change("dead", delay=300)
    bench.click_quit(menu)
    assert bench.desk.wait_for_exit() == 0
    monitors = ["dead", "left"]
    assert bench.record() == listed(monitors=monitors, deaf=["dead"]) + monitor_set("left", 40, monitors)
    assert bench.hardware.value("left") == 40


def in_the_middle(bench, begin, act):
    """Acts while the operation that `begin` posts waits for a display, and lets it come to its end."""
    begin()
    wait_until(bench.hardware.waiting, "a call that waits")
    act()
    wait_until(lambda: not bench.hardware.waiting(), "the end of the waiting")


def post_tick(bench, timer):
    return lambda: bench.desk.post_message(WM_TIMER, timer, 0)


def test_a_monitor_disconnected_during_a_query_is_skipped(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30)])
    bench.hardware.change("right", delay=LONG)
    bench.hardware.forget()
    in_the_middle(bench, post_tick(bench, SETTLED), lambda: bench.hardware.unplug("right"))
    bench.desk.send_message(0)  # Answered after the operation's end.
    assert bench.record() == listed(monitors=MONITORS, deaf=["right"])
    assert bench.pwm_log() == ["PWM-safe targets: 2 controllable (was 0)",
                               "PWM-safe targets: 1 controllable (was 2)"]


def test_a_monitor_unplugged_between_counting_and_fetching_hides_the_others_once(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30)])
    bench.hardware.display(delay=A_WHILE)
    bench.hardware.forget()
    in_the_middle(bench, post_tick(bench, SETTLED), lambda: bench.hardware.unplug("right"))
    bench.wait_for_calls(listed()[:-1] + ["count display0", "fetch display0"])
    bench.hardware.display(delay=0)
    bench.tick(SETTLED)
    assert bench.pwm_log()[-2:] == ["PWM-safe targets: 0 controllable (was 2)",
                                    "PWM-safe targets: 1 controllable (was 0)"]


def listed_in_the_middle(bench, begin, act, delay=LONG):
    """Acts while `begin` has the displays listed and a panel is waited for, and lets no later call wait for it."""
    def act_once():
        bench.hardware.wmi()
        act()

    bench.hardware.wmi(delay_next=delay)
    in_the_middle(bench, begin, act_once)


def call_aside(bench, message, *parameters):
    """Lets the program handle a message as it would a timer, now, on a thread that does not wait for the answer."""
    thread = threading.Thread(target=lambda: bench.desk.call_window(message, *parameters))
    thread.start()
    return thread


def filtering(bench):
    """With the filter on, which tells each settling of the displays."""
    bench.begin([Monitor("left", 40), Monitor("right", 30)], [Panel("panel", 60)]).show()
    bench.desk.press_power()
    wait_until(lambda: len(bench.desk.effects()) == 1, "the filter")
    bench.tick(SAVE)
    bench.hardware.forget()


def test_polls_do_not_accumulate_during_a_display_operation(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("left", "panel")
    bench.relock()  # The next poll of its own is two seconds away.
    listed_in_the_middle(bench, post_tick(bench, POLL),
                         lambda: [call_aside(bench, WM_TIMER, POLL, 0).join(10) for _ in range(5)],
                         delay=700)  # The operation ends before the next poll of its own.
    bench.come_to_rest()
    assert bench.record().count("count display0") == 1


def test_a_display_change_during_a_display_operation_applies_the_filter_once(bench):
    """And its own look at the displays comes once they have answered."""
    filtering(bench)
    one = listed(1, MONITORS)
    listed_in_the_middle(bench, post_tick(bench, POLL),
                         lambda: call_aside(bench, WM_TIMER, SETTLED, 0).join(10))
    bench.wait_for_calls(one, one)
    bench.come_to_rest()
    assert bench.record() == one * 2 and len(bench.desk.effects()) == 2


def test_a_second_start_during_an_enumeration_stays_in_the_queue(bench):
    """COM leaves posted messages there."""
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.hardware.forget()
    seen = []

    def start_again():
        bench.desk.post_message(SHOW_POPUP, 0, 0)
        bench.desk.send_message(0)  # A sent message is answered meanwhile.
        seen.append(bench.desk.popup_visible())

    listed_in_the_middle(bench, post_tick(bench, SETTLED), start_again)
    bench.come_to_rest()
    assert seen == [False] and bench.desk.popup_visible()
    assert bench.record() == listed(1, ["left"]) * 2


def test_a_click_during_an_enumeration_locks_the_displays_afterwards(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)]).show()
    place = bench.desk.unit_to_screen(*CARD)
    listed_in_the_middle(bench, post_tick(bench, SETTLED), lambda: bench.desk.click(*place))
    bench.desk.wait_for_saves(1)
    bench.tick(VERIFY)
    assert CONFIRMED % 2 in bench.log()
    bench.unlock()
    assert bench.values("panel", "left") == [60, 40]


def test_com_refuses_a_panel_while_a_sent_message_is_handled(bench):
    """What the lab is as strict as Windows about, shown on the program: only the monitor is there then."""
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.desk.send_message(WM_TIMER, SETTLED, 0)
    assert bench.pwm_log()[-1] == "PWM-safe targets: 1 controllable (was 2)"
    bench.tick(SETTLED)
    assert bench.pwm_log()[-1] == "PWM-safe targets: 2 controllable (was 1)"


def lock_slips(bench):
    """Everything is locked, the panel slips, and its next set takes a while."""
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("panel", "left")
    bench.relock()
    bench.hardware.turn("panel", 50)
    bench.hardware.change("panel", delay=A_WHILE)
    bench.hardware.turn("left", 50)


def calm(bench):
    bench.hardware.change("panel", delay=0)
    wait_until(lambda: not bench.hardware.waiting(), "the end of the waiting")
    bench.desk.send_message(0)  # Answered after the operation's end.


def test_a_poll_during_a_restore_does_not_lock_again(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60), Panel("second", 30)])
    bench.lock("panel", "second", "left")
    bench.relock()
    bench.hardware.change("second", delay=LONG)
    in_the_middle(bench, lambda: bench.desk.click_unit(*CARD),
                  lambda: call_aside(bench, WM_TIMER, POLL, 0).join(10))
    bench.desk.wait_for_saves(2)
    assert bench.setting() == "0" and bench.values("panel", "second", "left") == [60, 30, 40]


def test_an_installers_request_during_an_enumeration_restores_the_displays(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30)], [Panel("panel", 60)])
    bench.lock("panel", "left", "right")
    ending = threading.Thread(target=lambda: bench.desk.send_message(WM_ENDSESSION, 1, CLOSEAPP))
    listed_in_the_middle(bench, post_tick(bench, POLL), lambda: (ending.start(), ending.join(20)))
    assert bench.desk.wait_for_exit() == 0
    assert bench.values("panel", "left", "right") == [60, 40, 30] and bench.setting() == "1"


@pytest.mark.parametrize("operation", [POLL, SETTLED])
def test_a_session_end_while_a_panel_is_locked_restores_every_display(bench, operation):
    lock_slips(bench)
    ending = threading.Thread(target=lambda: bench.desk.send_message(WM_ENDSESSION, 1, 0))
    in_the_middle(bench, post_tick(bench, operation), lambda: (ending.start(), ending.join(10)))
    calm(bench)
    assert bench.values("panel", "left") == [60, 40] and bench.setting() == "1"


def test_a_monitor_that_takes_three_seconds_is_locked_and_released(bench):
    """Its answers are waited for, and the popup answers a click as soon as they are there."""
    bench.begin([Monitor("slow", 40)])
    bench.hardware.change("slow", delay=0, read_delay=THREE_SECONDS)
    bench.desk.show()
    bench.click_card()
    wait_until(lambda: bench.hardware.value("slow") == 100, "the lock")
    wait_until(lambda: bench.desk.saves() == 1, "the end of the click's operation")
    bench.hardware.change("slow", delay=0)
    bench.wait_for_log(CONFIRMED % 1)
    bench.unlock()
    assert bench.hardware.value("slow") == 40
