"""Messages of a hostile program of the same user: any without pointers, except those that end the program."""

import os

import model
from ambrel_lab.hardware import Monitor
from desk import wait_until

# ./soak.sh messages sends 100,000.
MESSAGES = int(os.environ.get("AMBREL_RANDOM_MESSAGES", "3000"))
SEED = int(os.environ.get("SEED", "1"))
CHUNK = 500
NO = 7  # the button's id
OWN_BRIGHTNESS = 40
WM_NULL, WM_CLOSE, WM_QUIT, WM_CANCELMODE = 0, 0x10, 0x12, 0x1F
WM_KEYDOWN, WM_COMMAND, WM_SYSCOMMAND = 0x100, 0x111, 0x112
SC_MINIMIZE, VK_ESCAPE = 0xF020, 0x1B
EVENING, NIGHT = model.PRESETS["EVENING"][:2], model.PRESETS["NIGHT"][:2]


def close_boxes(desk):
    """Closes menus and boxes, and ends moving and sizing, all of which Windows' own loops can nest in each other, as a
    user would with Escape and No."""
    def closed():
        desk.post_message(WM_CANCELMODE)
        desk.post_message(WM_KEYDOWN, VK_ESCAPE)
        for box in desk.message_boxes():
            desk.post_message(WM_COMMAND, NO if NO in box.buttons else next(iter(box.buttons)), target=box.handle)
        return not desk.message_boxes() and not desk.menu_window()
    wait_until(closed, "neither boxes nor menus", state=desk.windows, pause=0.1)


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
    for chunk in range(MESSAGES // CHUNK):
        for name, count in desk.random_messages(SEED * 100000 + chunk, CHUNK).items():
            totals[name] += count
        close_boxes(desk)
        assert desk.program_pids() == process, f"the program ended in chunk {chunk} of seed {SEED}"
    print(f"seed {SEED}: {totals}", flush=True)
    assert totals["sent"] + totals["posted"] == MESSAGES
    desk.send_message(WM_NULL)
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
