"""Every way out gives the screen back: Quit, the end of the Windows session; and what a crash leaves behind."""

import time

import pytest

import model
from ambrel_lab.popup import centre
from desk import ATTEMPTS, MENU_QUIT, SLIDER_X, SLIDER_Y, wait_for_value

WM_QUERYENDSESSION, WM_ENDSESSION, WM_DISPLAYCHANGE = 0x11, 0x16, 0x7E
ENDSESSION_CLOSEAPP = 1
EVENING = model.PRESETS["EVENING"][:2]
MODES = {"magnification": {}, "legacy": {"UseLegacyGamma": 1}}


@pytest.fixture(name="lit", params=MODES)
def lit_fixture(request, file_desk):
    """The program with EVENING on the screen, in each of the two ways to put it there."""
    desk = file_desk.start_fresh(MODES[request.param])
    desk.choose("EVENING")
    wait_for_evening(desk, request.param)
    return desk


def wait_for_evening(desk, mode):
    if mode == "legacy":
        desk.wait_for_legacy_colour(*EVENING)
    else:
        desk.wait_for_colour(*EVENING)


def test_quit_gives_the_screen_back_and_takes_the_icon_away(lit):
    assert lit.quit() == 0
    assert lit.screen_is_plain()
    lit.wait_for_icon(shown=False)


def test_quit_with_the_filter_off_is_as_clean(desk):
    assert desk.quit() == 0
    assert desk.screen_is_plain()
    desk.wait_for_icon(shown=False)


def test_quit_clears_the_matrix_and_lets_the_library_go(desk):
    desk.choose("EVENING")
    desk.wait_for_colour(*EVENING)
    desk.quit()
    last = desk.magnification_calls()[-2:]
    assert [call.function for call in last] == ["MagSetFullscreenColorEffect", "MagUninitialize"]
    assert last[0].matrix == model.matrix(model.IDENTITY)
    assert last[1].result == 1


def test_quit_in_legacy_mode_never_touches_the_library(file_desk):
    desk = file_desk.start_fresh(MODES["legacy"])
    desk.choose("EVENING")
    desk.wait_for_legacy_colour(*EVENING)
    desk.quit()
    assert desk.magnification_calls() == []


def test_quit_after_leaving_legacy_mode_gives_the_screen_back(file_desk):
    desk = file_desk.start_fresh(MODES["legacy"])
    desk.choose("EVENING")
    desk.wait_for_legacy_colour(*EVENING)
    desk.menu("Legacy Mode (Older Hardware)")
    desk.wait_for_colour(*EVENING)
    assert desk.quit() == 0
    assert desk.screen_is_plain()


def quit_at_once(desk, up, menu):
    """Moves WARMTH, lets it go and quits within half a second; False when that took longer. `menu` is the tray menu as
    it was before: it opens at the same place again."""
    desk.slide("WARMTH", up, release=False)
    x, y = desk.tray_icon_position()
    saves = desk.saves()
    desk.release()
    desk.click(x, y, 3)
    wait_for_value(lambda: (window := desk.menu_window()) and window[3:7], menu.window[3:7], "the menu's place")
    desk.click(*centre(menu.rows[MENU_QUIT]))
    desk.wait_for_exit()
    return desk.saves() == saves


def test_quit_within_half_a_second_of_a_release_loses_that_change(desk):
    menu = desk.open_menu()
    desk.close_menu()
    for _ in range(ATTEMPTS):
        saves = desk.saves()
        desk.choose("DAY")
        desk.wait_for_saves(saves + 1)
        if quit_at_once(desk, 40, menu):
            break
        desk.start()  # A busy machine was too slow for half a second: that run tells nothing.
    else:
        pytest.fail("the machine was never quick enough")
    assert desk.settings()["Intensity"] == "384"
    desk.start()
    assert desk.loaded().startswith("intensity=0.384 ")


def test_quit_later_keeps_the_change(desk):
    desk.slide("WARMTH", 40)
    desk.wait_for_saves(1)
    desk.quit()
    assert desk.settings()["Intensity"] == "587"


