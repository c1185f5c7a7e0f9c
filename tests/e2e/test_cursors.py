"""The system cursors take the filter's colour: what the program asks of Windows, as Wine records it.

Wine shows no tinted cursor and takes none over; how the tinted ones look is tested where they are made.
"""

import re
import time

import pytest

import model
from desk import SLIDER_X, SLIDER_Y, wait_until

RECORD = "-all,+cursor,+system"
# Every system cursor, in order; Wine's 32641 is monochrome and keeps its look.
ALL = [32512, 32513, 32514, 32515, 32516, 32640, 32641, 32642, 32643, 32644, 32645, 32646, 32648, 32649, 32650, 32651]
TINTED = [number for number in ALL if number != 32641]
RESET = "reset"
WM_CLOSE, WM_ENDSESSION, WM_POWERBROADCAST, RESUMED = 0x10, 0x16, 0x218, 18
CALL = re.compile(r"^([0-9a-f]{4}):.*:(?:NtUserSystemParametersInfo \(87, 0, \(nil\), 0\)"
                  r"|SetSystemCursor \(([0-9A-F]+),([0-9a-f]+)\))", re.M)
COPY = re.compile(r":CopyImage hnd=[0-9A-F]+, type=2,")
DESTROYED = re.compile(r":NtUserDestroyCursor 0x([0-9a-f]+)")
EVENING = model.PRESETS["EVENING"][:2]
MENU_LEGACY = "Legacy Mode (Older Hardware)"
MODES = pytest.mark.parametrize("legacy", [0, 1], ids=["magnification", "legacy"])


class Cursors:
    """The program's calls about cursors, from where one looked last."""

    def __init__(self, desk):
        self.desk, self.seen = desk, 0

    def text(self):
        return self.desk.wine_log()[self.seen:]

    def look(self):
        """Forgets what was recorded so far."""
        self.seen = len(self.desk.wine_log())

    def calls(self):
        """RESET, or the number of a cursor that was replaced, in order."""
        return [int(found.group(3), 16) if found.group(3) else RESET for found in CALL.finditer(self.text())]

    def handles(self):
        """What was handed over to Windows."""
        return [int(found.group(2), 16) for found in CALL.finditer(self.text()) if found.group(2)]

    def expect(self, calls):
        """Waits for exactly these calls and goes on behind them."""
        wait_until(lambda: len(self.calls()) >= len(calls), f"{len(calls)} cursor calls, not {self.calls()}")
        assert self.calls() == calls
        self.look()

    def copies(self):
        return len(COPY.findall(self.text()))

    def destroyed(self):
        return [int(number, 16) for number in DESTROYED.findall(self.thread_text())]

    def thread_text(self):
        """The lines of the program's window thread alone."""
        thread = [found.group(1) for found in CALL.finditer(self.desk.wine_log())][-1]
        return "\n".join(line for line in self.text().splitlines() if line.startswith(thread))


@pytest.fixture(name="file_desk", scope="module")
def file_desk_fixture(make_file_desk):
    desk = make_file_desk(debug=RECORD)
    desk.desktop.open()
    return desk


@pytest.fixture(name="begin")
def begin_fixture(file_desk):
    """Starts the program and looks past its start; (desk, Cursors)."""
    def start(settings=None, **library):
        if file_desk.program_running():
            file_desk.kill_program()
        cursors = Cursors(file_desk)
        cursors.look()
        file_desk.start_fresh(settings, **library)
        cursors.expect([RESET])
        return file_desk, cursors
    return start


def choose(desk, name):
    """A preset, worked off to its end: the tip is set behind the cursors."""
    desk.choose(name)
    desk.wait_for_tip(model.tip_on(*model.PRESETS[name][:2]))


def off(desk):
    desk.press_power()
    desk.wait_for_tip(model.TIP_OFF)


# Start-up

def test_every_start_puts_the_cursors_back_once(file_desk):
    desk = file_desk
    cursors = Cursors(desk)
    for _ in range(2):
        if desk.program_running():
            desk.kill_program()
        cursors.look()
        desk.start_fresh()
        cursors.expect([RESET])


def test_after_a_crash_with_tinted_cursors_the_next_start_puts_them_back(begin):
    desk, cursors = begin()
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.kill_program()
    assert cursors.calls() == []
    desk.start()
    cursors.expect([RESET])


# Tinting

@MODES
def test_every_colour_cursor_is_replaced_in_order_and_given_back_when_the_filter_goes_off(begin, legacy):
    desk, cursors = begin({"UseLegacyGamma": legacy})
    for _ in range(2):
        choose(desk, "EVENING")
        cursors.expect(TINTED)
        off(desk)
        cursors.expect([RESET])


