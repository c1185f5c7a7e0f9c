"""Slow and dead displays are asked no more often than quick ones, and what happens while they are waited for."""

import threading

import pytest

from backlight import (CARD, CONFIRMED, POLL, SAVE, SETTLED, VERIFY, WM_DISPLAYCHANGE, WM_ENDSESSION,
                       WM_TIMER, Monitor, Panel, listed, monitor_set, wait_until)
from backlight import backlight_desk_fixture, bench_fixture  # noqa: F401

MONITORS = ["left", "right"]
SHOW_POPUP = 0x8069
# Long enough that a test can act while the call waits.
A_WHILE = 200
# And longer than the displays are given to settle.
LONG = 1500


def test_slow_monitors_are_asked_as_often_as_quick_ones(bench):
    bench.begin([Monitor("left", 40, delay=40), Monitor("right", 30, delay=40)], delay=40)
    one = listed(monitors=MONITORS)
    assert bench.record() == one
    bench.lock(*MONITORS)
    bench.wait_for_calls(one, monitor_set("left", 100, MONITORS), monitor_set("right", 100, MONITORS), one)
    bench.unlock()
    assert bench.values(*MONITORS) == [40, 30]


def test_a_dead_channel_is_waited_for_once_and_costs_only_its_own_call(bench):
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


def test_a_dead_channel_that_is_locked_is_waited_for_once_when_its_value_is_given_back(bench):
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


def test_a_monitor_unplugged_while_it_is_asked_contributes_nothing(bench):
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


def pumping(bench, on=False):
    """A panel and a monitor; the monitor's calls dispatch messages while they wait."""
    bench.begin([Monitor("left", 40, delay=A_WHILE, pump=True), Monitor("right", 30)], [Panel("panel", 60)], on=on)
    return bench


def settle(bench, *timers):
    """No display is slow any more, and these timers have had their turn."""
    bench.hardware.change("left", delay=0, pump=False)
    wait_until(lambda: not bench.hardware.waiting(), "the end of the waiting")
    bench.tick(*timers)


def filtering(bench):
    """With the filter on, which tells each settling of the displays. The next call to a monitor is slow."""
    pumping(bench).show()
    bench.desk.press_power()
    wait_until(lambda: len(bench.desk.effects()) == 1, "the filter")
    bench.tick(SAVE)
    bench.hardware.change("left", delay=LONG)
    bench.hardware.forget()


def listed_in_the_middle(bench, begin, act):
    """Acts while `begin` has the displays listed, and lets no later call wait."""
    def act_once():
        bench.hardware.change("left", delay=0, pump=False)
        act()

    in_the_middle(bench, begin, act_once)


def test_messages_that_arrive_while_the_displays_are_listed_wait_for_their_turn(bench):
    """A display change settles and is looked at behind that listing; opening the popup again is not."""
    filtering(bench)
    one = listed(1, MONITORS)
    listed_in_the_middle(bench, lambda: bench.desk.post_message(SHOW_POPUP, 0, 0), lambda: [
        bench.desk.post_message(message, 0, 0) for message in (SHOW_POPUP, WM_DISPLAYCHANGE)])
    wait_until(lambda: len(bench.desk.effects()) == 2, "the filter after the settling")
    bench.wait_for_calls(one, one)
    bench.come_to_rest()
    assert bench.record() == one * 2 and len(bench.desk.effects()) == 2
    assert bench.pwm_log() == ["PWM-safe targets: 3 controllable (was 0)"]


def test_opening_the_popup_again_while_the_displays_are_listed_does_not_list_them_again(bench):
    """Nor later: alone, so that no display change's own look can be taken for it."""
    filtering(bench)
    listed_in_the_middle(bench, lambda: bench.desk.post_message(SHOW_POPUP, 0, 0),
                         lambda: bench.desk.post_message(SHOW_POPUP, 0, 0))
    bench.come_to_rest()
    assert bench.record() == listed(1, MONITORS)


def test_polls_do_not_pile_up_while_the_displays_still_answer(bench):
    bench.begin([Monitor("left", 40)])
    bench.lock("left")
    bench.tick(SETTLED, VERIFY)  # Locked anew: the next poll of its own is two seconds away.
    bench.hardware.change("left", delay=A_WHILE, pump=True)
    bench.hardware.forget()
    in_the_middle(bench, post_tick(bench, POLL), lambda: [post_tick(bench, POLL)() for _ in range(5)])
    bench.desk.send_message(0)
    bench.hardware.change("left", delay=0)
    assert bench.record().count("count display0") == 1


