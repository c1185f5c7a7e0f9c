"""Tinted system cursors: the program's calls as Wine logs them.

Wine does not replace system cursors. Unit tests check the pixels of the tinted cursors.
"""

import re
import time

import pytest

import model
from desk import MENU_LEGACY_MODE, SLIDER_X, SLIDER_Y, wait_until

RECORD = "-all,+cursor,+system"
# Every system cursor, in order. Wine's 32641 is monochrome and is not tinted.
ALL = [32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642, 32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651]
TINTED = [number for number in ALL if number != 32641]
RESET = "reset"
# Wine refuses every reset, and when the program terminates a refused one is tried once more.
LAST_RESET = [RESET, RESET]
WM_CLOSE, WM_ENDSESSION, WM_POWERBROADCAST, RESUMED = 0x10, 0x16, 0x218, 18
WM_TIMER, SETTLE_TIMER = 0x113, 2
CALL = re.compile(r"^([0-9a-f]{4}):.*:(?:NtUserSystemParametersInfo \(87, 0, \(nil\), 0\)"
                  r"|SetSystemCursor \(([0-9A-F]+),([0-9a-f]+)\))", re.M)
COPY = re.compile(r":CopyImage hnd=[0-9A-F]+, type=2,")
DESTROYED = re.compile(r":NtUserDestroyCursor 0x([0-9a-f]+)")
EVENING = model.PRESETS["EVENING"][:2]
MODES = pytest.mark.parametrize("legacy", [0, 1], ids=["magnification", "legacy"])


class Cursors:
    """The program's cursor calls since the last clear()."""

    def __init__(self, desk):
        self.desk, self.offset = desk, 0

    def text(self):
        return self.desk.wine_log(self.offset)

    def clear(self):
        """Discards all calls so far."""
        self.offset = self.desk.wine_log_size()

    def calls(self):
        """RESET, or the number of a cursor that was replaced, in order."""
        return [int(found.group(3), 16) if found.group(3) else RESET for found in CALL.finditer(self.text())]

    def handles(self):
        """The cursor handles passed to Windows."""
        return [int(found.group(2), 16) for found in CALL.finditer(self.text()) if found.group(2)]

    def expect(self, calls):
        """Waits for exactly these calls and discards them."""
        wait_until(lambda: len(self.calls()) >= len(calls), f"{len(calls)} cursor calls", state=self.calls)
        assert self.calls() == calls
        self.clear()

    def copies(self):
        return len(COPY.findall(self.text()))

    def destroyed(self):
        return [int(number, 16) for number in DESTROYED.findall(self.thread_text())]

    def thread_text(self):
        """The lines of the program's window thread only."""
        thread = [found.group(1) for found in CALL.finditer(self.desk.wine_log())][-1]
        return "\n".join(line for line in self.text().splitlines() if line.startswith(thread))


@pytest.fixture(name="file_desk", scope="module")
def file_desk_fixture(make_file_desk):
    desk = make_file_desk(debug=RECORD)
    desk.desktop.open()
    return desk


@pytest.fixture(name="start_with")
def start_with_fixture(file_desk):
    """Starts the program and discards the calls of its start. Returns (desk, Cursors)."""
    def start(settings=None, **library):
        if file_desk.program_running():
            file_desk.kill_program()
        cursors = Cursors(file_desk)
        cursors.clear()
        file_desk.start_fresh(settings, **library)
        cursors.expect([RESET])
        return file_desk, cursors
    return start


def choose(desk, name):
    """Chooses a preset and waits until it is applied. The tooltip changes after the cursors."""
    desk.choose(name)
    desk.wait_for_tooltip(model.tooltip_on(*model.PRESETS[name][:2]))


def off(desk):
    desk.press_power()
    desk.wait_for_tooltip(model.TOOLTIP_OFF)


# Start-up

def test_every_start_resets_the_cursors_once(file_desk):
    desk = file_desk
    cursors = Cursors(desk)
    for _ in range(2):
        if desk.program_running():
            desk.kill_program()
        cursors.clear()
        desk.start_fresh()
        cursors.expect([RESET])


def test_the_start_after_a_crash_resets_tinted_cursors(start_with):
    desk, cursors = start_with()
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.kill_program()
    assert cursors.calls() == []
    desk.start()
    cursors.expect([RESET])


# Tinting

