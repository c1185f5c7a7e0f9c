"""Dragging WARMTH and BRIGHTNESS: the value follows the pointer's way, the screen follows the value."""

import time

import pytest

import model
from desk import SAVE_DELAY, SLIDER_X, SLIDER_Y, act_within, wait_until

WM_CANCELMODE = 0x1F
TRACK_TOP, TRACK_BOTTOM = 107, 305


def warmth_tip(up, start=model.DEFAULT_INTENSITY, brightness=model.DEFAULT_BRIGHTNESS):
    return model.tip_on(model.dragged(start, up), brightness)


@pytest.fixture(name="lit")
def lit_fixture(desk):
    """The program with its popup open and the filter on."""
    desk.press_power()
    desk.wait_for_colour(model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
    return desk


@pytest.fixture(name="calm")
def calm_fixture(lit):
    """The same with nothing left to save."""
    lit.wait_for_saves(1)
    return lit


@pytest.mark.parametrize("up", [40, -35, 1, -1])
def test_warmth_moves_by_the_way_of_the_pointer(lit, up):
    lit.slide("WARMTH", up)
    lit.wait_for_tip(warmth_tip(up))
    lit.wait_for_colour(model.dragged(model.DEFAULT_INTENSITY, up), 1.0)


@pytest.mark.parametrize("up", [-20, -100])
def test_brightness_moves_by_the_way_of_the_pointer(lit, up):
    lit.slide("BRIGHTNESS", up)
    value = model.dragged(1.0, up, 0.1)
    lit.wait_for_tip(model.tip_on(model.DEFAULT_INTENSITY, value))
    lit.wait_for_colour(model.DEFAULT_INTENSITY, value)


def test_each_step_of_a_drag_is_shown_at_once_and_exactly(lit):
    before = len(lit.effects())
    lit.slide("WARMTH", 25, release=False)
    lit.wait_for_tip(warmth_tip(25))
    # A busy machine merges moves that follow each other closely.
    lit.move_unit(SLIDER_X["WARMTH"], SLIDER_Y - 50)
    lit.wait_for_tip(warmth_tip(50))
    lit.release()
    steps = [call.matrix for call in lit.effects()[before:]]
    possible = [model.matrix(model.factors(model.dragged(model.DEFAULT_INTENSITY, up), 1.0)) for up in range(51)]
    assert len(steps) > 1
    for cells in steps:
        assert any(cells == pytest.approx(wanted, abs=1e-6) for wanted in possible)
    assert steps[-1] == pytest.approx(possible[50], abs=1e-6)


def test_the_sliders_do_not_touch_each_other(lit):
    lit.slide("WARMTH", 60)
    lit.slide("BRIGHTNESS", -60)
    warmth, brightness = model.dragged(0.385, 60), model.dragged(1.0, -60, 0.1)
    lit.wait_for_tip(model.tip_on(warmth, brightness))
    lit.wait_for_colour(warmth, brightness)


def test_it_does_not_matter_where_the_track_is_gripped(lit):
    for down, grip in enumerate([TRACK_TOP, 150, TRACK_BOTTOM - 1], start=1):
        lit.drag_unit(80, grip, 80, grip + 20)
        lit.wait_for_tip(warmth_tip(-20 * down))


def test_a_press_alone_moves_nothing_and_its_release_saves(calm):
    before = len(calm.effects())
    calm.click_unit(80, 130)
    calm.wait_for_saves(2)
    assert len(calm.effects()) == before
    assert calm.tray_tip() == warmth_tip(0)
    assert calm.settings()["Intensity"] == "385"


def test_moving_without_a_press_moves_nothing(lit):
    for y in (300, 200, 110):
        lit.move_unit(80, y)
    lit.press_power()  # A click that certainly comes after the moves.
    lit.wait_for_tip(model.TIP_OFF)
    lit.press_power()
    lit.wait_for_tip(warmth_tip(0))


def test_the_pointer_may_leave_the_popup_while_it_holds_a_slider(lit):
    left, top = lit.unit_to_screen(SLIDER_X["WARMTH"], SLIDER_Y)
    lit.drag(left, top, 200, top - 25)
    lit.wait_for_tip(warmth_tip(25))


@pytest.mark.parametrize("far, value", [(500, 1.0), (-500, 0.0)])
def test_a_drag_far_beyond_the_track_stops_at_the_end(lit, far, value):
    x, y = lit.unit_to_screen(80, SLIDER_Y)
    lit.drag(x, y, x, max(0, min(1079, y - far)))
    lit.wait_for_tip(model.tip_on(value, 1.0))
    lit.wait_for_colour(value, 1.0)


def test_a_value_at_its_end_moves_again_only_where_the_pointer_passed_the_end(lit):
    x, y = lit.unit_to_screen(80, SLIDER_Y)
    to_the_end = 198 - 76  # The default of 0.385 leaves 121.77 units up to the top.
    lit.press(x, y)
    lit.move(x, y - to_the_end - 60)
    lit.wait_for_tip("Ambrel - ON (0K, 100%)")
    lit.move(x, y - to_the_end - 10)
    lit.move(x, y - to_the_end)
    seen = len(lit.effects())
    assert lit.tray_tip() == "Ambrel - ON (0K, 100%)"
    lit.move(x, y - to_the_end + 5)
    lit.wait_for_tip(warmth_tip(to_the_end - 5))
    assert len(lit.effects()) > seen
    lit.release()


def test_brightness_ends_at_a_tenth(calm):
    calm.slide("BRIGHTNESS", -198)
    calm.wait_for_tip("Ambrel - ON (3998K, 10%)")
    calm.wait_for_colour(0.385, 0.1)
    calm.wait_for_saves(2)
    assert calm.settings()["Brightness"] == "100"


def test_with_extreme_dim_brightness_goes_down_to_black(file_desk):
    desk = file_desk.start_fresh({"AllowExtremeDim": 1})
    desk.press_power()
    desk.slide("BRIGHTNESS", -198)
    desk.wait_for_tip("Ambrel - ON (3998K, 0%)")
    assert desk.effects()[-1].diagonal == (0.0, 0.0, 0.0)


def test_with_the_filter_off_a_drag_leaves_the_screen_plain(desk):
    desk.slide("WARMTH", 70)
    desk.wait_for_saves(1)
    assert desk.screen_is_plain()
    assert all(call.matrix == model.matrix(model.IDENTITY) for call in desk.effects())
    assert desk.tray_tip() == model.TIP_OFF
    assert desk.settings()["Intensity"] == str(model.per_mille(model.dragged(0.385, 70)))
    desk.press_power()
    desk.wait_for_colour(model.dragged(0.385, 70), 1.0)


def test_a_drag_is_saved_once_after_its_release_cut_to_thousandths(calm):
    calm.slide("WARMTH", 50, release=False)
    calm.wait_for_tip(warmth_tip(50))
    # A save is due half a second after what arms its timer: none may come while the slider is held.
    time.sleep(0.8)
    assert calm.saves() == 1
    assert calm.settings()["Intensity"] == "385"
    calm.release()
    calm.wait_for_saves(2)
    assert calm.settings()["Intensity"] == "637"  # 0.385 + 50 / 198 = 0.63753
    time.sleep(0.8)  # Likewise: the timer fires once.
    assert calm.saves() == 2


def test_two_drags_in_quick_succession_are_saved_together(file_desk):
    def drag_both():
        file_desk.start_fresh().show()
        return lambda: (file_desk.slide("WARMTH", 20, steps=1), file_desk.slide("BRIGHTNESS", -30, steps=1))
    act_within(SAVE_DELAY, drag_both)
    file_desk.wait_for_saves(1)
    time.sleep(0.8)  # No second save may follow.
    assert file_desk.saves() == 1
    assert file_desk.settings()["Intensity"] == str(model.per_mille(model.dragged(0.385, 20)))
    assert file_desk.settings()["Brightness"] == str(model.per_mille(model.dragged(1.0, -30, 0.1)))


def test_a_lost_capture_ends_the_drag_and_saves_nothing(calm):
    calm.slide("WARMTH", 40, release=False)
    calm.wait_for_tip(warmth_tip(40))
    calm.send_message(WM_CANCELMODE)
    calm.move_unit(80, 250)
    calm.release()
    # The save would come half a second after the release.
    time.sleep(0.8)
    assert calm.tray_tip() == warmth_tip(40)
    assert calm.saves() == 1
    assert calm.settings()["Intensity"] == "385"


def test_a_drag_that_starts_beside_the_track_does_nothing(lit):
    for x, y in [(53, 206), (106, 206), (80, 106), (80, 305), (213, 206), (266, 206)]:
        before = len(lit.effects())
        lit.drag_unit(x, y, x, y + 40)
        lit.press_power()  # Two clicks that certainly come after the drag.
        lit.press_power()
        wait_until(lambda count=before: len(lit.effects()) >= count + 2, "the two clicks")
        lit.wait_for_tip(warmth_tip(0))
        assert len(lit.effects()) == before + 2, f"the drag from {x},{y} did something"


def test_the_track_reaches_from_edge_to_edge(lit):
    down = 0
    for x, y in [(54, 206), (105, 206), (80, 107), (80, 304)]:
        lit.drag_unit(x, y, x, y + 12)
        down += 12
        lit.wait_for_tip(warmth_tip(-down))


def test_the_right_button_drags_nothing(lit):
    x, y = lit.unit_to_screen(80, SLIDER_Y)
    before = len(lit.effects())
    lit.input.drag(x, y, x, y - 40, button=3)
    lit.press_power()
    lit.wait_for_tip(model.TIP_OFF)
    assert len(lit.effects()) == before + 1


def test_a_dragged_value_survives_a_restart(calm):
    calm.slide("WARMTH", 40)
    calm.wait_for_saves(2)
    calm.restart()
    assert calm.loaded().startswith("intensity=0.587 brightness=1.000")
    calm.press_power()
    calm.wait_for_colour(0.587, 1.0)


def test_the_panel_is_drawn_anew_while_the_slider_is_held(lit):
    before = lit.popup_picture()
    lit.slide("WARMTH", 60, release=False)
    lit.wait_for_tip(warmth_tip(60))
    # The centre bar of the thumb: two units below the end of the travelled way.
    travelled = int(model.dragged(0.385, 60) * 198)
    wait_until(lambda: lit.popup_picture().pixel(80, 305 - travelled) == (255, 0, 0), "the thumb at its new place")
    assert before.pixel(80, 305 - travelled) != (255, 0, 0)
    lit.release()
