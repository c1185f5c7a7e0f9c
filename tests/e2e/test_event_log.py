"""events.log: one line per event, and a marker for each start."""

import re

import pytest

import model
from desk import MARKER, wait_until

STAMPED = re.compile(r"\[([01]\d|2[0-3]):[0-5]\d:[0-5]\d\.\d{3}\] .*")
MAX_SIZE, KEPT = 262144, 65536
HARDWARE_KEY = "HKLM\\HARDWARE\\DESCRIPTION\\System\\BIOS"


def raw(desk):
    return desk.events_path.read_bytes()


def start_with_events(desk, content):
    """Starts the program with this event log."""
    desk.start_fresh()
    desk.kill_program()
    desk.write_events(content)
    desk.start()
    desk.loaded()
    return desk


def test_the_first_lines_follow_the_marker_in_order(desk):
    desk.loaded()
    lines = desk.events_text().splitlines()
    assert lines[0] == MARKER
    assert desk.log()[0] == "Ambrel Windows v2.23 starting"
    assert re.fullmatch(r"OS: .* \(\d+\.\d+\.\d+\)", desk.log()[1])
    assert re.fullmatch(r"Hardware: .+ / .+", desk.log()[2])
    assert desk.log()[3].startswith("Loaded settings: ")
    desk.wait_for_log("Gamma range: Windows default")
    assert len(desk.log()) == 5 and desk.log()[4] == "Gamma range: Windows default"


def test_every_other_line_starts_with_the_time_of_day(desk):
    desk.choose("DAY")
    desk.wait_for_saves(1)
    lines = desk.events_text().splitlines()
    assert lines.count(MARKER) == 1
    assert all(STAMPED.fullmatch(line) for line in lines[1:])
    stamps = [line[1:13] for line in lines[1:]]
    assert stamps == sorted(stamps) or min(stamps) < "00:05"  # The time of day restarts at midnight.


def test_lines_end_with_cr_lf_and_the_file_has_no_byte_order_mark(desk):
    desk.loaded()
    text = raw(desk)
    assert text.startswith(MARKER.encode() + b"\r\n[")
    assert text.endswith(b"\r\n")
    assert text.count(b"\n") == text.count(b"\r\n") == text.count(b"\r")


def test_every_start_appends_its_marker(desk):
    desk.loaded()
    first = raw(desk)
    for runs in (2, 3):
        desk.restart()
        desk.loaded()
        assert raw(desk).startswith(first)
        assert desk.events_text().count(MARKER + "\n") == runs


def test_drags_and_clicks_log_only_the_saves(desk):
    desk.loaded()
    before = len(desk.log())
    desk.press_power()
    desk.slide("WARMTH", 60)
    desk.slide("BRIGHTNESS", -60)
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(0.385, 60), model.dragged(1.0, -60, 0.1)))
    desk.wait_for_setting("Intensity", str(model.per_mille(model.dragged(0.385, 60))))
    desk.wait_for_setting("Brightness", str(model.per_mille(model.dragged(1.0, -60, 0.1))))
    assert set(desk.log()[before:]) == {"Saved settings"}


def test_the_file_can_be_deleted_while_the_program_runs(desk):
    desk.loaded()
    desk.write_events(None)
    desk.press_power()
    wait_until(lambda: "Saved settings" in desk.events_text(), "the line in a new file")
    assert len(desk.events_text().splitlines()) == 1


def test_a_log_of_exactly_the_limit_is_not_truncated(file_desk):
    old = (b"0123456789abcde\n" * (MAX_SIZE // 16))[:MAX_SIZE]
    desk = start_with_events(file_desk, old)
    assert raw(desk).startswith(old + MARKER.encode() + b"\r\n")


def test_a_log_one_byte_above_the_limit_is_truncated_to_its_last_part(file_desk):
    old = b"".join(b"line %07d\r\n" % number for number in range(20000))[:MAX_SIZE + 1]
    desk = start_with_events(file_desk, old)
    assert raw(desk).startswith(old[-KEPT:] + MARKER.encode() + b"\r\n")
    assert raw(desk).count(MARKER.encode()) == 1


def test_a_log_is_truncated_by_bytes_even_within_a_character(file_desk):
    old = "\u00e9".encode() * (MAX_SIZE // 2) + b"."
    assert old[-KEPT:].startswith(b"\xa9")
    desk = start_with_events(file_desk, old)
    assert raw(desk).startswith(old[-KEPT:] + MARKER.encode())


def test_a_small_log_without_a_final_line_end_is_appended_to(file_desk):
    desk = start_with_events(file_desk, b"[10:00:00.000] truncated")
    assert raw(desk).startswith(b"[10:00:00.000] truncated" + MARKER.encode() + b"\r\n[")


@pytest.fixture(name="hardware")
def hardware_fixture(desk):
    """Sets the machine's manufacturer and product, and deletes them afterwards."""
    def name(maker, product):
        desk.registry_set(HARDWARE_KEY, "SystemManufacturer", maker)
        desk.registry_set(HARDWARE_KEY, "SystemProductName", product)
    yield name
    for value in ("SystemManufacturer", "SystemProductName"):
        desk.registry_delete(HARDWARE_KEY, value)


def test_characters_of_every_language_are_written_as_utf_8(desk, hardware):
    hardware("M\u00f6bel & S\u00f6hne", "\u6a5f\u68b0 \U0001f5a5")
    desk.start_fresh()
    desk.loaded()
    assert "Hardware: M\u00f6bel & S\u00f6hne \u6a5f\u68b0 \U0001f5a5 / ".encode() in raw(desk)


def test_a_message_is_truncated_to_511_characters(desk, hardware):
    hardware("", "p" * 600)
    desk.start_fresh()
    desk.loaded()
    assert desk.log()[2] == "Hardware: " + "p" * (511 - len("Hardware: "))


def test_a_message_of_two_byte_characters_is_truncated_between_characters(desk, hardware):
    hardware("", "\u00f6" * 600)
    desk.start_fresh()
    desk.loaded()
    assert desk.log()[2] == "Hardware: " + "\u00f6" * (511 - len("Hardware: "))
    assert desk.log()[3].startswith("Loaded settings: ")


def test_the_log_is_in_the_folder_of_the_settings(desk):
    desk.press_power()
    desk.wait_for_saves(1)
    assert sorted(path.name for path in desk.settings_folder.iterdir()) == ["events.log", "settings.ini"]