def test_quit_with_a_message_box_open_ends_the_program(file_desk):
    desk = file_desk.start_fresh(effect=(5,))
    desk.choose("DAY")
    desk.wait_for_message_box()
    assert desk.quit() == 0
    assert desk.screen_is_plain()


@pytest.mark.parametrize("mode", MODES)
def test_the_end_of_the_windows_session_gives_the_screen_back(make_desk, mode):
    desk = make_desk().start_fresh(MODES[mode])
    desk.choose("EVENING")
    wait_for_evening(desk, mode)
    desk.end_session()
    desk.wait_for_exit()
    assert desk.screen_is_plain()


@pytest.mark.parametrize("mode", MODES)
def test_the_session_ends_while_a_slider_is_held(make_desk, mode):
    desk = make_desk().start_fresh(MODES[mode])
    desk.choose("EVENING")
    wait_for_evening(desk, mode)
    desk.wait_for_saves(1)
    desk.slide("WARMTH", 40, release=False)
    desk.wait_for_tip(model.tip_on(model.dragged(EVENING[0], 40), 0.85))
    desk.end_session()
    desk.wait_for_exit()
    desk.release()
    assert desk.screen_is_plain()
    # What was not let go of was not chosen.
    assert desk.settings()["Intensity"] == "584"


def test_an_installer_that_needs_the_file_ends_the_program(lit):
    lit.send_message(WM_QUERYENDSESSION, 0, ENDSESSION_CLOSEAPP)
    lit.send_message(WM_ENDSESSION, 1, ENDSESSION_CLOSEAPP)
    assert lit.wait_for_exit() == 0
    assert lit.screen_is_plain()
    lit.wait_for_icon(shown=False)


def test_the_program_never_objects_to_the_end_of_the_session(lit):
    assert lit.send_message(WM_QUERYENDSESSION, 0, 0) == 1
    assert not lit.screen_is_plain()


def test_a_session_end_that_was_called_off_changes_nothing(lit):
    applied = lit.visible_levels()
    lit.send_message(WM_QUERYENDSESSION, 0, 0)
    lit.send_message(WM_ENDSESSION, 0, 0)
    assert lit.visible_levels() == applied
    lit.choose("DAY")
    lit.wait_for_tip("Ambrel - ON (4000K, 100%)")


def test_nothing_colours_the_screen_again_between_the_end_and_the_last_moment(lit):
    x, y = lit.unit_to_screen(SLIDER_X["WARMTH"], SLIDER_Y)
    lit.press(x, y)
    lit.move(x, y - 20)
    lit.wait_for_tip(model.tip_on(model.dragged(EVENING[0], 20), 0.85))
    lit.post_message(WM_DISPLAYCHANGE, 32, 0x04380780)
    lit.send_message(WM_ENDSESSION, 1, 0)
    assert lit.ramp_is_plain()  # A matrix ends with the process, a ramp does not.
    applied = len(lit.effects())
    lit.move(x, y - 50)
    time.sleep(0.6)  # Longer than the wait after a display change.
    assert all(call.matrix == model.matrix(model.IDENTITY) for call in lit.effects()[applied:])
    assert lit.screen_is_plain()
    lit.release()


def test_a_crash_loses_no_setting_and_the_next_start_is_clean(lit):
    lit.wait_for_saves(1)
    lit.kill_program()
    lit.start()
    assert lit.loaded().startswith("intensity=0.584 brightness=0.850 ")
    lit.choose("DAY")
    lit.wait_for_tip("Ambrel - ON (4000K, 100%)")
    lit.press_power()
    lit.wait_for_plain_screen()


def test_after_a_crash_there_is_one_icon_again(lit):
    lit.kill_program()
    lit.start()
    wait_for_value(lambda: len(lit.tray_icons()), 1, "the number of icons")


def test_quit_leaves_no_process_behind(desk):
    desk.press_power()
    desk.quit()
    assert desk.program_pids() == []
