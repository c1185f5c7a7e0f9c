"""The power button applies the filter to the screen and removes it."""

import pytest

import model
from desk import wait_until

START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)


def test_nothing_is_coloured_before_the_first_click(desk):
    desk.open_popup()
    assert desk.screen_is_plain()
    assert desk.effects() == []


def test_a_click_on_the_power_button_colours_the_whole_screen(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    desk.wait_for_tooltip(model.tooltip_on(*START))


def test_a_second_click_restores_the_screen(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    desk.press_power()
    desk.wait_for_plain_screen()
    desk.wait_for_tooltip(model.TOOLTIP_OFF)
    assert desk.effects()[-1].matrix == model.matrix(model.IDENTITY)


def test_every_cell_of_the_colour_matrix_is_right(desk):
    desk.press_power()
    wait_until(desk.effects, "the colour matrix")
    cells = desk.effects()[0].matrix
    assert cells == pytest.approx(model.matrix(model.factors(*START)), abs=1e-6)
    assert [cell for index, cell in enumerate(cells) if index % 6] == [0.0] * 20
    assert cells[18] == cells[24] == 1.0


def test_one_click_sets_one_matrix(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    desk.wait_for_saves(1)
    assert len(desk.effects()) == 1


@pytest.mark.parametrize("intensity", [0, 100, 250, 385, 500, 585, 692, 693, 800, 900, 970, 1000])
def test_every_warmth_reaches_the_screen(file_desk, intensity):
    desk = file_desk.start_fresh({"Intensity": intensity})
    desk.press_power()
    desk.wait_for_colour(intensity / 1000.0, 1.0)
    desk.wait_for_tooltip(model.tooltip_on(intensity / 1000.0, 1.0))
    assert desk.effects()[-1].diagonal == pytest.approx(model.factors(intensity / 1000.0, 1.0), abs=1e-6)


# Values of the published table of colours: they reveal a mistake in the model's formulas.
@pytest.mark.parametrize("intensity, colour", [
    (0, (1.0, 1.0, 1.0)),
    (1000, (1.0, 0.0, 0.0)),
    (900, (1.0, 0.1631, 0.0048)),
])
def test_published_colours_reach_the_screen(file_desk, intensity, colour):
    desk = file_desk.start_fresh({"Intensity": intensity})
    desk.press_power()
    wait_until(desk.effects, "the colour matrix")
    assert desk.effects()[0].diagonal == pytest.approx(colour, abs=5e-5)


@pytest.mark.parametrize("brightness", [100, 333, 570, 855, 999])
def test_every_brightness_reaches_the_screen(file_desk, brightness):
    desk = file_desk.start_fresh({"Brightness": brightness})
    desk.press_power()
    desk.wait_for_colour(model.DEFAULT_INTENSITY, brightness / 1000.0)
    desk.wait_for_tooltip(model.tooltip_on(model.DEFAULT_INTENSITY, brightness / 1000.0))


def test_a_neutral_filter_is_exactly_the_identity(file_desk):
    desk = file_desk.start_fresh({"Intensity": 0, "Brightness": 1000})
    desk.press_power()
    desk.wait_for_tooltip("Ambrel - ON (6500K, 100%)")
    assert [call.matrix for call in desk.effects()] == [model.matrix(model.IDENTITY)]
    assert desk.screen_is_plain()


def test_the_filter_is_off_after_every_start(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    desk.wait_for_saves(1)
    assert desk.quit() == 0
    desk.magnification.clear_calls()
    desk.start()
    assert desk.effects() == []
    assert desk.screen_is_plain()
    desk.show()
    assert desk.effects() == []
    desk.press_power()
    desk.wait_for_colour(*START)


def test_the_library_is_initialised_once_at_the_start(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    desk.press_power()
    desk.wait_for_plain_screen()
    assert [call.function for call in desk.magnification_calls()].count("MagInitialize") == 1
    assert desk.magnification_calls()[0].function == "MagInitialize"