@MODES
def test_every_colour_cursor_is_replaced_in_order_and_restored_when_the_filter_turns_off(start_with, legacy):
    desk, cursors = start_with({"UseLegacyGamma": legacy})
    for _ in range(2):
        choose(desk, "EVENING")
        cursors.expect(TINTED)
        off(desk)
        cursors.expect([RESET])


@MODES
def test_the_cursors_are_copied_once_per_run(start_with, legacy):
    desk, cursors = start_with({"UseLegacyGamma": legacy})
    assert cursors.copies() == 0
    choose(desk, "EVENING")
    assert cursors.copies() == len(ALL)
    off(desk)
    for name in ("DAY", "NIGHT"):
        choose(desk, name)
    off(desk)
    assert cursors.copies() == len(ALL)
    assert cursors.calls() == [*TINTED, RESET, *TINTED, *TINTED, RESET]


@MODES
def test_a_slider_drag_tints_again_without_loading_or_copying(start_with, legacy):
    desk, cursors = start_with({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.slide("WARMTH", 20, steps=10)
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(EVENING[0], 20), 0.85))
    calls = cursors.calls()
    assert calls and calls == TINTED * (len(calls) // len(TINTED))
    assert len(calls) // len(TINTED) <= 11
    assert cursors.copies() == 0
    assert "fCursor 1" not in cursors.thread_text()


# DAY is 0.38462 and 1.0; a start reads thousandths.
@MODES
@pytest.mark.parametrize("settings, tinted", [
    pytest.param({"Intensity": 385}, False, id="0.0004 of warmth"),
    pytest.param({"Intensity": 386}, False, id="0.0014 of warmth"),
    pytest.param({"Intensity": 383}, False, id="0.0016 less of warmth"),
    pytest.param({"Intensity": 387}, True, id="0.0024 of warmth"),
    pytest.param({"Intensity": 382}, True, id="0.0026 less of warmth"),
    pytest.param({"Intensity": 385, "Brightness": 999}, False, id="0.001 of brightness"),
    pytest.param({"Intensity": 385, "Brightness": 997}, True, id="0.003 of brightness"),
])
def test_a_change_within_the_dead_band_replaces_no_cursor(start_with, legacy, settings, tinted):
    desk, cursors = start_with({"UseLegacyGamma": legacy, **settings})
    desk.press_power()
    cursors.expect(TINTED)
    choose(desk, "DAY")
    wait_for_day(desk, legacy)
    assert cursors.calls() == (TINTED if tinted else [])
    cursors.clear()
    # Applying the same values again changes nothing either.
    desk.save_now()
    saves = desk.saves()
    desk.choose("DAY")
    desk.wait_for_saves(saves + 1)
    desk.send_message(WM_POWERBROADCAST, RESUMED)
    desk.call_window(WM_TIMER, SETTLE_TIMER)  # What follows some time after a resume.
    assert cursors.calls() == []


def wait_for_day(desk, legacy):
    (desk.wait_for_legacy_colour if legacy else desk.wait_for_colour)(*model.PRESETS["DAY"][:2])


def test_the_dead_band_is_measured_from_the_last_tint(start_with):
    """Two moves of a little less than the dead band, in the same direction, tint once."""
    desk, cursors = start_with({"Intensity": 383})
    desk.press_power()
    cursors.expect(TINTED)
    choose(desk, "DAY")  # 0.0016 from the tint
    assert cursors.calls() == []
    desk.slide("WARMTH", 1)  # 0.0051 more
    desk.wait_for_tooltip(model.tooltip_on(model.dragged(model.PRESETS["DAY"].intensity, 1), 1.0))
    cursors.expect(TINTED)


def test_a_filter_that_changes_no_colour_tints_too(start_with):
    desk, cursors = start_with({"Intensity": 0})
    desk.press_power()
    cursors.expect(TINTED)


def test_a_refused_ramp_leaves_the_screen_unchanged_and_tints_the_cursors(start_with):
    desk, cursors = start_with({"UseLegacyGamma": 1})
    choose(desk, "NIGHT")
    assert any("REJECTED" in line for line in desk.log())
    assert desk.screen_is_plain()
    cursors.expect(TINTED)
    off(desk)
    cursors.expect([RESET])


@MODES
def test_switching_legacy_mode_restores_the_cursors_and_tints_them_again(start_with, legacy):
    desk, cursors = start_with({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(2)
    cursors.expect([RESET, *TINTED])


@MODES
def test_switching_legacy_mode_with_the_filter_off_does_not_change_the_cursors(start_with, legacy):
    desk, cursors = start_with({"UseLegacyGamma": legacy})
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(1)
    assert cursors.calls() == []


# Failures

def test_a_matrix_that_windows_refuses_tints_nothing(start_with):
    desk, cursors = start_with(effect=(5,))
    desk.choose("EVENING")
    desk.press_button(desk.wait_for_message_box())
    assert cursors.calls() == []
    assert cursors.copies() == 0


def test_a_matrix_that_is_refused_later_restores_the_cursors(start_with):
    desk, cursors = start_with(effect=(0, 5, 0))
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.choose("DAY")
    desk.press_button(desk.wait_for_message_box())
    cursors.expect([RESET])
    choose(desk, "NIGHT")
    cursors.expect(TINTED)


def test_the_fallback_to_legacy_mode_tints_with_the_ramp(start_with):
    desk, cursors = start_with(effect=(0, 87))
    choose(desk, "DAY")
    cursors.expect(TINTED)
    choose(desk, "EVENING")
    cursors.expect([RESET])
    desk.choose("DAY")
    desk.press_button(desk.wait_for_message_box())
    cursors.expect(TINTED)


def test_without_the_library_nothing_is_tinted_until_legacy_mode(make_desk):
    desk = make_desk(magnification="missing", debug=RECORD)
    cursors = Cursors(desk)
    desk.start_program()
    desk.press_button(desk.wait_for_message_box())
    desk.wait_for_icon()
    cursors.expect([RESET])
    choose(desk, "EVENING")
    assert cursors.calls() == []
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_saves(2)
    assert cursors.calls()[-len(TINTED):] == TINTED


# Quit and end of session

@MODES
def test_quit_restores_the_cursors_and_destroys_the_copies(start_with, legacy):
    desk, cursors = start_with({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    passed = cursors.handles()
    cursors.expect(TINTED)
    assert desk.quit() == 0
    assert cursors.calls() == LAST_RESET
    text = cursors.thread_text()
    destroyed = [int(number, 16) for number in DESTROYED.findall(text.partition("(87, 0")[2])]
    assert len(set(destroyed)) >= len(ALL)
    # Windows owns the cursors that were passed to it.
    assert not set(passed) & set(cursors.destroyed())


@MODES
def test_quit_with_the_filter_off_restores_no_cursor(start_with, legacy):
    desk, cursors = start_with({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    off(desk)
    cursors.expect([*TINTED, RESET])
    assert desk.quit() == 0
    assert cursors.calls() == []
    assert len(set(cursors.destroyed())) >= len(ALL)


def test_quit_without_a_filter_makes_no_cursor_call(start_with):
    desk, cursors = start_with()
    assert desk.quit() == 0
    assert cursors.calls() == []
    assert cursors.copies() == 0


@MODES
def test_the_end_of_the_session_restores_the_cursors_and_nothing_tints_them_again(start_with, legacy):
    desk, cursors = start_with({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    x, y = desk.unit_to_screen(SLIDER_X["WARMTH"], SLIDER_Y)
    desk.press(x, y)
    desk.move(x, y - 1)
    cursors.expect(TINTED)
    desk.send_message(WM_ENDSESSION, 1, 0)
    cursors.expect(LAST_RESET)
    desk.move(x, y - 50)
    desk.release()
    time.sleep(0.3)  # No step of the drag may follow.
    assert cursors.calls() == []


def test_after_a_cancelled_session_end_the_cursors_stay_tinted(start_with):
    desk, cursors = start_with()
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.send_message(WM_ENDSESSION, 0, 0)
    assert cursors.calls() == []


@MODES
def test_the_real_end_of_the_windows_session_restores_the_cursors(make_desk, legacy):
    desk = make_desk(debug=RECORD).start_fresh({"UseLegacyGamma": legacy})
    cursors = Cursors(desk)
    cursors.expect([RESET])
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.end_session()
    desk.wait_for_exit()
    assert cursors.calls() == LAST_RESET


def test_after_hiding_the_popup_the_cursors_stay_tinted(start_with):
    desk, cursors = start_with()
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.post_message(WM_CLOSE)
    desk.wait_for_popup(False)
    assert cursors.calls() == []
