"""Slow and dead displays are not queried more often than fast ones; messages during the waits."""

import threading

import pytest

from backlight import (CARD, CONFIRMED, POLL, SAVE, SETTLED, VERIFY, WM_ENDSESSION, WM_TIMER, Monitor,
                       Panel, enumeration, monitor_set, wait_until)
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401

MONITORS = ["left", "right"]
SHOW_POPUP = 0x8069
# Milliseconds. Long enough for a test to act while the call waits.
SHORT_DELAY = 200
# Longer than the period of the timer that settles display changes.
LONG_DELAY = 1500
THREE_SECONDS = 3000
CLOSEAPP = 1


def test_slow_monitors_are_queried_as_often_as_fast_ones(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30)], delay=40)
    one = enumeration(monitors=MONITORS)
    assert backlight.record() == one
    backlight.lock(*MONITORS)
    backlight.wait_for_calls(one, monitor_set("left", 100, MONITORS), monitor_set("right", 100, MONITORS), one)
    backlight.unlock()
    assert backlight.values(*MONITORS) == [40, 30]


def test_a_dead_channel_delays_only_its_own_call(backlight):
    backlight.start([Monitor("left", 40), Monitor("dead", 30), Monitor("right", 20)]).show()
    monitors = ["left", "dead", "right"]
    backlight.hardware.change("dead", delay=3500, fails=("capabilities", "read", "set"))
    backlight.click_card()
    wait_until(lambda: backlight.hardware.value("right") == 100, "the lock of the others")
    # Setting the others makes no call to it.
    backlight.wait_for_calls(enumeration(monitors=monitors, unreadable=["dead"]), monitor_set("left", 100, monitors),
                             monitor_set("right", 100, monitors))
    assert backlight.hardware.value("dead") == 30
    backlight.hardware.change("dead", delay=0)
    backlight.wait_for_log(CONFIRMED % 2)
    backlight.unlock()
    assert backlight.values(*monitors) == [40, 30, 20]


def test_a_locked_display_with_a_dead_channel_delays_the_restore_once(backlight):
    """The channel dies after the lock. The other monitor is restored, and no monitor is queried twice."""
    backlight.start([Monitor("dead", 30), Monitor("left", 40)])
    backlight.lock("dead", "left")
    backlight.hardware.change("dead", fails=("capabilities", "read", "set"))
    menu = backlight.open_menu_between_polls()
    backlight.hardware.change("dead", delay=300)
    backlight.click_quit(menu)
    assert backlight.desk.wait_for_exit() == 0
    monitors = ["dead", "left"]
    assert backlight.record() == enumeration(monitors=monitors, unreadable=["dead"]) + monitor_set("left", 40, monitors)
    assert backlight.hardware.value("left") == 40


def during_a_wait(backlight, start, act):
    """Acts while the operation that `start` posts waits for a display, then waits until the operation has ended."""
    start()
    wait_until(backlight.hardware.waiting, "a call that waits")
    act()
    wait_until(lambda: not backlight.hardware.waiting(), "the end of the wait")


def post_tick(backlight, timer):
    return lambda: backlight.desk.post_message(WM_TIMER, timer, 0)


def test_a_monitor_disconnected_during_a_query_is_skipped(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30)])
    backlight.hardware.change("right", delay=LONG_DELAY)
    backlight.hardware.clear_calls()
    during_a_wait(backlight, post_tick(backlight, SETTLED), lambda: backlight.hardware.unplug("right"))
    backlight.desk.send_message(0)  # Handled after the operation.
    assert backlight.record() == enumeration(monitors=MONITORS, unreadable=["right"])
    assert backlight.pwm_log() == ["PWM-safe targets: 2 controllable (was 0)",
                                   "PWM-safe targets: 1 controllable (was 2)"]


def test_a_monitor_unplugged_between_counting_and_fetching_hides_the_others_once(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30)])
    backlight.hardware.display(delay=SHORT_DELAY)
    backlight.hardware.clear_calls()
    during_a_wait(backlight, post_tick(backlight, SETTLED), lambda: backlight.hardware.unplug("right"))
    backlight.wait_for_calls(enumeration()[:-1] + ["count display0", "fetch display0"])
    backlight.hardware.display(delay=0)
    backlight.tick(SETTLED)
    assert backlight.pwm_log()[-2:] == ["PWM-safe targets: 0 controllable (was 2)",
                                        "PWM-safe targets: 1 controllable (was 0)"]


def during_an_enumeration(backlight, start, act, delay=LONG_DELAY):
    """Acts while the enumeration that `start` posts waits for a panel. Later calls to the panel do not wait."""
    def act_once():
        backlight.hardware.wmi()
        act()

    backlight.hardware.wmi(delay_next=delay)
    during_a_wait(backlight, start, act_once)


def call_on_thread(backlight, message, *parameters):
    """Makes the program handle a message now as it would a timer. A thread waits for the result."""
    thread = threading.Thread(target=lambda: backlight.desk.call_window(message, *parameters))
    thread.start()
    return thread


def filtering(backlight):
    """Turns the filter on. The program applies it again after each display change, which the test counts."""
    backlight.start([Monitor("left", 40), Monitor("right", 30)], [Panel("panel", 60)]).show()
    backlight.desk.press_power()
    wait_until(lambda: len(backlight.desk.effects()) == 1, "the filter")
    backlight.tick(SAVE)
    backlight.hardware.clear_calls()


