"""Scenario: the filter from the tray click to the coloured screen, through both pipelines, until Quit."""

from ambrel_lab.layout import MENU_LEGACY_MODE, POWER, PRESETS

WARMTH_THUMB = (80, 229)
# White under the preset EVENING: a black body of 2700 K relative to 6500 K, at 85%.
EVENING_AT_FULL_WHITE = [round(65535 * 0.85 * channel) for channel in (1.0000, 0.8185, 0.1865)]
IDENTITY_AT_FULL_WHITE = [65535] * 3


def drag_warmth(stage):
    lab = stage.lab
    lab.click_unit(*POWER)
    stage.expect("the red button turns the filter on", lambda: (lab.tray_tooltip() or "").startswith("Ambrel - ON"))
    x, y = WARMTH_THUMB
    lab.drag_unit(x, y, x, y - 60)
    stage.expect("dragging WARMTH upwards makes the screen warmer",
                 lambda: lab.tray_tooltip() == "Ambrel - ON (2028K, 100%)")
    stage.expect("the drag is saved", lambda: stage.setting_is("Intensity", "688"))
    stage.save("2-dragged")


def choose_evening(stage):
    stage.lab.click_unit(*PRESETS["EVENING"])
    stage.expect("EVENING shows 2700 K at 85%", lambda: stage.lab.tray_tooltip() == "Ambrel - ON (2700K, 85%)")
    stage.expect("the screen has EVENING's colour", lambda: stage.full_white_is(EVENING_AT_FULL_WHITE))
    stage.expect("EVENING is saved", lambda: stage.setting_is("Brightness", "850"))
    stage.save("3-evening")


def press_power(stage):
    stage.lab.click_unit(*POWER)
    stage.expect("the red button turns the filter off", lambda: stage.lab.tray_tooltip() == "Ambrel - OFF")
    stage.expect("the screen is restored", lambda: stage.full_white_is(IDENTITY_AT_FULL_WHITE))
    stage.lab.click_unit(*POWER)
    stage.expect("the red button turns the filter on again", lambda: stage.full_white_is(EVENING_AT_FULL_WHITE))


def switch_legacy_mode(stage, on):
    effects = len(stage.lab.magnification_calls())
    stage.choose_from_menu(MENU_LEGACY_MODE)
    word, value = ("on", "1") if on else ("off", "0")
    stage.expect(f"the tray menu switches Legacy Mode {word}", lambda: stage.setting_is("UseLegacyGamma", value))
    stage.expect("the colour stays on the screen", lambda: stage.full_white_is(EVENING_AT_FULL_WHITE))
    stage.expect("the Magnification API is called", lambda: len(stage.lab.magnification_calls()) > effects)
    stage.save("4-legacy-mode" if on else "5-magnification")


def report(stage):
    print("\nThe matrices that Windows received (diagonal):")
    for call in stage.lab.magnification_calls():
        if call.matrix:
            print("  " + "  ".join(f"{cell:.6f}" for cell in call.diagonal[:3]))
    print("\nThe levels 64, 128 and 255 of red, green and blue as displayed:")
    for name, seen in stage.seen:
        print(f"  {name:16}" + "   ".join(" ".join(f"{channel[level]:5}" for channel in seen)
                                           for level in (64, 128, 255)))
    print("\nsettings.ini:\n" + stage.lab.settings_text())
    print("events.log:\n" + stage.lab.events_text())


def show(stage):
    stage.start()
    stage.save("1-off")
    drag_warmth(stage)
    choose_evening(stage)
    press_power(stage)
    switch_legacy_mode(stage, on=True)
    switch_legacy_mode(stage, on=False)
    stage.quit()
    stage.expect("the screen is restored after Quit", lambda: stage.full_white_is(IDENTITY_AT_FULL_WHITE))
    stage.seen.append(("6-after-quit", stage.lab.visible_levels()))
    report(stage)
