"""The settings panel, the gamma range fix and the tinted cursors."""

from ambrel_lab import LabError
from ambrel_lab.layout import CLOSE, GEAR, MENU_LEGACY_MODE, PRESETS, SETTINGS_ROWS, STATUS_STRIP

YES, OK = 6, 1
ICM_KEY = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM"


def show_settings(stage):
    stage.lab.click_unit(*GEAR)
    stage.lab.click_unit(*SETTINGS_ROWS["ALLOW EXTREME DIM"])
    stage.see("a row of the settings panel allows extreme dim", lambda: stage.setting_is("AllowExtremeDim", "1"))
    stage.save("7-settings")
    stage.lab.click_unit(*CLOSE)


def answer(stage, what, text, button):
    """Waits for the message box that holds the text, and presses a button of it."""
    def box():
        return next((one for one in stage.lab.message_boxes() if text in one.text), None)
    stage.see(what, box)
    stage.lab.press_button(box(), button)


def fix_gamma_range(stage):
    stage.choose_from_menu(MENU_LEGACY_MODE)
    stage.see("Legacy Mode is on", lambda: stage.setting_is("UseLegacyGamma", "1"))
    stage.open_popup()
    stage.lab.click_unit(*PRESETS["NIGHT"])
    stage.see("Windows refuses NIGHT's ramp", lambda: stage.log_has("Legacy ramp REJECTED"))
    stage.save("8-blocked")
    stage.lab.click_unit(*STATUS_STRIP)
    answer(stage, "a click on the banner asks", "Fix it now?", YES)
    answer(stage, "the elevated run says that it is done", "The limit has been removed.", OK)
    stage.see("the registry shows it", lambda: stage.log_has("Gamma-range expansion confirmed in registry"))
    stage.open_popup()
    stage.save("9-restart")
    print("  GdiIcmGammaRange is", stage.lab.registry_get(ICM_KEY, "GdiIcmGammaRange"))


def draw_cursors(stage):
    sheet = stage.lab.build_dir / "pictures" / "cursor_sheet.exe"
    picture = stage.pictures / "10-cursors.bmp"
    if stage.lab.run_unit(sheet, ["Z:" + str(picture.resolve()).replace("/", "\\")]) != 0 or not picture.exists():
        raise LabError("This did not happen: the tinted cursors were drawn.")
    print("  the tinted cursors were drawn beside the untinted ones")


def show(stage):
    stage.start()
    show_settings(stage)
    fix_gamma_range(stage)
    stage.quit()
    draw_cursors(stage)