def test_a_change_that_settles_while_the_displays_answer_applies_the_filter_once(bench):
    """And its own look at the displays comes once they have answered."""
    filtering(bench)
    one = listed(1, MONITORS)
    listed_in_the_middle(bench, post_tick(bench, POLL), post_tick(bench, SETTLED))
    bench.wait_for_calls(one, one)
    bench.come_to_rest()
    assert bench.record() == one * 2 and len(bench.desk.effects()) == 2


def test_a_click_while_the_displays_are_listed_locks_them(bench):
    pumping(bench).show()
    place = bench.desk.unit_to_screen(*CARD)
    in_the_middle(bench, post_tick(bench, SETTLED), lambda: bench.desk.click(*place))
    bench.desk.wait_for_saves(1)
    settle(bench, POLL, VERIFY)
    assert CONFIRMED % 3 in bench.log()
    bench.unlock()
    assert bench.values("panel", "left", "right") == [60, 40, 30]


def test_a_click_that_ends_the_mode_while_a_poll_lists_the_displays_is_the_last_word(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30)], [Panel("panel", 60)])
    bench.lock("panel", "left", "right")
    bench.hardware.change("left", delay=A_WHILE, pump=True)
    place = bench.desk.unit_to_screen(*CARD)
    bench.hardware.turn("right", 50)
    in_the_middle(bench, post_tick(bench, POLL), lambda: bench.desk.click(*place))
    bench.desk.wait_for_saves(2)
    settle(bench, POLL, VERIFY)
    assert bench.setting() == "0" and bench.values("panel", "left", "right") == [60, 40, 30]


def lock_slips(bench):
    """Everything is locked, the panel slips, and its next set waits and dispatches messages."""
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("panel", "left")
    bench.tick(SETTLED, VERIFY)
    bench.hardware.turn("panel", 50)
    bench.hardware.change("panel", delay=A_WHILE, pump=True)
    bench.hardware.turn("left", 50)


def calm(bench):
    bench.hardware.change("panel", delay=0, pump=False)
    wait_until(lambda: not bench.hardware.waiting(), "the end of the waiting")
    bench.desk.send_message(0)  # Answered after the operation's end.


def test_a_click_that_ends_the_mode_while_a_poll_locks_a_panel_is_the_last_word(bench):
    lock_slips(bench)
    place = bench.desk.unit_to_screen(*CARD)
    in_the_middle(bench, post_tick(bench, POLL), lambda: bench.desk.click(*place))
    bench.desk.wait_for_saves(2)
    calm(bench)
    bench.tick(POLL, VERIFY)
    assert bench.setting() == "0"
    assert "PWM-safe toggled OFF by user" in bench.log()
    assert bench.values("panel", "left") == [60, 40]
    bench.hardware.forget()
    bench.tick(POLL, VERIFY)
    assert bench.sets() == []


def test_a_poll_while_the_click_gives_the_values_back_does_not_lock_again(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60), Panel("second", 30)])
    bench.lock("panel", "second", "left")
    bench.tick(SETTLED, VERIFY)
    bench.hardware.change("second", delay=A_WHILE, pump=True)
    in_the_middle(bench, lambda: bench.desk.click_unit(*CARD), post_tick(bench, POLL))
    bench.desk.wait_for_saves(2)
    bench.hardware.change("second", delay=0, pump=False)
    assert bench.setting() == "0" and bench.values("panel", "second", "left") == [60, 30, 40]


def test_quit_while_the_displays_are_listed_gives_the_old_values_back(bench):
    bench.begin([Monitor("left", 40), Monitor("right", 30)], [Panel("panel", 60)])
    bench.lock("panel", "left", "right")
    bench.hardware.change("left", delay=1500, pump=True)

    def quit_from_the_menu():
        menu = bench.desk.open_menu()
        bench.hardware.change("left", delay=0, pump=False)
        bench.click_quit(menu)

    in_the_middle(bench, post_tick(bench, POLL), quit_from_the_menu)
    assert bench.desk.wait_for_exit() == 0
    assert bench.values("panel", "left", "right") == [60, 40, 30] and bench.setting() == "1"


@pytest.mark.parametrize("operation", [POLL, SETTLED])
def test_the_end_of_the_session_while_a_panel_is_locked_gives_every_display_back(bench, operation):
    lock_slips(bench)
    ending = threading.Thread(target=lambda: bench.desk.send_message(WM_ENDSESSION, 1, 0))
    in_the_middle(bench, post_tick(bench, operation), lambda: (ending.start(), ending.join(10)))
    calm(bench)
    assert bench.values("panel", "left") == [60, 40] and bench.setting() == "1"
