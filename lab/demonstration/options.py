"""Scenario: the settings panel, the gamma range fix and the tinted cursors."""

from ambrel_lab import LabError
from ambrel_lab.layout import CLOSE, GEAR, MENU_LEGACY_MODE, PRESETS, SETTINGS_ROWS, STATUS_STRIP

YES, OK = 6, 1
RED = (255, 0, 0)
ICM_KEY = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM"


def show_settings(stage):
    stage.lab.click_unit(*GEAR)
    stage.lab.click_unit(*SETTINGS_ROWS["ALLOW EXTREME DIM"])
    stage.expect("a click on the settings panel allows extreme dim", lambda: stage.setting_is("AllowExtremeDim", "1"))
    stage.save("7-settings")
    stage.lab.click_unit(*CLOSE)


def answer(stage, what, text, button):
    """Waits for the message box that contains the text and presses one of its buttons."""
    def box():
        return next((one for one in stage.lab.message_boxes() if text in one.text), None)
    stage.expect(what, box)
    stage.lab.press_button(box(), button)


def block_colours(stage):
    stage.choose_from_menu(MENU_LEGACY_MODE)
    stage.expect("Legacy Mode is on", lambda: stage.setting_is("UseLegacyGamma", "1"))
    stage.open_popup()
    stage.lab.click_unit(*PRESETS["NIGHT"])
    stage.expect("Windows refuses NIGHT's ramp", lambda: stage.log_has("Legacy ramp REJECTED"))
    # Neither the card nor the button contains that red.
    stage.expect("the banner appears", lambda: stage.strip().contains(RED))


def fix_gamma_range(stage):
    block_colours(stage)
    stage.save("8-blocked")
    stage.lab.click_unit(*STATUS_STRIP)
    answer(stage, "a click on the banner asks for confirmation", "Fix it now?", YES)
    answer(stage, "the elevated process reports success", "The limit has been removed.", OK)
    stage.expect("the program finds the new value in the registry",
                 lambda: stage.log_has("Gamma-range expansion confirmed in registry"))
    stage.open_popup()
    stage.save("9-restart")
    print("  GdiIcmGammaRange is", stage.lab.registry_get(ICM_KEY, "GdiIcmGammaRange"))


def draw_cursors(stage):
    sheet = stage.lab.build_dir / "pictures" / "cursor_sheet.exe"
    picture = stage.pictures / "10-cursors.bmp"
    windows_path = "Z:" + str(picture.resolve()).replace("/", "\\")
    if stage.lab.run_console_program(sheet, [windows_path]) != 0 or not picture.exists():
        raise LabError("Failed: the tinted cursors were not drawn.")
    print("  the tinted cursors were drawn next to the untinted ones")


def show(stage):
    stage.start()
    show_settings(stage)
    fix_gamma_range(stage)
    stage.quit()
    draw_cursors(stage)
