"""A start after a kill restores the screen and the displays; a run that ends properly leaves no record of them."""

import re

import pytest

import model
from backlight import CONFIRMED, WM_ENDSESSION, Monitor, Panel
from backlight import backlight_desk_fixture, backlight_fixture  # noqa: F401
from desk import TIMEOUT, settings_file, wait_until_settled

SECTION = "[Restore]"
START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)


def record(desk):
    """The lines of the record, [] if there is no section."""
    _, section, rest = desk.settings_text().partition(SECTION + "\n")
    return [line for line in rest.partition("\n[")[0].splitlines() if line] if section else []


def wait_for_no_record(desk):
    def text_without_record():
        text = desk.settings_text()
        return SECTION not in text and text
    # Windows rewrites the whole file for each change, so one look may see its beginning only.
    wait_until_settled(text_without_record, "a file without the record")


# Legacy Mode's ramp

def tinted(desk, **settings):
    desk.start_fresh({"UseLegacyGamma": 1, **settings})
    desk.press_power()
    desk.wait_for_legacy_colour(*START)
    # A save rewrites the file: neither a read nor a kill may fall into it.
    desk.wait_for_saves(1)
    assert record(desk) == ["Ramp=1"]
    return desk


def test_the_start_after_a_kill_removes_the_ramp(file_desk):
    desk = tinted(file_desk)
    desk.kill_program()
    assert not desk.ramp_is_plain()
    desk.start()
    assert desk.ramp_is_plain() and desk.screen_is_plain()
    wait_for_no_record(desk)


def test_the_start_after_a_kill_removes_the_ramp_in_magnification_mode_too(file_desk):
    desk = tinted(file_desk)
    desk.kill_program()
    desk.write_settings(desk.settings_text().replace("UseLegacyGamma=1", "UseLegacyGamma=0"))
    desk.start()
    assert desk.ramp_is_plain()
    wait_for_no_record(desk)


def test_a_drag_does_not_write_the_record(file_desk):
    desk = tinted(file_desk)
    desk.settings_path.unlink()
    desk.slide("WARMTH", 60, steps=40, release=False)
    desk.wait_for_legacy_colour(model.dragged(START[0], 60), START[1])
    # The drag's settings may have been saved by now, but no record.
    assert not desk.settings_path.exists() or "[Restore]" not in desk.settings_text()
    desk.release()


@pytest.mark.parametrize("end", ["power", "switch", "quit", "session"])
def test_no_record_is_left_when_the_ramp_is_removed(file_desk, end):
    desk = tinted(file_desk)
    log = desk.log()
    if end == "power":
        desk.press_power()
    elif end == "switch":
        desk.show_settings()
        desk.flip("LEGACY MODE")
        wait_for_no_record(desk)
        desk.close_settings()
        desk.press_power()
    elif end == "quit":
        desk.quit()
    else:
        desk.send_message(WM_ENDSESSION, 1, 0)
    desk.wait_for_plain_screen()
    wait_for_no_record(desk)
    assert not [line for line in desk.log()[len(log):] if "estore" in line]


@pytest.mark.parametrize("damage", [
    "Ramp=1", "Ramp=\xb1", "Ramp=1\r\n1=\r\n2=40", "Ramp=99999999999999999999\r\n1=101 0 n p", "1=40 0 %XYZ p",
    "1=40 0 " + 10000 * "n" + " p", "".join(f"{n}=50 0 DXVA2:x#{n} p\r\n" for n in range(65, 1000)), "\0\0\0\0", "",
])
def test_a_damaged_record_harms_nothing(file_desk, damage):
    text = settings_file(Intensity=585, UseLegacyGamma=1) + f"{SECTION}\r\n{damage}"
    file_desk.start_fresh(text.encode("latin-1"))
    assert "intensity=0.585" in file_desk.loaded()
    wait_for_no_record(file_desk)
    assert file_desk.quit() == 0
    assert file_desk.settings()["Intensity"] == "585" and file_desk.ramp_is_plain()


# The displays' own brightness

@pytest.fixture(name="locked")
def locked_fixture(backlight):
    backlight.start([Monitor("left", 40), Monitor("right", 56, maximum=80)], [Panel("panel", 60)])
    backlight.lock("panel", "left", "right")
    return backlight


def kill(backlight):
    backlight.desk.kill_program()
    backlight.hardware.reset_outstanding()
    assert backlight.values("panel", "left", "right") == [100, 100, 80]


def start(backlight, mode):
    text = backlight.desk.settings_text()
    backlight.desk.write_settings(re.sub("PWMSafeMode=.", f"PWMSafeMode={mode}", text).replace("\n", "\r\n"))
    backlight.hardware.clear_calls()
    backlight.run_timers()
    backlight.desk.start()
    return backlight


