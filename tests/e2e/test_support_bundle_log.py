"""The two logs at the end of the support report: the ring of this run and the last lines of events.log."""

import pytest

from ambrel_lab.layout import SUPPORT
from bundle import COPIED_LINE, STAMP, Report, copy, failures, messages, press
from desk import MARKER, SETTINGS_ROWS, wait_until
from faults import held_by_another_program
from panels import show_settings

WM_LBUTTONDOWN = 0x201
RING, TAIL_BYTES, TAIL_LINES = 500, 16384, 40
BATCH = 50  # clicks in the queue at a time
END = "\r\n=== END DIAGNOSTICS ===\r\n"
PERSISTED = ("\r\n=== PERSISTED LOG (last 40 lines; survives restarts, so boot\r\n"
             "    sessions are visible; may repeat current-session lines) ===\r\n")


def persisted(report):
    return report.sections().get("PERSISTED LOG")


def copy_with(desk, content):
    """Copies the report with this content of events.log, which the program reopens for every line."""
    show_settings(desk)
    desk.write_events(content)
    return copy(desk)


def ring_of(report):
    lines = report.section("EVENT LOG")
    assert f"\r\n=== EVENT LOG (most recent {len(lines)}, oldest first) ===\r\n" in report.text
    return lines


# The ring

def test_the_ring_contains_all_lines_of_this_run(desk):
    desk.press_power()
    desk.wait_for_saves(1)
    lines = ring_of(copy(desk))
    assert messages(lines)[0] == "Ambrel Windows v2.23 starting"
    assert messages(lines)[3:] == [
        "Loaded settings: intensity=0.385 brightness=1.000 extremeDim=0 legacy=0 pwmSafe=0",
        "Gamma range: Windows default", "Saved settings"]
    # The same lines as in the file, which also contains the line of this copy.
    assert lines == desk.events_text().splitlines()[1:-1]


def test_lines_of_earlier_runs_are_in_the_file_and_not_in_the_ring(desk):
    desk.press_power()
    desk.wait_for_saves(1)
    before = desk.events_text().splitlines()
    desk.restart()
    desk.loaded()
    desk.wait_for_log("Gamma range: Windows default")
    report = copy(desk)
    assert len(ring_of(report)) == 5
    assert persisted(report) == [*before, MARKER, *ring_of(report)]


def test_the_line_of_a_copy_appears_in_the_next_report_only(desk):
    first, second = copy(desk), copy(desk)
    assert not any(COPIED_LINE.search(line) for line in ring_of(first) + persisted(first))
    assert messages(ring_of(second)) == messages(ring_of(first)) + [
        f"Support bundle copied to clipboard ({len(first.text)} chars)"]
    assert persisted(second)[-1] == ring_of(second)[-1]


def test_a_failed_copy_appears_in_the_next_report(desk):
    with desk.clipboard_held():
        press(desk)
        wait_until(lambda: failures(desk) == 1, "the line of the failure")
    assert messages(ring_of(copy(desk)))[-1] == "Support bundle copy failed"


def fill_ring(desk, lines):
    """Makes the program log more lines, by clicks that each save the settings immediately."""
    x, y = SETTINGS_ROWS["ALLOW EXTREME DIM"]
    show_settings(desk)
    saves = desk.saves()
    for number in range(1, lines + 1):
        desk.post_message(WM_LBUTTONDOWN, 1, x | y << 16)
        if number % BATCH == 0 or number == lines:
            wait_until(lambda: desk.saves() == saves + number, "the clicks to be handled")


def test_a_full_ring_contains_the_500_most_recent_lines(desk):
    desk.wait_for_log("Gamma range: Windows default")
    fill_ring(desk, RING - 5)
    report = copy(desk)
    lines = desk.events_text().splitlines()[1:-1]
    assert len(lines) == RING and ring_of(report) == lines
    assert "\r\n=== EVENT LOG (most recent 500, oldest first) ===\r\n" in report.text
    assert messages(lines)[0] == "Ambrel Windows v2.23 starting"
    # The line of that copy is the 501st, so the oldest has been dropped.
    report = copy(desk)
    lines = desk.events_text().splitlines()[1:-1]
    assert len(lines) == RING + 1 and ring_of(report) == lines[1:]
    assert messages(ring_of(report))[0].startswith("OS: ")
    fill_ring(desk, 499)
    lines = desk.events_text().splitlines()
    report = copy(desk)
    assert ring_of(report) == lines[-RING:]
    assert messages(ring_of(report)) == [messages([lines[-RING]])[0]] + ["Saved settings"] * 499
    assert persisted(report) == lines[-TAIL_LINES:]


def test_a_line_with_any_characters_is_unchanged(desk):
    desk.registry_set("HKLM\\HARDWARE\\DESCRIPTION\\System\\BIOS", "SystemProductName", "M\u00f6bel \u6a5f \U0001f5a5")
    try:
        desk.restart()
        desk.wait_for_log("Gamma range: Windows default")
        report = copy(desk)
    finally:
        desk.registry_delete("HKLM\\HARDWARE\\DESCRIPTION\\System\\BIOS", "SystemProductName")
    line = ring_of(report)[2]
    assert "] Hardware: M\u00f6bel \u6a5f \U0001f5a5 / " in line and line in persisted(report)


# The file

def test_the_file_follows_the_ring_and_the_end_follows_the_file(desk):
    report = copy(desk)
    ring, tail = ring_of(report), persisted(report)
    assert report.text.endswith("".join(line + "\r\n" for line in ring) + PERSISTED
                                + "".join(line + "\r\n" for line in tail) + END)


