"""Failures of the colour matrix: two consecutive errors 87 lead to Legacy Mode, other errors to one message."""

import time

import pytest

import model
from desk import MENU_LEGACY_MODE, SLIDER_X, SLIDER_Y, wait_until

WM_APP = 0x8000
START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
TOLERATED = "MagSetFullscreenColorEffect error 87 (1/2 before fallback)"
FALLEN_BACK = "Auto-fallback to Legacy Mode after 2 consecutive error 87s"
NOTICE = ("Ambrel detected that your graphics hardware doesn't support the modern color pipeline, so it switched to "
          "Legacy Mode automatically. Everything is working \u2014 the warmth and brightness sliders behave the same "
          "way.\n\nYou can change this any time in Settings (Legacy Mode).")


def failure(error):
    return f"MagSetFullscreenColorEffect failed.\nError code: {error}"


def press_presets(desk, *names):
    """Presses presets and waits after each until its colour matrix is set."""
    for name in names:
        before = len(desk.effects())
        desk.choose(name)
        wait_until(lambda count=before: len(desk.effects()) > count, f"the colour matrix of {name}")


def assert_no_message_box(desk):
    time.sleep(0.3)  # A message box opens only after the click that causes it has been handled.
    assert desk.message_boxes() == []


def fall_back(desk):
    press_presets(desk, "DAY", "EVENING")
    desk.wait_for_log(FALLEN_BACK)
    return desk


def test_a_single_error_87_is_tolerated(file_desk):
    desk = file_desk.start_fresh(effect=(87, 0))
    press_presets(desk, "DAY")
    desk.wait_for_log(TOLERATED)
    assert desk.screen_is_plain()
    press_presets(desk, "EVENING")
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])
    desk.wait_for_saves(1)
    assert desk.settings()["UseLegacyGamma"] == "0"
    assert_no_message_box(desk)


def test_errors_87_that_are_not_consecutive_are_not_counted_together(file_desk):
    desk = file_desk.start_fresh(effect=(87, 0, 87, 0, 87, 0))
    press_presets(desk, "DAY", "EVENING", "DAY", "EVENING", "DAY", "EVENING")
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])
    assert desk.log().count(TOLERATED) == 3
    assert FALLEN_BACK not in desk.log()


def test_another_error_between_two_errors_87_resets_the_count(file_desk):
    desk = file_desk.start_fresh(effect=(87, 5, 87, 0))
    press_presets(desk, "DAY", "EVENING")
    desk.press_button(desk.wait_for_message_box())
    press_presets(desk, "DAY", "EVENING")
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])
    assert desk.log().count(TOLERATED) == 2
    assert FALLEN_BACK not in desk.log()


def test_two_consecutive_errors_87_switch_to_legacy_mode_and_show_a_notice(file_desk):
    desk = fall_back(file_desk.start_fresh(effect=(87,)))
    desk.wait_for_legacy_colour(*model.PRESETS["EVENING"][:2])
    box = desk.wait_for_message_box()
    assert (box.title, box.text) == ("Ambrel", NOTICE)
    desk.press_button(box)
    assert desk.settings()["UseLegacyGamma"] == "1"
    assert desk.settings()["LegacyModeAutoSet"] == "1"
    assert desk.settings()["Intensity"] == "584"
    assert desk.log().count(TOLERATED) == 1
    desk.wait_for_tooltip("Ambrel - ON (2700K, 85%)")


def test_a_slider_drag_continues_after_a_fallback(file_desk):
    desk = file_desk.start_fresh(effect=(0, 87))
    desk.press_power()
    desk.wait_for_colour(*START)
    desk.slide("WARMTH", 20, release=False)
    wait_until(lambda: len(desk.effects()) >= 2, "the first refused matrix")
    # Windows may have merged all moves so far into one.
    desk.move_unit(SLIDER_X["WARMTH"], SLIDER_Y - 40)
    desk.press_button(desk.wait_for_message_box())
    desk.release()
    assert desk.log().count(FALLEN_BACK) == 1
    assert [call.matrix == model.matrix(model.IDENTITY) for call in desk.effects()] == [False, False, False, True]
    desk.choose("DAY")
    desk.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])


def fall_back_after_one_success(desk, *answers):
    desk = desk.start_fresh(effect=(0, *answers))
    press_presets(desk, "NIGHT")
    desk.wait_for_colour(*model.PRESETS["NIGHT"][:2])
    return fall_back(desk)


def test_the_fallback_removes_the_last_matrix_from_the_screen(file_desk):
    desk = fall_back_after_one_success(file_desk, 87, 87, 0)
    desk.wait_for_legacy_colour(*model.PRESETS["EVENING"][:2])
    assert desk.effects()[-1].matrix == model.matrix(model.IDENTITY)
    assert "MagUninitialize" not in [call.function for call in desk.magnification_calls()]
    desk.press_button(desk.wait_for_message_box())
    desk.press_power()
    desk.wait_for_plain_screen()


def test_a_library_that_also_refuses_the_identity_is_initialised_again(file_desk):
    desk = fall_back_after_one_success(file_desk, 87)
    desk.wait_for_legacy_colour(*model.PRESETS["EVENING"][:2])
    assert [call.function for call in desk.magnification_calls()][-3:] == [
        "MagSetFullscreenColorEffect", "MagUninitialize", "MagInitialize"]
    desk.press_button(desk.wait_for_message_box())
    desk.press_power()
    desk.wait_for_plain_screen()
    desk.magnification_script()
    desk.press_power()
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])


