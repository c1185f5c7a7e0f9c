"""Identifies the panel that the popup shows at 96 DPI, opens the settings panel, and takes pictures of the drawn popup."""

from ambrel_lab.layout import HEADER, HEADER_COLOUR, MAIN_PANEL_BACKGROUND, ROW_COLOUR, SETTINGS_ROW_SURFACE

from desk import wait_for_value, wait_until


def panel_of(desk):
    """The panel that the popup shows, identified by its colours; None while it is not drawn."""
    picture = desk.popup_picture()
    if picture.pixel(*HEADER) != HEADER_COLOUR:
        return None
    if picture.pixel(*SETTINGS_ROW_SURFACE) == ROW_COLOUR:
        return "settings"
    return "main" if picture.pixel(*MAIN_PANEL_BACKGROUND) != ROW_COLOUR else None


def wait_for_panel(desk, name):
    wait_for_value(lambda: panel_of(desk), name, "the panel that is shown")


def show_settings(desk):
    """Opens the settings panel unless it is open. A hidden popup keeps its panel."""
    desk.show()
    desk.paint()  # The panel may be that before the last click.
    if wait_until(lambda: panel_of(desk), "a panel") == "main":
        desk.show_settings()
        wait_for_panel(desk, "settings")


def drawn_picture(desk, seen):
    """A picture of the popup once seen(picture) is true."""
    desk.move(5, 5)
    last = [None]

    def settled():
        desk.paint()
        picture = desk.popup_picture()
        same, last[0] = picture == last[0], picture
        return picture if same and seen(picture) else None
    return wait_until(settled, "the drawn popup", pause=0.1)
