"""Positions of the popup's controls in design units (pixels at 96 DPI), and colours that identify its panels."""

UNITS = 96

# Centres of the main panel's controls.
POWER = (160, 503)
PRESETS = {"DAY": (70, 447), "EVENING": (160, 447), "NIGHT": (250, 447)}
SLIDER_X = {"WARMTH": 80, "BRIGHTNESS": 240}
SLIDER_Y = 206
TRACK_TOP, TRACK_BOTTOM, TRAVEL = 107, 305, 198
GEAR = (292, 29)
CARD = (160, 400)
CARD_OUTLINE = (160, 384)
STATUS_STRIP = (160, 395)
STRIP_TEXT = (22, 385, 298, 405)  # left, top, right, bottom

# Centres of the settings panel's controls, and the upper edges of its rows.
CLOSE = (276, 30)
SETTINGS_ROWS = {"LAUNCH AT STARTUP": (160, 153), "ALLOW EXTREME DIM": (160, 203), "LEGACY MODE": (160, 253)}
SETTINGS_ROW_TOPS = {"LAUNCH AT STARTUP": 132, "ALLOW EXTREME DIM": 182, "LEGACY MODE": 232}
SUPPORT = (160, 489)

# Positions without text or icons, whose colour identifies what is shown.
SUPPORT_SURFACE = (280, 470)
SUPPORT_NORMAL, SUPPORT_COPIED = (0x16, 0x16, 0x16), (0x12, 0x24, 0x16)
POWER_SURFACE = (60, 490)
HEADER, HEADER_COLOUR = (3, 3), (25, 25, 25)
SETTINGS_ROW_SURFACE, MAIN_PANEL_BACKGROUND, ROW_COLOUR = (200, 136), (200, 500), (22, 22, 22)

MENU_LAUNCH, MENU_LEGACY_MODE, MENU_QUIT = "Launch at Startup", "Legacy Mode (Older Hardware)", "Quit"

# Seconds after the popup is hidden during which a click on the icon does not open it.
REOPEN_DELAY = 0.25
