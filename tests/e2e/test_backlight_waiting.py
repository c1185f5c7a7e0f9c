"""Slow and dead displays are not queried more often than fast ones; messages during the waits."""

import pytest

from backlight import (CARD, CONFIRMED, POLL, SAVE, SETTLED, UNTIL_ENDED, VERIFY, WM_ENDSESSION, WM_TIMER, Monitor,
                       Panel, enumeration, monitor_set, wait_until)
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401

MONITORS = ["left", "right"]
SHOW_POPUP = 0x8069
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
    backlight.hardware.change("dead", delay=UNTIL_ENDED, fails=("capabilities", "read", "set"))
    backlight.click_card()
    wait_until(backlight.hardware.held_calls, "a call that waits")
    backlight.hardware.change("dead", delay=0)
    backlight.hardware.end_delays()
    backlight.desk.wait_for_saves(1)
    assert backlight.values(*monitors) == [100, 30, 100]
    # Setting the others makes no call to it.
    backlight.wait_for_calls(enumeration(monitors=monitors, unreadable=["dead"]), monitor_set("left", 100, monitors),
                             monitor_set("right", 100, monitors))
    backlight.verify(CONFIRMED % 2, 1)
    backlight.unlock()
    assert backlight.values(*monitors) == [40, 30, 20]


def test_a_locked_display_with_a_dead_channel_delays_the_restore_once(backlight):
    """The channel dies after the lock. The other monitor is restored, and no monitor is queried twice."""
    backlight.start([Monitor("dead", 30), Monitor("left", 40)])
    backlight.lock("dead", "left")
    backlight.hardware.change("dead", fails=("capabilities", "read", "set"))
    menu = backlight.open_menu()
    backlight.hardware.change("dead", delay=300)
    backlight.click_quit(menu)
    assert backlight.desk.wait_for_exit() == 0
    monitors = ["dead", "left"]
    assert backlight.record() == enumeration(monitors=monitors, unreadable=["dead"]) + monitor_set("left", 40, monitors)
    assert backlight.hardware.value("left") == 40


def during_a_wait(backlight, start, act):
    """Acts while the operation that `start` posts waits for a display, then ends the wait."""
    start()
    wait_until(backlight.hardware.held_calls, "a call that waits")
    act()
    assert backlight.hardware.held_calls()
    backlight.hardware.end_delays()
    wait_until(lambda: not backlight.hardware.held_calls(), "the end of the wait")


def post_tick(backlight, timer):
    return lambda: backlight.desk.post_message(WM_TIMER, timer, 0)


def test_a_monitor_disconnected_during_a_query_is_skipped(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30)])
    backlight.hardware.change("right", delay=UNTIL_ENDED)
    backlight.hardware.clear_calls()
    during_a_wait(backlight, post_tick(backlight, SETTLED), lambda: backlight.hardware.unplug("right"))
    backlight.desk.send_message(0)  # Handled after the operation.
    assert backlight.record() == enumeration(monitors=MONITORS, unreadable=["right"])
    assert backlight.pwm_log() == ["PWM-safe targets: 2 controllable (was 0)",
                                   "PWM-safe targets: 1 controllable (was 2)"]


def test_a_monitor_unplugged_between_counting_and_fetching_hides_the_others_once(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30)])
    backlight.hardware.display(delay=UNTIL_ENDED)
    backlight.hardware.clear_calls()

    def unplug():
        backlight.hardware.display(delay=0)
        backlight.hardware.unplug("right")

    during_a_wait(backlight, post_tick(backlight, SETTLED), unplug)
    backlight.wait_for_calls(enumeration()[:-1] + ["count display0", "fetch display0"])
    backlight.tick(SETTLED)
    assert backlight.pwm_log()[-2:] == ["PWM-safe targets: 0 controllable (was 2)",
                                        "PWM-safe targets: 1 controllable (was 0)"]


def during_an_enumeration(backlight, start, act):
    """Acts while the enumeration that `start` posts waits for a panel. Later calls to the panel do not wait."""
    def act_once():
        backlight.hardware.wmi()
        act()

    backlight.hardware.wmi(delay_next=UNTIL_ENDED)
    during_a_wait(backlight, start, act_once)


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
    backlight.hardware.clear_calls()
    during_an_enumeration(backlight, post_tick(backlight, POLL), lambda: backlight.tick(*[POLL] * 5))
    backlight.wait_until_idle()
    assert backlight.record().count("count display0") == 1


def test_a_display_change_during_a_display_operation_applies_the_filter_once(backlight):
    """It enumerates the displays once the operation has ended."""
    filtering(backlight)
    one = enumeration(1, MONITORS)
    during_an_enumeration(backlight, post_tick(backlight, POLL), lambda: backlight.tick(SETTLED))
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
    during_an_enumeration(backlight, post_tick(backlight, SETTLED), lambda: backlight.desk.click_unit(*CARD))
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
    backlight.hardware.set_by_user("panel", 50)
    backlight.hardware.change("panel", delay=UNTIL_ENDED)
    backlight.hardware.set_by_user("left", 50)


def test_a_poll_during_a_restore_does_not_lock_again(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60), Panel("second", 30)])
    backlight.lock("panel", "second", "left")
    backlight.hardware.change("second", delay=UNTIL_ENDED)

    def poll():
        backlight.hardware.change("second", delay=0)
        backlight.tick(POLL)

    during_a_wait(backlight, lambda: backlight.desk.click_unit(*CARD), poll)
    backlight.desk.wait_for_saves(2)
    assert backlight.setting() == "0" and backlight.values("panel", "second", "left") == [60, 30, 40]


def test_an_installers_request_during_an_enumeration_restores_the_displays(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 30)], [Panel("panel", 60)])
    backlight.lock("panel", "left", "right")
    during_an_enumeration(backlight, post_tick(backlight, POLL),
                          lambda: backlight.desk.send_message(WM_ENDSESSION, 1, CLOSEAPP))
    assert backlight.desk.wait_for_exit() == 0
    assert backlight.values("panel", "left", "right") == [60, 40, 30] and backlight.setting() == "1"


@pytest.mark.parametrize("operation", [POLL, SETTLED])
def test_a_session_end_while_a_panel_is_locked_restores_every_display(backlight, operation):
    lose_lock(backlight)

    def end_session():
        backlight.hardware.change("panel", delay=0)
        backlight.desk.send_message(WM_ENDSESSION, 1, 0)

    during_a_wait(backlight, post_tick(backlight, operation), end_session)
    backlight.desk.send_message(0)  # Handled after the operation.
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
    backlight.verify(CONFIRMED % 1, 1)
    backlight.unlock()
    assert backlight.hardware.value("slow") == 40