def test_each_row_is_written_before_the_first_command_to_its_display(locked):
    rows = record(locked.desk)
    assert [row.split()[0] for row in rows] == ["1=60", "2=40", "3=70"]
    assert [row.split()[2] for row in rows] == ["panel", "DXVA2:\\\\.\\DISPLAY1#0", "DXVA2:\\\\.\\DISPLAY1#1"]
    assert all(len(row.split()) == (3 if row.split()[2] == "panel" else 4) for row in rows)


def test_after_a_kill_a_start_with_the_mode_off_restores_the_displays(locked):
    kill(locked)
    start(locked, mode=0)
    assert locked.values("panel", "left", "right") == [60, 40, 56]
    wait_for_no_record(locked.desk)
    assert not [line for line in locked.log() if "estor" in line]


def test_after_a_kill_a_start_with_the_mode_on_keeps_the_users_values(locked):
    kill(locked)
    start(locked, mode=1)
    locked.wait_for_log(CONFIRMED % 3)
    assert locked.values("panel", "left", "right") == [100, 100, 80]
    assert locked.desk.quit() == 0
    assert locked.values("panel", "left", "right") == [60, 40, 56]
    wait_for_no_record(locked.desk)


def test_three_kills_in_a_row_keep_the_users_values(locked):
    for _ in range(3):
        kill(locked)
        start(locked, mode=1)
        locked.wait_for_log(CONFIRMED % 3)
    kill(locked)
    start(locked, mode=0)
    assert locked.values("panel", "left", "right") == [60, 40, 56]


def test_a_value_that_the_user_has_chosen_since_is_not_overwritten(locked):
    kill(locked)
    locked.hardware.set_by_user("left", 75)
    start(locked, mode=0)
    assert locked.values("panel", "left", "right") == [60, 75, 56]
    wait_for_no_record(locked.desk)


def test_another_monitor_in_the_slot_is_not_set(locked):
    """The record names the monitor that was in the slot; the one that is there now has another device path."""
    kill(locked)
    text = locked.desk.settings_text()
    row = next(line for line in record(locked.desk) if line.startswith("2="))
    locked.desk.write_settings(text.replace(row, row + "-of-another-monitor").replace("\n", "\r\n"))
    start(locked, mode=0)
    assert locked.values("panel", "left", "right") == [60, 100, 56]
    assert not locked.hardware.calls("SetMonitorBrightness", "left")
    wait_for_no_record(locked.desk)


def test_a_display_that_is_away_is_restored_when_it_is_connected_at_a_later_start(locked):
    kill(locked)
    locked.hardware.unplug("right")
    start(locked, mode=0)
    assert len(record(locked.desk)) == 1
    assert locked.desk.quit() == 0
    locked.hardware.plug("right")
    start(locked, mode=0)
    assert locked.values("panel", "left", "right") == [60, 40, 56]
    wait_for_no_record(locked.desk)


def test_a_power_failure_that_damages_the_file_harms_nothing(locked):
    """The tail of the file is zeros, as after a power failure: the last row is lost, the others are restored."""
    kill(locked)
    data = locked.desk.settings_path.read_bytes()
    offset = data.index(b"3=") + 2
    locked.desk.write_settings(data[:offset] + bytes(len(data) - offset))
    start(locked, mode=0)
    assert locked.values("panel", "left", "right") == [60, 40, 80]
    wait_for_no_record(locked.desk)


@pytest.mark.parametrize("end", ["card", "quit", "session", "refusal"])
def test_a_run_that_ends_properly_leaves_no_record(backlight, end):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    if end == "refusal":
        backlight.hardware.change("left", behaviour="ignores")
        backlight.lock_and_expect_revert()
    else:
        backlight.lock("panel", "left")
        assert len(record(backlight.desk)) == 2
    if end == "card":
        backlight.unlock()
    elif end == "session":
        backlight.desk.call_window(WM_ENDSESSION, 1, 0)
    elif end == "quit":
        assert backlight.desk.quit() == 0
    assert backlight.values("panel", "left") == [60, 40]
    wait_for_no_record(backlight.desk)


def test_the_row_of_a_display_that_is_away_at_the_end_stays(backlight):
    backlight.start([Monitor("left", 40)], [Panel("panel", 60)])
    backlight.lock("panel", "left")
    backlight.hardware.unplug("left")
    assert backlight.desk.quit() == 0
    assert [row.split()[0] for row in record(backlight.desk)] == ["2=40"]


def test_a_second_instance_does_not_touch_the_record(locked):
    before = locked.desk.settings_path.read_bytes()
    assert locked.desk.start_program().wait(TIMEOUT) == 0
    assert locked.desk.settings_path.read_bytes() == before
    assert locked.values("panel", "left", "right") == [100, 100, 80]
