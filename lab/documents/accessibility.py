"""Generates the walk of docs/accessibility.md: both panels as a client in another process reads them."""

from ambrel_lab.layout import CLOSE, GEAR, PRESETS, SUPPORT_NORMAL
from ambrel_lab.paths import ROOT
from demonstration.stage import Stage
from demonstration.support import button_is
from documents.text_block import text_block, with_text_block

PAGE = ROOT / "docs" / "accessibility.md"
COLUMNS = ("id", "role", "name", "value", "state", "default action")


def cells(control):
    return (str(control.id), control.role, control.name, control.value, ", ".join(sorted(control.state)), control.action)


def panel_text(title, lab):
    """The object and its children as a table."""
    rows = [COLUMNS, *(cells(control) for control in [lab.accessible_popup(), *lab.accessible_controls()])]
    # A long text takes the room of the columns after it, which are empty for texts.
    widths = [max(len(row[column]) for row in rows if len(row[2]) < 30) for column in range(len(COLUMNS))]
    lines = ["  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in rows]
    return "\n".join([title, "", *lines, ""])


def walk(lab):
    """The text for both panels in the lab's current state, with the main panel shown."""
    stage = Stage(lab, None)
    main = panel_text("MAIN PANEL", lab)
    lab.click_unit(*GEAR)
    stage.wait("the gear opens the settings", lambda: button_is(stage, SUPPORT_NORMAL))
    settings = panel_text("SETTINGS PANEL", lab)
    lab.click_unit(*CLOSE)
    stage.wait("CLOSE shows the main panel", lambda: lab.accessible_controls()[0].name == "AMBREL")
    return f"{main}\n{settings}"


def choose_evening(stage):
    stage.lab.click_unit(*PRESETS["EVENING"])
    stage.wait("EVENING turns the filter on",
               lambda: "checked" in stage.lab.accessible_control("KIVO").state)


def page_with(text):
    page = PAGE.read_text(encoding="utf-8")
    text_block(page, PAGE.relative_to(ROOT))
    return with_text_block(page, text)


def generate(lab):
    # Without a display the panel shows a hint instead of the card, as in the guide's pictures.
    lab.hardware.monitors([])
    stage = Stage(lab, None)
    stage.start()
    choose_evening(stage)
    text = walk(lab)
    stage.expect("a client in another process reads both panels", lambda: text)
    stage.quit()
    return {PAGE.name: page_with(text).encode()}
