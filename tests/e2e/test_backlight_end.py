"""Every way out gives the displays their old values back and keeps the setting; a crash cannot."""

import time

import pytest

from backlight import (BUILD, CONFIRMED, POLL, SETTLED, VERIFY, WM_ENDSESSION, WM_TIMER, Bench, Monitor,
                       Panel, listed, monitor_set, panel_set, wait_for_value, wait_until)
from backlight import backlight_desk_fixture, bench_fixture  # noqa: F401

SHOW_POPUP = 0x8069
ONE = listed(1, ["left"])
RESTORE = panel_set(60) + monitor_set("left", 40)


@pytest.fixture(name="locked")
def locked_fixture(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("panel", "left")
    bench.hardware.forget()
    return bench


def test_quit_restores_the_old_values_and_keeps_the_mode_for_the_next_start(locked):
    locked.click_quit(locked.open_menu_at_rest())
    assert locked.desk.wait_for_exit() == 0
    assert locked.record() == ONE + RESTORE
    assert locked.values("panel", "left") == [60, 40] and locked.setting() == "1"
    locked.check_books()
    locked.desk.start()
    locked.wait_for_log(CONFIRMED % 2)
    assert locked.values("panel", "left") == [100, 100]
    locked.unlock()
    assert locked.values("panel", "left") == [60, 40]


def test_quit_during_the_verification_restores_the_old_value(bench):
    """The lock is asserted anew while the click on Quit is waiting already: no verification comes between."""
    bench.begin([Monitor("left", 40)], on=True)
    menu = bench.open_menu_at_rest()
    confirmations = bench.log().count(CONFIRMED % 1)
    bench.hardware.change("left", delay=1500)
    bench.desk.post_message(WM_TIMER, SETTLED, 0)
    wait_until(bench.hardware.waiting, "a call that waits")
    bench.hardware.change("left", delay=0)
    bench.click_quit(menu)
    assert bench.desk.wait_for_exit() == 0
    one = listed(monitors=["left"])
    assert bench.record() == one * 2 + monitor_set("left", 100) + one + monitor_set("left", 40)
    assert bench.log().count(CONFIRMED % 1) == confirmations
    assert bench.hardware.value("left") == 40 and bench.setting() == "1"


def test_quit_with_the_mode_off_queries_no_display(bench):
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.hardware.forget()
    assert bench.desk.quit() == 0
    assert bench.record() == [] and bench.values("panel", "left") == [60, 40]


def test_quit_with_a_disconnected_display_restores_the_others(locked):
    locked.hardware.unplug("panel")
    assert locked.desk.quit() == 0
    assert locked.values("panel", "left") == [100, 40]


def test_the_end_of_the_windows_session_restores_the_old_values(make_desk):
    bench = Bench(make_desk(build_dir=BUILD))
    bench.begin([Monitor("left", 40)], [Panel("panel", 60)])
    bench.lock("panel", "left")
    bench.desk.end_session()
    bench.desk.wait_for_exit()
    assert bench.values("panel", "left") == [60, 40] and bench.setting() == "1"
    bench.check_books()


def test_nothing_is_locked_after_the_session_end(locked):
    locked.relock()
    locked.desk.send_message(WM_ENDSESSION, 1, 0)
    assert locked.record() == ONE + RESTORE
    locked.hardware.forget()
    locked.tick(POLL, SETTLED, VERIFY, POLL, VERIFY)
    assert locked.sets() == [] and locked.values("panel", "left") == [60, 40]
    assert locked.setting() == "1"


def test_a_cancelled_session_end_keeps_the_lock(locked):
    locked.desk.send_message(WM_ENDSESSION, 0, 0)
    assert locked.sets() == []
    locked.hardware.turn("left", 40)
    locked.tick(POLL)
    assert locked.hardware.value("left") == 100


def test_a_crash_leaves_the_displays_locked_and_the_mode_on(locked):
    locked.desk.kill_program()
    locked.hardware.forget_outstanding()
    assert locked.values("panel", "left") == [100, 100] and locked.setting() == "1"
    locked.desk.start()
    locked.wait_for_log(CONFIRMED % 2)


# A session that is called off, and displays that answer later than Windows waits.

SECONDS = 1000
CLICKS = {"tray": lambda bench: bench.desk.click(*bench.desk.tray_icon_position()),
          "second start": lambda bench: bench.desk.post_message(SHOW_POPUP, 0, 0)}


@pytest.mark.parametrize("way", CLICKS)
def test_user_input_after_a_cancelled_session_end_locks_again(locked, way):
    locked.desk.send_message(WM_ENDSESSION, 1, 0)
    assert locked.values("panel", "left") == [60, 40]
    CLICKS[way](locked)
    locked.wait_for_value("left", 100)
    locked.wait_for_value("panel", 100)
    locked.tick(VERIFY)
    locked.unlock()
    assert locked.values("panel", "left") == [60, 40]


def test_the_session_end_is_handled_within_five_seconds(locked):
    """A monitor that is slow to read costs as much as one that is slow to set."""
    locked.hardware.change("left", delay=10 * SECONDS)
    began = time.monotonic()
    locked.desk.send_message(WM_ENDSESSION, 1, 0)
    assert time.monotonic() - began < 5
    locked.hardware.change("left", delay=0)
    locked.wait_for_value("left", 40)


def test_a_release_that_outlasts_the_session_end_keeps_the_users_values(locked):
    """The session goes on while the monitor still answers: it is locked once it is released, and what is saved again is
    what the user had."""
    locked.hardware.change("left", delay=0, read_delay=6 * SECONDS)
    locked.desk.send_message(WM_ENDSESSION, 1, 0)
    assert locked.hardware.value("left") == 100
    locked.desk.post_message(SHOW_POPUP, 0, 0)
    locked.hardware.change("left", delay=0)
    wait_for_value(lambda: [call for call in locked.sets() if "left" in call][-2:], ["set left 40", "set left 100"],
                   "the last values that were set")
    locked.tick(VERIFY)
    locked.unlock()
    assert locked.values("panel", "left") == [60, 40]