def test_the_notice_does_not_open_a_second_time_while_it_is_open(file_desk):
    desk = fall_back(file_desk.start_fresh(effect=(87,)))
    box = desk.wait_for_message_box()
    desk.post_message(WM_APP + 104)
    desk.wait_until_posted_messages_are_handled()
    assert len(desk.message_boxes()) == 1
    desk.press_button(box)
    wait_until(lambda: not desk.message_boxes(), "the message box to close")
    desk.post_message(WM_APP + 104)
    desk.press_button(desk.wait_for_message_box())


def test_the_failure_box_does_not_open_a_second_time_while_it_is_open(file_desk):
    desk = file_desk.start_fresh()
    desk.post_message(WM_APP + 106, 5)
    box = desk.wait_for_message_box()
    desk.post_message(WM_APP + 106, 6)
    desk.wait_until_posted_messages_are_handled()
    assert [each.text for each in desk.message_boxes()] == [failure(5)]
    desk.press_button(box)


def test_the_popup_stays_open_under_the_notice(file_desk):
    desk = fall_back(file_desk.start_fresh(effect=(87,)))
    box = desk.wait_for_message_box()
    time.sleep(0.4)  # Longer than the interval of the popup's foreground check.
    assert desk.popup_visible()
    desk.press_button(box)
    assert desk.popup_visible()


def test_after_the_fallback_the_library_is_not_called(file_desk):
    desk = fall_back(file_desk.start_fresh(effect=(87,)))
    desk.press_button(desk.wait_for_message_box())
    calls = len(desk.magnification_calls())
    desk.choose("DAY")
    desk.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])
    desk.press_power()
    desk.wait_for_plain_screen()
    assert len(desk.magnification_calls()) == calls


def test_the_fallback_persists_to_the_next_start(file_desk):
    desk = fall_back(file_desk.start_fresh(effect=(87,)))
    desk.press_button(desk.wait_for_message_box())
    desk.magnification.clear_calls()
    desk.save_now()
    desk.restart()
    desk.choose("DAY")
    desk.wait_for_legacy_colour(*model.PRESETS["DAY"][:2])
    assert desk.magnification_calls() == []
    assert_no_message_box(desk)


def test_a_user_who_has_seen_the_notice_does_not_see_it_again(file_desk):
    desk = file_desk.start_fresh({"LegacyModeAutoSet": 1, "UseLegacyGamma": 0}, effect=(87,))
    assert [call.function for call in desk.magnification_calls()] == ["MagInitialize"]
    fall_back(desk)
    desk.wait_for_legacy_colour(*model.PRESETS["EVENING"][:2])
    assert_no_message_box(desk)
    assert desk.settings()["UseLegacyGamma"] == "1"


def test_after_the_user_leaves_legacy_mode_there_is_no_fallback_in_this_run(file_desk):
    desk = fall_back(file_desk.start_fresh(effect=(87,)))
    desk.press_button(desk.wait_for_message_box())
    initialised = [call.function for call in desk.magnification_calls()].count("MagInitialize")
    desk.menu(MENU_LEGACY_MODE)
    box = desk.wait_for_message_box()
    assert box.text == failure(87)
    desk.press_button(box)
    desk.wait_for_setting("UseLegacyGamma", "0")
    desk.wait_for_setting("LegacyModeAutoSet", "0")
    press_presets(desk, "DAY", "EVENING", "NIGHT")
    assert_no_message_box(desk)
    assert desk.log().count(FALLEN_BACK) == 1
    assert [call.function for call in desk.magnification_calls()].count("MagInitialize") == initialised


def test_after_the_user_leaves_legacy_mode_the_next_run_falls_back_with_a_notice(file_desk):
    desk = fall_back(file_desk.start_fresh(effect=(87,)))
    desk.press_button(desk.wait_for_message_box())
    desk.menu(MENU_LEGACY_MODE)
    desk.press_button(desk.wait_for_message_box())
    desk.wait_for_setting("UseLegacyGamma", "0")
    desk.save_now()
    desk.restart()
    fall_back(desk)
    assert desk.wait_for_message_box().text == NOTICE


@pytest.mark.parametrize("error", [5, 1, 50, 1400])
def test_any_other_error_is_reported_once_per_run(file_desk, error):
    desk = file_desk.start_fresh(effect=(error,))
    press_presets(desk, "DAY")
    box = desk.wait_for_message_box()
    assert (box.title, box.text) == ("Ambrel", failure(error))
    desk.press_button(box)
    press_presets(desk, "EVENING", "NIGHT", "DAY")
    assert_no_message_box(desk)
    assert desk.screen_is_plain()
    assert not [line for line in desk.log() if "fallback" in line]


def test_after_another_error_a_later_apply_may_succeed(file_desk):
    desk = file_desk.start_fresh(effect=(5, 0))
    press_presets(desk, "DAY")
    desk.press_button(desk.wait_for_message_box())
    press_presets(desk, "EVENING")
    desk.wait_for_colour(*model.PRESETS["EVENING"][:2])


def test_an_error_code_above_two_thousand_million_is_shown_as_a_signed_number(file_desk):
    desk = file_desk.start_fresh(effect=(0x80070005,))
    press_presets(desk, "DAY")
    assert desk.wait_for_message_box().text == failure(0x80070005 - 2**32)