def test_without_a_file_the_section_is_omitted_and_the_report_is_complete(desk):
    report = copy_with(desk, None)
    assert "PERSISTED" not in report.text
    assert report.text.endswith(ring_of(report)[-1] + "\r\n" + END)
    # The file exists again and contains the line of the copy.
    assert messages(desk.events_text().splitlines()) == [
        f"Support bundle copied to clipboard ({len(report.text)} chars)"]


def test_with_an_empty_file_the_section_is_omitted(desk):
    report = copy_with(desk, b"")
    assert "PERSISTED" not in report.text
    assert report.text.endswith(ring_of(report)[-1] + "\r\n" + END)


def test_with_a_locked_file_the_section_is_omitted(desk):
    show_settings(desk)
    with held_by_another_program(desk, desk.events_path):
        # The line of the copy is lost as well; only the clipboard shows the report.
        desk.set_clipboard_text("before")
        desk.send_message(WM_LBUTTONDOWN, 1, SUPPORT[0] | SUPPORT[1] << 16)
        report = Report(desk.clipboard_text(), 0, 0)
    assert list(report.sections())[-1] == "EVENT LOG"
    assert report.text.endswith("] Gamma range: Windows default\r\n" + END)


@pytest.mark.parametrize("count", [1, 39, 40, 41, 200])
def test_the_section_contains_at_most_the_last_40_lines(desk, count):
    lines = [f"line {number}" for number in range(count)]
    report = copy_with(desk, "".join(line + "\r\n" for line in lines))
    assert persisted(report) == lines[-TAIL_LINES:]


@pytest.mark.parametrize("content, lines", [
    pytest.param("one\ntwo\n", ["one", "two"], id="line feeds alone"),
    pytest.param("one\r\ntwo", ["one", "two"], id="no end of the last line"),
    pytest.param("one\r\n\r\ntwo\r\n", ["one", "", "two"], id="an empty line"),
    pytest.param("\r\n", [""], id="only an empty line"),
    pytest.param("%s %n %d\r\n", ["%s %n %d"], id="formats"),
    pytest.param("M\u00f6bel \u6a5f \U0001f5a5\r\n", ["M\u00f6bel \u6a5f \U0001f5a5"], id="characters of 2 to 4 bytes"),
])
def test_the_file_is_split_into_its_lines(desk, content, lines):
    assert persisted(copy_with(desk, content)) == lines


def test_invalid_bytes_are_replaced_and_the_rest_is_kept(desk):
    report = copy_with(desk, b"before \xff\xc3 after\r\nzeros \0\0 within\r\nlast\r\n")
    lines = persisted(report)
    assert lines[0].startswith("before \ufffd") and lines[0].endswith(" after")
    assert lines[1].startswith("zeros ") and lines[1].endswith(" within")
    assert lines[2] == "last"
    assert report.text.endswith("last\r\n" + END)


def long_lines(count, letters):
    """Numbered lines of two-byte characters, so that a cut within a character is detectable."""
    return [f"{number:03} " + "\u00e9" * letters for number in range(count)]


def test_a_line_cut_within_a_character_by_the_16_kilobyte_limit_is_omitted(desk):
    lines = long_lines(29, 298)
    lines[-1] += "."
    content = "".join(line + "\r\n" for line in lines).encode()
    assert 17000 < len(content) < 18000
    cut = len(content) - TAIL_BYTES
    assert content[cut:cut + 1] == b"\xa9" and content[cut - 1:cut] == b"\xc3"
    whole = content[cut:].decode(errors="ignore").split("\r\n", 1)[1].split("\r\n")[:-1]
    assert whole == lines[-len(whole):] and 20 < len(whole) < TAIL_LINES
    report = copy_with(desk, content)
    assert persisted(report) == whole
    assert "\ufffd" not in report.text


def test_a_line_cut_between_two_characters_is_omitted(desk):
    lines = long_lines(29, 298)
    content = "".join(line + "\r\n" for line in lines).encode()
    cut = len(content) - TAIL_BYTES
    assert content[cut:cut + 1] == b"\xc3"
    whole = content[cut:].decode().split("\r\n", 1)[1].split("\r\n")[:-1]
    assert persisted(copy_with(desk, content)) == whole == lines[-len(whole):]


def test_a_file_of_exactly_16_kilobytes_is_complete(desk):
    lines = [f"{number:02} " + "x" * 1019 for number in range(16)]
    content = "".join(line + "\r\n" for line in lines)
    assert len(content) == TAIL_BYTES
    assert persisted(copy_with(desk, content)) == lines


def test_a_file_one_byte_above_16_kilobytes_loses_its_first_line(desk):
    lines = ["00 " + "x" * 1020] + [f"{number:02} " + "x" * 1019 for number in range(1, 16)]
    content = "".join(line + "\r\n" for line in lines)
    assert len(content) == TAIL_BYTES + 1
    assert persisted(copy_with(desk, content)) == lines[1:]


def test_with_a_line_longer_than_the_limit_the_section_is_omitted(desk):
    report = copy_with(desk, b"short\r\n" + b"x" * 20000)
    assert "PERSISTED" not in report.text
    assert report.text.endswith(ring_of(report)[-1] + "\r\n" + END)


def test_the_last_lines_of_a_large_file_are_included(desk):
    lines = [f"{number:06}" for number in range(20000)]
    report = copy_with(desk, "".join(line + "\r\n" for line in lines))
    assert persisted(report) == lines[-TAIL_LINES:]


def test_every_line_of_a_run_has_a_time_stamp(desk):
    desk.press_power()
    desk.wait_for_saves(1)
    report = copy(desk)
    assert all(STAMP.match(line) for line in ring_of(report))
    assert [line for line in persisted(report) if not STAMP.match(line)] == [MARKER]
