"""DAY, EVENING and NIGHT set warmth and brightness together and turn the filter on."""

import time

import pytest

import model
from desk import PRESET_POSITIONS, act_before_the_save, wait_until


@pytest.mark.parametrize("name", model.PRESETS)
def test_a_preset_turns_the_filter_on_with_its_values(desk, name):
    preset = model.PRESETS[name]
    desk.choose(name)
    desk.wait_for_colour(preset.intensity, preset.brightness)
    assert [call.matrix for call in desk.effects()] == [
        pytest.approx(model.matrix(model.factors(preset.intensity, preset.brightness)), abs=1e-6)]


@pytest.mark.parametrize("name, tooltip", [
    ("DAY", "Ambrel - ON (4000K, 100%)"),
    ("EVENING", "Ambrel - ON (2700K, 85%)"),
    ("NIGHT", "Ambrel - ON (0K, 70%)"),
])
def test_the_tooltip_shows_the_preset(desk, name, tooltip):
    desk.choose(name)
    desk.wait_for_tooltip(tooltip)


@pytest.mark.parametrize("name, intensity, brightness", [
    ("DAY", "384", "1000"), ("EVENING", "584", "850"), ("NIGHT", "1000", "700"),
])
def test_a_preset_is_saved_half_a_second_later(desk, name, intensity, brightness):
    desk.choose(name)
    desk.wait_for_saves(1)
    assert (desk.settings()["Intensity"], desk.settings()["Brightness"]) == (intensity, brightness)


# From the published table of colours, to four decimals.
@pytest.mark.parametrize("name, colour", [
    ("DAY", (1.0, 0.9390, 0.5153)), ("EVENING", (1.0, 0.8185, 0.1865)), ("NIGHT", (1.0, 0.0, 0.0)),
])
def test_the_published_colours_of_the_presets(desk, name, colour):
    desk.choose(name)
    wait_until(desk.effects, "the colour matrix")
    brightness = model.PRESETS[name].brightness
    assert desk.effects()[0].diagonal == pytest.approx([channel * brightness for channel in colour], abs=5e-5)


def test_night_leaves_only_red(desk):
    desk.choose("NIGHT")
    wait_until(desk.effects, "the colour matrix")
    red, green, blue = desk.effects()[0].diagonal
    assert red == pytest.approx(0.7, abs=1e-6)
    assert (green, blue) == (0.0, 0.0)


def test_presets_follow_each_other_and_leave_the_filter_on(desk):
    for name in ("NIGHT", "EVENING", "DAY", "NIGHT"):
        preset = model.PRESETS[name]
        desk.choose(name)
        desk.wait_for_colour(preset.intensity, preset.brightness)


def test_three_presets_in_a_row_are_saved_once(file_desk):
    desk = file_desk

    def show():
        desk.start_fresh().show()
        positions = [desk.unit_to_screen(*PRESET_POSITIONS[name]) for name in ("DAY", "NIGHT", "EVENING")]
        return lambda: click_all(positions)

    def click_all(positions):
        for position in positions:
            desk.input.click(*position)
        desk.wait_for_tooltip("Ambrel - ON (2700K, 85%)")
    act_before_the_save(desk, show)
    desk.wait_for_saves(1)
    time.sleep(0.8)  # No second save may follow.
    assert desk.saves() == 1
    assert desk.settings()["Intensity"] == "584"


def test_a_preset_is_kept_when_the_filter_is_turned_off_and_on(desk):
    desk.choose("EVENING")
    desk.wait_for_colour(model.PRESETS["EVENING"].intensity, 0.85)
    desk.press_power()
    desk.wait_for_plain_screen()
    desk.press_power()
    desk.wait_for_colour(model.PRESETS["EVENING"].intensity, 0.85)


def test_the_brightness_of_a_preset_can_be_changed_afterwards(desk):
    desk.choose("EVENING")
    desk.slide("BRIGHTNESS", -50)
    desk.wait_for_colour(model.PRESETS["EVENING"].intensity, model.dragged(0.85, -50, 0.1))


OUTSIDE_THE_CONTROLS = [
    (115, 447), (205, 447),  # between two buttons
    (29, 447), (290, 447),   # left and right of them
    (70, 428), (70, 465),    # above and below
    (160, 478), (160, 527), (23, 503), (296, 503),  # around the power button
    (160, 400),              # the hint
    (5, 5), (160, 200),
]


def test_a_click_between_the_controls_does_nothing(desk):
    for number, position in enumerate(OUTSIDE_THE_CONTROLS):
        desk.show()
        desk.click_unit(*position)
        desk.press_power()  # A click that is certainly handled after it.
        on = number % 2 == 0
        default = model.tooltip_on(model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
        desk.wait_for_tooltip(default if on else model.TOOLTIP_OFF)
        assert len(desk.effects()) == number + 1, f"the click at {position} did something"


@pytest.mark.parametrize("name, x, y", [
    ("DAY", 30, 429), ("DAY", 109, 464), ("EVENING", 120, 429), ("EVENING", 199, 464),
    ("NIGHT", 210, 429), ("NIGHT", 289, 464),
])
def test_a_preset_reacts_in_its_corners(desk, name, x, y):
    desk.show()
    desk.click_unit(x, y)
    desk.wait_for_tooltip(model.tooltip_on(model.PRESETS[name].intensity, model.PRESETS[name].brightness))