@MODES
def test_the_copies_are_made_once_a_run(begin, legacy):
    desk, cursors = begin({"UseLegacyGamma": legacy})
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
def test_a_drag_of_a_slider_tints_anew_and_neither_loads_nor_copies(begin, legacy):
    desk, cursors = begin({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.slide("WARMTH", 20, steps=10)
    desk.wait_for_tip(model.tip_on(model.dragged(EVENING[0], 20), 0.85))
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
def test_within_the_dead_band_nothing_is_replaced(begin, legacy, settings, tinted):
    desk, cursors = begin({"UseLegacyGamma": legacy, **settings})
    desk.press_power()
    cursors.expect(TINTED)
    choose(desk, "DAY")
    wait_for_day(desk, legacy)
    assert cursors.calls() == (TINTED if tinted else [])
    cursors.look()
    # Neither when the same is applied once more.
    choose(desk, "DAY")
    desk.send_message(WM_POWERBROADCAST, RESUMED)
    time.sleep(0.5)  # For what the end of a sleep brings.
    assert cursors.calls() == []


def wait_for_day(desk, legacy):
    (desk.wait_for_legacy_colour if legacy else desk.wait_for_colour)(*model.PRESETS["DAY"][:2])


def test_what_is_tinted_once_counts_and_not_the_last_value(begin):
    """Two moves of a little less than the dead band, in the same direction, tint once."""
    desk, cursors = begin({"Intensity": 383})
    desk.press_power()
    cursors.expect(TINTED)
    choose(desk, "DAY")  # 0.0016 from the tint
    assert cursors.calls() == []
    desk.slide("WARMTH", 1)  # 0.0051 more
    desk.wait_for_tip(model.tip_on(model.dragged(model.PRESETS["DAY"].intensity, 1), 1.0))
    cursors.expect(TINTED)


def test_a_filter_that_changes_no_colour_tints_too(begin):
    desk, cursors = begin({"Intensity": 0})
    desk.press_power()
    cursors.expect(TINTED)


def test_a_refused_ramp_leaves_the_screen_and_tints_the_cursors(begin):
    desk, cursors = begin({"UseLegacyGamma": 1})
    choose(desk, "NIGHT")
    assert any("REJECTED" in line for line in desk.log())
    assert desk.screen_is_plain()
    cursors.expect(TINTED)
    off(desk)
    cursors.expect([RESET])


@MODES
def test_legacy_mode_gives_the_cursors_back_and_tints_them_anew(begin, legacy):
    desk, cursors = begin({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.menu(MENU_LEGACY)
    desk.wait_for_saves(2)
    cursors.expect([RESET, *TINTED])


@MODES
def test_legacy_mode_with_the_filter_off_leaves_the_cursors_alone(begin, legacy):
    desk, cursors = begin({"UseLegacyGamma": legacy})
    desk.menu(MENU_LEGACY)
    desk.wait_for_saves(1)
    assert cursors.calls() == []


# Failures

def test_a_matrix_that_windows_refuses_tints_nothing(begin):
    desk, cursors = begin(effect=(5,))
    desk.choose("EVENING")
    desk.press_button(desk.wait_for_message_box())
    assert cursors.calls() == []
    assert cursors.copies() == 0


def test_a_matrix_that_is_refused_later_gives_the_cursors_back(begin):
    desk, cursors = begin(effect=(0, 5, 0))
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.choose("DAY")
    desk.press_button(desk.wait_for_message_box())
    cursors.expect([RESET])
    choose(desk, "NIGHT")
    cursors.expect(TINTED)


def test_the_fallback_to_legacy_mode_tints_with_the_ramp(begin):
    desk, cursors = begin(effect=(0, 87))
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
    desk.menu(MENU_LEGACY)
    desk.wait_for_saves(2)
    assert cursors.calls()[-len(TINTED):] == TINTED


# The ways out

@MODES
def test_quit_gives_the_cursors_back_and_destroys_the_copies(begin, legacy):
    desk, cursors = begin({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    handed_over = cursors.handles()
    cursors.expect(TINTED)
    assert desk.quit() == 0
    assert cursors.calls() == [RESET]
    text = cursors.thread_text()
    destroyed = [int(number, 16) for number in DESTROYED.findall(text.partition("(87, 0")[2])]
    assert len(set(destroyed)) >= len(ALL)
    # What Windows took over is Windows' own.
    assert not set(handed_over) & set(cursors.destroyed())


@MODES
def test_quit_with_the_filter_off_has_nothing_to_give_back(begin, legacy):
    desk, cursors = begin({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    off(desk)
    cursors.expect([*TINTED, RESET])
    assert desk.quit() == 0
    assert cursors.calls() == []
    assert len(set(cursors.destroyed())) >= len(ALL)


def test_quit_of_a_run_without_a_filter_asks_for_nothing(begin):
    desk, cursors = begin()
    assert desk.quit() == 0
    assert cursors.calls() == []
    assert cursors.copies() == 0


@MODES
def test_the_end_of_the_session_gives_the_cursors_back_and_nothing_tints_them_again(begin, legacy):
    desk, cursors = begin({"UseLegacyGamma": legacy})
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    x, y = desk.unit_to_screen(SLIDER_X["WARMTH"], SLIDER_Y)
    desk.press(x, y)
    desk.move(x, y - 1)
    cursors.expect(TINTED)
    desk.send_message(WM_ENDSESSION, 1, 0)
    cursors.expect([RESET])
    desk.move(x, y - 50)
    desk.release()
    time.sleep(0.3)  # For a step of the drag that must not come.
    assert cursors.calls() == []


def test_a_session_end_that_was_called_off_leaves_them_tinted(begin):
    desk, cursors = begin()
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.send_message(WM_ENDSESSION, 0, 0)
    assert cursors.calls() == []


@MODES
def test_the_real_end_of_the_windows_session_gives_the_cursors_back(make_desk, legacy):
    desk = make_desk(debug=RECORD).start_fresh({"UseLegacyGamma": legacy})
    cursors = Cursors(desk)
    cursors.expect([RESET])
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.end_session()
    desk.wait_for_exit()
    assert cursors.calls() == [RESET]


def test_hiding_the_popup_leaves_them_tinted(begin):
    desk, cursors = begin()
    choose(desk, "EVENING")
    cursors.expect(TINTED)
    desk.post_message(WM_CLOSE)
    desk.wait_for_popup(False)
    assert cursors.calls() == []
