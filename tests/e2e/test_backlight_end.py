"""Every way of ending the program restores the displays and keeps the setting; after a crash the next start restores
them (test_restore_record.py)."""

import pytest

from backlight import (BUILD, CONFIRMED, POLL, SETTLED, UNTIL_ENDED, VERIFY, WM_ENDSESSION, Backlight, Monitor, Panel,
                       enumeration, monitor_set, panel_set, wait_for_value)
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401
from desk import act_within

SHOW_POPUP = 0x8069
ONE = enumeration(1, ["left"])
RESTORE = panel_set(60) + monitor_set("left", 40)


@pytest.fixture(name="locked")
def locked_fixture(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("panel", "left")
    backlight.hardware.clear_calls()
    return backlight


def test_quit_restores_the_old_values_and_keeps_the_mode_for_the_next_start(locked):
    locked.click_quit(locked.open_menu())
    assert locked.desk.wait_for_exit() == 0
    assert locked.record() == ONE + RESTORE
    assert locked.values("panel", "left") == [60, 40] and locked.setting() == "1"
    locked.expect_no_leaks()
    locked.run_timers()
    locked.desk.start()
    locked.wait_for_log(CONFIRMED % 2)
    assert locked.values("panel", "left") == [100, 100]
    locked.unlock()
    assert locked.values("panel", "left") == [60, 40]


def test_quit_during_the_verification_restores_the_old_value(backlight):
    backlight.start([Monitor("left", 40)], on=True)
    menu = backlight.open_menu()
    backlight.tick(SETTLED)  # Reasserts the lock. The verification, which would follow, does not run.
    backlight.click_quit(menu)
    assert backlight.desk.wait_for_exit() == 0
    one = enumeration(monitors=["left"])
    assert backlight.record() == one * 2 + monitor_set("left", 100) + one + monitor_set("left", 40)
    assert CONFIRMED % 1 not in backlight.log()
    assert backlight.hardware.value("left") == 40 and backlight.setting() == "1"


def test_quit_with_the_mode_off_queries_no_display(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.hardware.clear_calls()
    assert backlight.desk.quit() == 0
    assert backlight.record() == [] and backlight.values("panel", "left") == [60, 40]


def test_quit_with_a_disconnected_display_restores_the_others(locked):
    locked.hardware.unplug("panel")
    assert locked.desk.quit() == 0
    assert locked.values("panel", "left") == [100, 40]


def test_the_end_of_the_windows_session_restores_the_old_values(make_desk):
    backlight = Backlight(make_desk(build_dir=BUILD))
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("panel", "left")
    backlight.desk.end_session()
    backlight.desk.wait_for_exit()
    assert backlight.values("panel", "left") == [60, 40] and backlight.setting() == "1"
    backlight.expect_no_leaks()


def test_nothing_is_locked_after_the_session_end(locked):
    locked.relock()
    locked.desk.send_message(WM_ENDSESSION, 1, 0)
    assert locked.record() == ONE + RESTORE
    locked.hardware.clear_calls()
    locked.tick(POLL, SETTLED, VERIFY, POLL, VERIFY)
    assert locked.sets() == [] and locked.values("panel", "left") == [60, 40]
    assert locked.setting() == "1"


def test_a_cancelled_session_end_keeps_the_lock(locked):
    locked.desk.send_message(WM_ENDSESSION, 0, 0)
    assert locked.sets() == []
    locked.hardware.set_by_user("left", 40)
    locked.tick(POLL)
    assert locked.hardware.value("left") == 100


def test_a_crash_leaves_the_displays_locked_and_the_mode_on(locked):
    locked.desk.kill_program()
    locked.hardware.reset_outstanding()
    assert locked.values("panel", "left") == [100, 100] and locked.setting() == "1"
    locked.run_timers()
    locked.desk.start()
    locked.wait_for_log(CONFIRMED % 2)


# Cancelled ends of the session, and displays that answer later than Windows waits.

CLICKS = {"tray": lambda backlight: backlight.desk.click_tray(),
          "second start": lambda backlight: backlight.desk.post_message(SHOW_POPUP, 0, 0)}


@pytest.mark.parametrize("source", CLICKS)
def test_user_input_after_a_cancelled_session_end_locks_again(locked, source):
    locked.desk.send_message(WM_ENDSESSION, 1, 0)
    assert locked.values("panel", "left") == [60, 40]
    CLICKS[source](locked)
    locked.wait_for_value("left", 100)
    locked.wait_for_value("panel", 100)
    locked.tick(VERIFY)
    locked.unlock()
    assert locked.values("panel", "left") == [60, 40]


def test_the_session_end_is_handled_within_five_seconds(backlight):
    """Even if a monitor does not answer."""
    def lock_and_stall():
        backlight.clear()
        backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
        backlight.lock("panel", "left")
        backlight.hardware.change("left", delay=UNTIL_ENDED)
        return lambda: backlight.desk.send_message(WM_ENDSESSION, 1, 0)

    # The program waits for four of the five seconds, so a busy machine may need another attempt.
    act_within(5, lock_and_stall, attempts=3)
    assert backlight.hardware.held_calls()
    backlight.hardware.change("left", delay=0)
    backlight.hardware.end_delays()
    backlight.wait_for_value("left", 40)


def test_a_release_that_outlasts_the_session_end_keeps_the_users_values(locked):
    """The session continues while the release waits for a monitor. The monitor is locked after its release, and the
    value that is saved again is the user's."""
    locked.hardware.change("left", delay=0, read_delay=UNTIL_ENDED)
    locked.desk.send_message(WM_ENDSESSION, 1, 0)
    assert locked.hardware.value("left") == 100
    locked.desk.post_message(SHOW_POPUP, 0, 0)
    locked.wait_until_idle()
    locked.hardware.change("left", delay=0)
    locked.hardware.end_delays()
    wait_for_value(lambda: [call for call in locked.sets() if "left" in call][-2:], ["set left 40", "set left 100"],
                   "the last values that were set")
    locked.tick(VERIFY)
    locked.unlock()
    assert locked.values("panel", "left") == [60, 40]