def test_polls_do_not_accumulate_during_a_display_operation(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("left", "panel")
    backlight.relock()  # The program's next poll is two seconds away.
    during_an_enumeration(backlight, post_tick(backlight, POLL),
                          lambda: [call_on_thread(backlight, WM_TIMER, POLL, 0).join(10) for _ in range(5)],
                          delay=700)  # The operation ends before the program's next poll.
    backlight.wait_until_idle()
    assert backlight.record().count("count display0") == 1


def test_a_display_change_during_a_display_operation_applies_the_filter_once(backlight):
    """It enumerates the displays once the operation has ended."""
    filtering(backlight)
    one = enumeration(1, MONITORS)
    during_an_enumeration(backlight, post_tick(backlight, POLL),
                          lambda: call_on_thread(backlight, WM_TIMER, SETTLED, 0).join(10))
    backlight.wait_for_calls(one, one)
    backlight.wait_until_idle()
    assert backlight.record() == one * 2 and len(backlight.desk.effects()) == 2


def test_a_second_start_during_an_enumeration_stays_in_the_queue(backlight):
    """COM does not dispatch posted messages."""
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.hardware.clear_calls()
    seen = []

    def start_again():
        backlight.desk.post_message(SHOW_POPUP, 0, 0)
        backlight.desk.send_message(0)  # A sent message is dispatched during the wait.
        seen.append(backlight.desk.popup_visible())

    during_an_enumeration(backlight, post_tick(backlight, SETTLED), start_again)
    backlight.wait_until_idle()
    assert seen == [False] and backlight.desk.popup_visible()
    assert backlight.record() == enumeration(1, ["left"]) * 2


def test_a_click_during_an_enumeration_locks_the_displays_afterwards(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)]).show()
    position = backlight.desk.unit_to_screen(*CARD)
    during_an_enumeration(backlight, post_tick(backlight, SETTLED), lambda: backlight.desk.click(*position))
    backlight.desk.wait_for_saves(1)
    backlight.tick(VERIFY)
    assert CONFIRMED % 2 in backlight.log()
    backlight.unlock()
    assert backlight.values("panel", "left") == [60, 40]


def test_com_refuses_a_panel_while_a_sent_message_is_handled(backlight):
    """The enumeration then finds only the monitor. The lab is as strict as Windows in this."""
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.desk.send_message(WM_TIMER, SETTLED, 0)
    assert backlight.pwm_log()[-1] == "PWM-safe targets: 1 controllable (was 2)"
    backlight.tick(SETTLED)
    assert backlight.pwm_log()[-1] == "PWM-safe targets: 2 controllable (was 1)"


def lose_lock(backlight):
    """Locks a panel and a monitor, lets both lose the lock, and delays the panel's next set."""
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("panel", "left")
    backlight.relock()
    backlight.hardware.set_by_user("panel", 50)
    backlight.hardware.change("panel", delay=SHORT_DELAY)
    backlight.hardware.set_by_user("left", 50)


def end_delays(backlight):
    backlight.hardware.change("panel", delay=0)
    wait_until(lambda: not backlight.hardware.waiting(), "the end of the wait")
    backlight.desk.send_message(0)  # Handled after the operation.


def test_a_poll_during_a_restore_does_not_lock_again(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60), Panel("second", 30)])
    backlight.lock("panel", "second", "left")
    backlight.relock()
    backlight.hardware.change("second", delay=LONG_DELAY)
    during_a_wait(backlight, lambda: backlight.desk.click_unit(*CARD),
                  lambda: call_on_thread(backlight, WM_TIMER, POLL, 0).join(10))
    backlight.desk.wait_for_saves(2)
    assert backlight.setting() == "0" and backlight.values("panel", "second", "left") == [60, 30, 40]


def test_an_installers_request_during_an_enumeration_restores_the_displays(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30)], [Panel("panel", 60)])
    backlight.lock("panel", "left", "right")
    ending = threading.Thread(target=lambda: backlight.desk.send_message(WM_ENDSESSION, 1, CLOSEAPP))
    during_an_enumeration(backlight, post_tick(backlight, POLL), lambda: (ending.start(), ending.join(20)))
    assert backlight.desk.wait_for_exit() == 0
    assert backlight.values("panel", "left", "right") == [60, 40, 30] and backlight.setting() == "1"


@pytest.mark.parametrize("operation", [POLL, SETTLED])
def test_a_session_end_while_a_panel_is_locked_restores_every_display(backlight, operation):
    lose_lock(backlight)
    ending = threading.Thread(target=lambda: backlight.desk.send_message(WM_ENDSESSION, 1, 0))
    during_a_wait(backlight, post_tick(backlight, operation), lambda: (ending.start(), ending.join(10)))
    end_delays(backlight)
    assert backlight.values("panel", "left") == [60, 40] and backlight.setting() == "1"


def test_a_monitor_that_takes_three_seconds_is_locked_and_released(backlight):
    """The popup handles the click's result as soon as the monitor has answered."""
    backlight.start([Monitor("slow", 40)])
    backlight.hardware.change("slow", delay=0, read_delay=THREE_SECONDS)
    backlight.desk.show()
    backlight.click_card()
    wait_until(lambda: backlight.hardware.value("slow") == 100, "the lock")
    wait_until(lambda: backlight.desk.saves() == 1, "the end of the click's operation")
    backlight.hardware.change("slow", delay=0)
    backlight.wait_for_log(CONFIRMED % 1)
    backlight.unlock()
    assert backlight.hardware.value("slow") == 40
