"""Messages of a hostile program of the same user: any without pointers, except those that end the program."""

import os

import pytest

import model
from ambrel_lab.desktop import ToolError
from ambrel_lab.hardware import Monitor
from desk import wait_until

# ./soak.sh messages sends 100,000.
MESSAGES = int(os.environ.get("AMBREL_RANDOM_MESSAGES", "3000"))
SEED = int(os.environ.get("SEED", "1"))
CHUNK = 500
NO = 7  # the button's id
OWN_BRIGHTNESS = 40
WM_CLOSE, WM_QUIT, WM_CANCELMODE = 0x10, 0x12, 0x1F
WM_NCLBUTTONDOWN, WM_NCRBUTTONDOWN = 0xA1, 0xA4
WM_KEYDOWN, WM_COMMAND, WM_SYSCOMMAND = 0x100, 0x111, 0x112
WM_APP = 0x8000
SHOW_MAGNIFICATION_ERROR = WM_APP + 106
SC_MINIMIZE, VK_ESCAPE = 0xF020, 0x1B
HTCAPTION, HTSYSMENU, HTCLOSE = 2, 3, 20
SC_SIZE, SC_MOVE, SC_VSCROLL, SC_HSCROLL, SC_MOUSEMENU, SC_KEYMENU = 0xF000, 0xF010, 0xF070, 0xF080, 0xF090, 0xF100
FRAME_INPUT = [
    *[(WM_NCRBUTTONDOWN, part) for part in (HTCAPTION, HTSYSMENU)],
    *[(WM_NCLBUTTONDOWN, part) for part in range(HTCLOSE + 2)],
    *[(WM_SYSCOMMAND, command) for command in (SC_SIZE, SC_SIZE + 8, SC_MOVE, SC_MOVE + HTCAPTION, SC_VSCROLL + 7,
                                               SC_HSCROLL + 6, SC_MOUSEMENU + HTSYSMENU, SC_KEYMENU)],
]
# The range in which Windows registers messages by name. Of these the program handles only TaskbarCreated.
NAMED_MESSAGES = range(0xC000, 0xC100)
NEW_TASKBAR = "TaskbarCreated received - (re)adding tray icon"
EVENING, NIGHT = model.PRESETS["EVENING"][:2], model.PRESETS["NIGHT"][:2]


def close_boxes(desk):
    """Closes menus and boxes, whose loops can be nested in each other, as a user would with Escape and No."""
    def closed():
        desk.post_message(WM_CANCELMODE)
        desk.post_message(WM_KEYDOWN, VK_ESCAPE)
        for box in desk.message_boxes():
            try:
                desk.post_message(WM_COMMAND, NO if NO in box.buttons else next(iter(box.buttons)), target=box.handle)
            except ToolError:
                pass  # An earlier message has closed it by now.
        return not desk.message_boxes() and not desk.menu_window()
    wait_until(closed, "neither boxes nor menus", state=desk.windows, pause=0.1)


def handle_posted_messages(desk):
    """Returns after the program has handled every message that was posted before this call."""
    times = desk.log().count(NEW_TASKBAR)
    for number in NAMED_MESSAGES:
        desk.post_message(number)

    def handled():
        close_boxes(desk)
        return desk.log().count(NEW_TASKBAR) > times
    wait_until(handled, "the posted messages to be handled", state=desk.log)
    close_boxes(desk)


def show_main_panel(desk):
    """Hides the popup and shows it again with the main panel."""
    desk.call_window(WM_CLOSE)
    desk.wait_for_popup(False)
    desk.show()
    if desk.accessible_controls()[0].name == "SETTINGS":
        desk.accessible_press(desk.accessible_control("CLOSE"))
        wait_until(lambda: desk.accessible_controls()[0].name != "SETTINGS", "the main panel")


def test_random_messages_leave_a_program_that_works_and_restores_everything(desk):
    desk.hardware.monitors([Monitor("desk", OWN_BRIGHTNESS)])
    process = desk.program_pids()
    totals = {"sent": 0, "posted": 0, "unanswered": 0}
    for chunk, done in enumerate(range(0, MESSAGES, CHUNK)):
        for name, count in desk.random_messages(SEED * 100000 + chunk, min(CHUNK, MESSAGES - done)).items():
            totals[name] += count
        close_boxes(desk)
        assert desk.program_pids() == process, f"the program ended in chunk {chunk} of seed {SEED}"
    print(f"seed {SEED}: {totals}", flush=True)
    assert totals["sent"] + totals["posted"] == MESSAGES
    handle_posted_messages(desk)
    show_main_panel(desk)
    desk.choose("NIGHT")
    desk.wait_for_factors(model.factors(*NIGHT))
    assert desk.quit() == 0
    assert desk.screen_is_plain()
    assert desk.hardware.value("desk") == OWN_BRIGHTNESS
    assert "[Restore]" not in desk.settings_text()


def test_a_quit_message_of_another_program_restores_everything(desk):
    desk.hardware.monitors([Monitor("desk", OWN_BRIGHTNESS)])
    desk.start_fresh({"UseLegacyGamma": 1, "PWMSafeMode": 1})
    wait_until(lambda: desk.hardware.value("desk") == 100, "the locked display", state=lambda: desk.hardware.value("desk"))
    desk.choose("EVENING")
    desk.wait_for_legacy_colour(*EVENING)
    desk.post_message(WM_QUIT)
    assert desk.wait_for_exit() == 0
    assert desk.ramp_is_plain()
    assert desk.hardware.value("desk") == OWN_BRIGHTNESS
    assert "[Restore]" not in desk.settings_text()


def test_a_popup_that_another_program_has_minimised_is_shown_again(desk):
    desk.open_popup()
    full = desk.window_facts()
    desk.call_window(WM_SYSCOMMAND, SC_MINIMIZE)
    desk.call_window(WM_CLOSE)
    desk.wait_for_popup(False)
    desk.show()
    wait_until(lambda: [desk.window_facts()[edge] for edge in ("left", "top", "right", "bottom")]
               == [full[edge] for edge in ("left", "top", "right", "bottom")], "the popup at its place",
               state=desk.window_facts)
    desk.choose("NIGHT")
    desk.wait_for_colour(*NIGHT)


@pytest.mark.parametrize("with_box", [False, True], ids=["popup", "message box"])
def test_input_for_a_frame_starts_no_loop(desk, with_box):
    """DefWindowProcW would answer only when a mouse button is released or a menu is closed."""
    desk.open_popup()
    if with_box:
        desk.post_message(SHOW_MAGNIFICATION_ERROR, 5)
        box = desk.wait_for_message_box()
    for message, part in FRAME_INPUT:
        desk.send_message(message, part)
    if with_box:
        desk.press_button(box)
    desk.call_window(WM_CLOSE)
    desk.wait_for_popup(False)
    desk.choose("NIGHT")
    desk.wait_for_colour(*NIGHT)
