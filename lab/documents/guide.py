"""Generates the pictures of docs/guide.md: the panels as drawn, without the filter's colour."""

from PIL import Image, ImageDraw, ImageFont

from ambrel_lab.hardware import Monitor
from ambrel_lab.layout import CARD, CLOSE, GEAR, POWER_SURFACE, PRESETS, SUPPORT_NORMAL, TRACK_BOTTOM, TRAVEL
from ambrel_lab.picture import Picture
from ambrel_lab.paths import DEJAVU
from demonstration.backlight import AMBER, GREEN, accent_is, displays_changed
from demonstration.filter_scenario import WARMTH_THUMB
from demonstration.options import block_colours
from demonstration.stage import Stage
from demonstration.support import button_is

# The travel of WARMTH's thumb and the distance of each move of the drag, in design units.
WARMTH_X = WARMTH_THUMB[0]
STEP = 2
STEPS = TRAVEL // STEP
BEYOND = 20  # drags past the end of the track, so that rounding cannot stop short of it
NEUTRAL = 6500  # kelvin

SCALE_WIDTH, SCALE_HEIGHT, NUMBERS_HEIGHT = 960, 64, 30
LABELS = (6500, 4000, 2700, 2000, 1000, 0)
MARK_LENGTH, NUMBERS_BASE, NUMBERS_MARGIN, NUMBERS_COLOUR = 6, 24, 4, (200, 200, 200)
FONT = ImageFont.truetype(str(DEJAVU / "DejaVuSans.ttf"), 18)


def tooltip_is(stage, text):
    return stage.lab.tray_tooltip() == f"Ambrel - {text}"


def button_is_red(stage):
    red, green, blue = stage.lab.popup_picture().pixel(*POWER_SURFACE)
    return red > 0x80 and green == blue == 0


def show_popup(stage):
    stage.lab.click_unit(*PRESETS["EVENING"])
    stage.expect("EVENING turns the filter on", lambda: tooltip_is(stage, "ON (2700K, 85%)"))
    stage.expect("the big button is red", lambda: button_is_red(stage))
    return stage.lab.popup_picture()


def show_settings(stage):
    stage.lab.click_unit(*GEAR)
    stage.expect("the gear opens the settings", lambda: button_is(stage, SUPPORT_NORMAL))
    picture = stage.lab.popup_picture()
    stage.lab.click_unit(*CLOSE)
    stage.expect("CLOSE shows the main panel", lambda: button_is_red(stage))
    return picture


def kelvin_at(step):
    return NEUTRAL * (1 - step / STEPS)


def drag_warmth_through(stage):
    """Returns the factors for red, green and blue that Windows receives at every step from 6500 K to 0 K."""
    lab = stage.lab
    lab.click_unit(*PRESETS["DAY"])
    stage.expect("DAY shows 4000 K at 100%", lambda: tooltip_is(stage, "ON (4000K, 100%)"))
    lab.drag_unit(*WARMTH_THUMB, WARMTH_X, TRACK_BOTTOM + BEYOND)
    stage.expect("a drag of WARMTH down to the end is neutral", lambda: tooltip_is(stage, "ON (6500K, 100%)"))
    start = TRACK_BOTTOM - 1  # the lowest position within the slider
    lab.press_unit(WARMTH_X, start)
    factors = []
    for step in range(STEPS + 1):
        lab.move_unit(WARMTH_X, start - step * STEP)
        tooltip = f"ON ({round(kelvin_at(step))}K, 100%)"
        stage.wait(f"WARMTH dragged up shows {tooltip}", lambda: tooltip_is(stage, tooltip))
        matrices = [call for call in lab.magnification_calls() if call.matrix]
        factors.append(matrices[-1].diagonal if matrices else None)
    lab.release()
    stage.expect(f"Windows receives {STEPS + 1} different colours while WARMTH is dragged up",
              lambda: len(set(factors)) == len(factors))
    stage.expect("the drag up to the end is saved", lambda: stage.setting_is("Intensity", "1000"))
    return factors


def draw_numbers(image):
    """Marks and kelvin numbers below the scale."""
    draw = ImageDraw.Draw(image)
    for kelvin in LABELS:
        x = round((1 - kelvin / NEUTRAL) * (SCALE_WIDTH - 1))
        width = draw.textlength(str(kelvin), FONT)
        left = min(max(x - width / 2, NUMBERS_MARGIN), SCALE_WIDTH - NUMBERS_MARGIN - width)
        draw.line((x, SCALE_HEIGHT, x, SCALE_HEIGHT + MARK_LENGTH - 1), NUMBERS_COLOUR)
        draw.text((left, SCALE_HEIGHT + NUMBERS_BASE), str(kelvin), NUMBERS_COLOUR, FONT, anchor="ls")


def draw_scale(factors):
    """A scale of filtered white: each column has the colour of the nearest step."""
    white = [tuple(round(255 * factor) for factor in factors_of_step) for factors_of_step in factors]
    image = Image.new("RGB", (SCALE_WIDTH, SCALE_HEIGHT + NUMBERS_HEIGHT))
    draw = ImageDraw.Draw(image)
    for column in range(SCALE_WIDTH):
        draw.line((column, 0, column, SCALE_HEIGHT - 1), white[round((column + 0.5) / SCALE_WIDTH * STEPS)])
    draw_numbers(image)
    return Picture(image)


def show_locked_card(stage):
    stage.lab.hardware.plug("desk")
    displays_changed(stage)
    stage.expect("the card appears when a monitor is connected", lambda: accent_is(stage, AMBER))
    stage.lab.click_unit(*CARD)
    stage.expect("the card says DISPLAY LOCKED AT 100%", lambda: accent_is(stage, GREEN))
    return stage.strip()


def show_banner(stage):
    block_colours(stage)
    return stage.strip()


def generate(lab):
    # Without a display the panel shows a hint instead of the card.
    lab.hardware.monitors([Monitor("desk", 40, present=False)])
    stage = Stage(lab, None)
    stage.start()
    pictures = {"popup": show_popup(stage), "settings": show_settings(stage),
                "warmth": draw_scale(drag_warmth_through(stage)), "card-locked": show_locked_card(stage),
                "banner": show_banner(stage)}
    stage.quit()
    return {f"pictures/{name}.png": picture.png() for name, picture in pictures.items()}
