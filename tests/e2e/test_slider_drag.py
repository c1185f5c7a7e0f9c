"""Dragging WARMTH and BRIGHTNESS: the value follows the pointer, the screen follows the value."""

import time

import pytest

import model
from ambrel_lab.layout import TRACK_BOTTOM, TRACK_TOP, TRAVEL
from desk import SLIDER_X, SLIDER_Y, act_before_the_save, wait_until
from panels import wait_for_panel

WM_CANCELMODE = 0x1F


def warmth_tooltip(up, start=model.DEFAULT_INTENSITY, brightness=model.DEFAULT_BRIGHTNESS):
    return model.tooltip_on(model.dragged(start, up), brightness)


@pytest.fixture(name="filtered")
def filtered_fixture(desk):
    """The program with its popup open and the filter on."""
    desk.press_power()
    desk.wait_for_colour(model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
    return desk


@pytest.fixture(name="saved")
def saved_fixture(filtered):
    """Like `filtered`, with the save done."""
    filtered.wait_for_saves(1)
    return filtered


@pytest.mark.parametrize("up", [40, -35, 1, -1])
def test_warmth_changes_by_the_distance_of_the_pointer(filtered, up):
    filtered.slide("WARMTH", up)
    filtered.wait_for_tooltip(warmth_tooltip(up))
    filtered.wait_for_colour(model.dragged(model.DEFAULT_INTENSITY, up), 1.0)


@pytest.mark.parametrize("up", [-20, -100])
def test_brightness_changes_by_the_distance_of_the_pointer(filtered, up):
    filtered.slide("BRIGHTNESS", up)
    value = model.dragged(1.0, up, 0.1)
    filtered.wait_for_tooltip(model.tooltip_on(model.DEFAULT_INTENSITY, value))
    filtered.wait_for_colour(model.DEFAULT_INTENSITY, value)


def test_each_step_of_a_drag_is_shown_immediately_and_exactly(filtered):
    before = len(filtered.effects())
    filtered.slide("WARMTH", 25, release=False)
    filtered.wait_for_tooltip(warmth_tooltip(25))
    # A busy machine merges moves that follow each other closely.
    filtered.move_unit(SLIDER_X["WARMTH"], SLIDER_Y - 50)
    filtered.wait_for_tooltip(warmth_tooltip(50))
    filtered.release()
    steps = [call.matrix for call in filtered.effects()[before:]]
    possible = [model.matrix(model.factors(model.dragged(model.DEFAULT_INTENSITY, up), 1.0)) for up in range(51)]
    assert len(steps) > 1
    for cells in steps:
        assert any(cells == pytest.approx(wanted, abs=1e-6) for wanted in possible)
    assert steps[-1] == pytest.approx(possible[50], abs=1e-6)


def test_the_sliders_are_independent(filtered):
    filtered.slide("WARMTH", 60)
    filtered.slide("BRIGHTNESS", -60)
    warmth, brightness = model.dragged(0.385, 60), model.dragged(1.0, -60, 0.1)
    filtered.wait_for_tooltip(model.tooltip_on(warmth, brightness))
    filtered.wait_for_colour(warmth, brightness)


def test_a_drag_can_start_anywhere_on_the_track(filtered):
    for down, grip in enumerate([TRACK_TOP, 150, TRACK_BOTTOM - 1], start=1):
        filtered.drag_unit(80, grip, 80, grip + 20)
        filtered.wait_for_tooltip(warmth_tooltip(-20 * down))


def test_a_press_without_a_move_changes_nothing_and_its_release_saves(saved):
    before = len(saved.effects())
    saved.click_unit(80, 130)
    saved.wait_for_saves(2)
    assert len(saved.effects()) == before
    assert saved.tray_tooltip() == warmth_tooltip(0)
    assert saved.settings()["Intensity"] == "385"


def test_a_move_without_a_press_changes_nothing(filtered):
    for y in (300, 200, 110):
        filtered.move_unit(80, y)
    filtered.press_power()  # A click that is certainly handled after the moves.
    filtered.wait_for_tooltip(model.TOOLTIP_OFF)
    filtered.press_power()
    filtered.wait_for_tooltip(warmth_tooltip(0))


def test_a_drag_continues_outside_the_popup(filtered):
    left, top = filtered.unit_to_screen(SLIDER_X["WARMTH"], SLIDER_Y)
    filtered.drag(left, top, 200, top - 25)
    filtered.wait_for_tooltip(warmth_tooltip(25))


@pytest.mark.parametrize("far, value", [(500, 1.0), (-500, 0.0)])
def test_a_drag_far_beyond_the_track_stops_at_the_end(filtered, far, value):
    x, y = filtered.unit_to_screen(80, SLIDER_Y)
    filtered.drag(x, y, x, max(0, min(1079, y - far)))
    filtered.wait_for_tooltip(model.tooltip_on(value, 1.0))
    filtered.wait_for_colour(value, 1.0)


def test_a_value_at_its_end_changes_only_after_the_pointer_returns_to_the_end(filtered):
    x, y = filtered.unit_to_screen(80, SLIDER_Y)
    to_the_end = TRAVEL - 76  # The default of 0.385 leaves 121.77 units up to the top.
    filtered.press(x, y)
    filtered.move(x, y - to_the_end - 60)
    filtered.wait_for_tooltip("Ambrel - ON (0K, 100%)")
    filtered.move(x, y - to_the_end - 10)
    filtered.move(x, y - to_the_end)
    applied = len(filtered.effects())
    assert filtered.tray_tooltip() == "Ambrel - ON (0K, 100%)"
    filtered.move(x, y - to_the_end + 5)
    filtered.wait_for_tooltip(warmth_tooltip(to_the_end - 5))
    assert len(filtered.effects()) > applied
    filtered.release()


def test_brightness_ends_at_10_percent(saved):
    saved.slide("BRIGHTNESS", -TRAVEL)
    saved.wait_for_tooltip("Ambrel - ON (3998K, 10%)")
    saved.wait_for_colour(0.385, 0.1)
    saved.wait_for_saves(2)
    assert saved.settings()["Brightness"] == "100"


def test_with_extreme_dim_brightness_reaches_black(file_desk):
    desk = file_desk.start_fresh({"AllowExtremeDim": 1})
    desk.press_power()
    desk.slide("BRIGHTNESS", -TRAVEL)
    desk.wait_for_tooltip("Ambrel - ON (3998K, 0%)")
    assert desk.effects()[-1].diagonal == (0.0, 0.0, 0.0)


def test_with_the_filter_off_a_drag_leaves_the_screen_plain(desk):
    desk.slide("WARMTH", 70)
    desk.wait_for_saves(1)
    assert desk.screen_is_plain()
    assert all(call.matrix == model.matrix(model.IDENTITY) for call in desk.effects())
    assert desk.tray_tooltip() == model.TOOLTIP_OFF
    assert desk.settings()["Intensity"] == str(model.per_mille(model.dragged(0.385, 70)))
    desk.press_power()
    desk.wait_for_colour(model.dragged(0.385, 70), 1.0)


def test_a_drag_is_saved_once_after_its_release_truncated_to_thousandths(saved):
    saved.slide("WARMTH", 50, release=False)
    saved.wait_for_tooltip(warmth_tooltip(50))
    # A save follows half a second after its timer starts: none may happen during the drag.
    time.sleep(0.8)
    assert saved.saves() == 1
    assert saved.settings()["Intensity"] == "385"
    saved.release()
    saved.wait_for_saves(2)
    assert saved.settings()["Intensity"] == "637"  # 0.385 + 50 / 198 = 0.63753
    time.sleep(0.8)  # The timer fires only once.
    assert saved.saves() == 2


def test_two_drags_in_quick_succession_are_saved_together(file_desk):
    def drag_both():
        file_desk.start_fresh().show()
        return drags

    def drags():
        file_desk.slide("WARMTH", 20, steps=1)
        file_desk.slide("BRIGHTNESS", -30, steps=1)
        file_desk.show_settings()  # A click that is certainly handled after the second release.
        wait_for_panel(file_desk, "settings")
    act_before_the_save(file_desk, drag_both)
    file_desk.wait_for_saves(1)
    time.sleep(0.8)  # No second save may follow.
    assert file_desk.saves() == 1
    assert file_desk.settings()["Intensity"] == str(model.per_mille(model.dragged(0.385, 20)))
    assert file_desk.settings()["Brightness"] == str(model.per_mille(model.dragged(1.0, -30, 0.1)))


def test_a_lost_capture_cancels_the_drag_and_saves_nothing(saved):
    saved.slide("WARMTH", 40, release=False)
    saved.wait_for_tooltip(warmth_tooltip(40))
    saved.send_message(WM_CANCELMODE)
    saved.move_unit(80, 250)
    saved.release()
    # The save would follow half a second after the release.
    time.sleep(0.8)
    assert saved.tray_tooltip() == warmth_tooltip(40)
    assert saved.saves() == 1
    assert saved.settings()["Intensity"] == "385"


def test_a_drag_that_starts_outside_the_track_does_nothing(filtered):
    for x, y in [(53, 206), (106, 206), (80, 106), (80, 305), (213, 206), (266, 206)]:
        before = len(filtered.effects())
        filtered.drag_unit(x, y, x, y + 40)
        filtered.press_power()  # Two clicks that are certainly handled after the drag.
        filtered.press_power()
        wait_until(lambda count=before: len(filtered.effects()) >= count + 2, "the two clicks")
        filtered.wait_for_tooltip(warmth_tooltip(0))
        assert len(filtered.effects()) == before + 2, f"the drag from {x},{y} did something"


def test_the_track_reaches_from_edge_to_edge(filtered):
    down = 0
    for x, y in [(54, 206), (105, 206), (80, 107), (80, 304)]:
        filtered.drag_unit(x, y, x, y + 12)
        down += 12
        filtered.wait_for_tooltip(warmth_tooltip(-down))


def test_the_right_button_drags_nothing(filtered):
    x, y = filtered.unit_to_screen(80, SLIDER_Y)
    before = len(filtered.effects())
    filtered.input.drag(x, y, x, y - 40, button=3)
    filtered.press_power()
    filtered.wait_for_tooltip(model.TOOLTIP_OFF)
    assert len(filtered.effects()) == before + 1


def test_a_dragged_value_survives_a_restart(saved):
    saved.slide("WARMTH", 40)
    saved.wait_for_saves(2)
    saved.restart()
    assert saved.loaded().startswith("intensity=0.587 brightness=1.000")
    saved.press_power()
    saved.wait_for_colour(0.587, 1.0)


def test_the_panel_is_redrawn_during_a_drag(filtered):
    before = filtered.popup_picture()
    filtered.slide("WARMTH", 60, release=False)
    filtered.wait_for_tooltip(warmth_tooltip(60))
    # The centre bar of the thumb.
    travelled = int(model.dragged(0.385, 60) * TRAVEL)
    wait_until(lambda: filtered.popup_picture().pixel(80, TRACK_BOTTOM - travelled) == (255, 0, 0),
               "the thumb at its new position")
    assert before.pixel(80, TRACK_BOTTOM - travelled) != (255, 0, 0)
    filtered.release()
