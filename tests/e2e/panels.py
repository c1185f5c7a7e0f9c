"""Which panel the popup shows at 96 DPI, and opening the settings panel from wherever it is."""

from desk import wait_until

HEADER, ROW = (25, 25, 25), (22, 22, 22)


def panel_of(desk):
    """The panel that the popup shows, by what only one of them has; None while it is not drawn."""
    picture = desk.popup_picture()
    if picture.pixel(3, 3) != HEADER:
        return None
    return "settings" if picture.pixel(200, 136) == ROW else "main" if picture.pixel(200, 500) != ROW else None


def wait_for_panel(desk, name):
    wait_until(lambda: panel_of(desk) == name, 5.0, f"the {name} panel")


def show_settings(desk):
    """Opens the settings panel unless it is open already: a hidden popup keeps its panel."""
    desk.show()
    if wait_until(lambda: panel_of(desk), 5.0, "a panel") == "main":
        desk.show_settings()
        wait_for_panel(desk, "settings")
