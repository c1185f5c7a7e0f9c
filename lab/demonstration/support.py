"""Scenario: the support report is copied with its button and pasted."""

from ambrel_lab.layout import CLOSE, GEAR, SUPPORT, SUPPORT_COPIED, SUPPORT_NORMAL, SUPPORT_SURFACE
from ambrel_lab.waiting import TIMEOUT

HEAD = "TO: support@ambrel.example\r\nSUBJECT: Ambrel Windows "
END = "\r\n=== END DIAGNOSTICS ===\r\n"
COPIED_DURATION = 5  # seconds
SHOWN_LINES = 32


def button_is(stage, colour):
    return stage.lab.popup_picture().pixel(*SUPPORT_SURFACE) == colour


def copy_report(stage):
    """Presses the button in the settings panel, which must be open. Returns the text on the clipboard."""
    stage.expect("the settings panel shows the support button", lambda: button_is(stage, SUPPORT_NORMAL))
    stage.lab.click_unit(*SUPPORT)
    stage.expect("after a click it shows COPIED", lambda: button_is(stage, SUPPORT_COPIED))
    text = stage.lab.clipboard_text() or ""
    stage.expect("the complete report is on the clipboard", lambda: text.startswith(HEAD) and text.endswith(END))
    stage.expect("its length is logged", lambda: stage.log_has(
        f"Support bundle copied to clipboard ({len(text.encode('utf-16-le')) // 2} chars)"))
    return text


def show(stage):
    stage.start()
    stage.lab.click_unit(*GEAR)
    text = copy_report(stage)
    stage.save("22-copied")
    path = stage.pictures / "23-support-bundle.txt"
    path.write_bytes(text.encode("utf-8"))
    stage.expect("after five seconds the button looks as before", lambda: button_is(stage, SUPPORT_NORMAL),
                 COPIED_DURATION + TIMEOUT)
    stage.lab.click_unit(*CLOSE)
    stage.quit()
    stage.expect("the report stays on the clipboard after the program has ended",
                 lambda: stage.lab.clipboard_text() == text)
    lines = text.split("\r\n")
    print(f"\nThe first {SHOWN_LINES} of the report's {len(lines) - 1} lines; the complete report is in {path}:")
    for line in lines[:SHOWN_LINES]:
        print(f"  {line}".rstrip())
