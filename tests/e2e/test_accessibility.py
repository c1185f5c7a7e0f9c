"""What a screen reader in another process reads of the popup through IAccessible, and requests at any moment."""

import os
from pathlib import Path

import model
from accessible import BLOCKED, HINT, main_panel, press, read_panel, settings_panel, wait_for_panel_read
from accessible import (blocked_fixture, hardware_desk_fixture, popup_fixture,  # noqa: F401
                        start_with_displays_fixture)
from ambrel_lab.accessibility import INVALID_ARGUMENT, NONE, NOT_CONNECTED, OK, SERVER_GONE
from ambrel_lab.hardware import UNTIL_ENDED, Panel
from desk import wait_until
from documents import accessibility
from documents.text_block import text_block
from panels import show_settings

WM_CLOSE = 0x10
ACTIONS_REQUESTED = 0x806C  # the program's own message
NO = 7  # the button of a message box
NEXT, PREVIOUS, FIRST_CHILD, LAST_CHILD, RIGHT, DOWN = 5, 6, 7, 8, 4, 2
FEW = 5  # handles that are opened and closed in the meantime
# A call takes a millisecond or two. AMBREL_RANDOM_CALLS=5000 runs the long form.
RANDOM_CALLS = int(os.environ.get("AMBREL_RANDOM_CALLS", "1600"))


# What a client reads

def test_the_main_panel_reads_as_it_looks(popup):
    assert read_panel(popup) == main_panel("6,500K", "100%", ("text", HINT))
    popup.choose("EVENING")
    lit = ("alert", HINT, "alert")
    wait_for_panel_read(popup, main_panel("2,700K", "85%", lit, "EVENING", True))
    popup.choose("DAY")
    wait_for_panel_read(popup, main_panel("4,000K", "100%", ("text", HINT), "DAY", True))
    popup.press_power()
    wait_for_panel_read(popup, main_panel("4,000K", "100%", ("text", HINT), "DAY", False))


def test_the_settings_panel_reads_as_it_looks(popup):
    show_settings(popup)
    assert read_panel(popup) == settings_panel()
    for row in ("LAUNCH AT STARTUP", "ALLOW EXTREME DIM", "LEGACY MODE"):
        popup.flip(row)
    wait_for_panel_read(popup, settings_panel(True, True, True))


def test_the_banner_is_a_button(blocked):
    banner = ("button", BLOCKED, "Press")
    assert read_panel(blocked) == main_panel("0K", "70%", banner, "NIGHT", True)


def test_the_window_contains_the_popup_and_nothing_has_the_focus(popup):
    client = popup.accessible_popup()
    assert (client.name, client.role, client.state) == ("Ambrel", "client", frozenset())
    facts = popup.window_facts()
    assert client.rect == tuple(facts[edge] for edge in ("left", "top", "right", "bottom"))
    assert popup.accessible_parent_window() == hex(facts["handle"])
    for control in popup.accessible_controls():
        assert not control.state & {"focusable", "focused", "selectable"}


def test_a_hidden_popup_is_invisible(popup):
    popup.post_message(WM_CLOSE)
    popup.wait_for_popup(False)
    assert all("invisible" in control.state for control in [popup.accessible_popup(), *popup.accessible_controls()])


def test_the_order_and_the_directions_lead_through_the_panel(popup):
    assert popup.accessible_navigate(FIRST_CHILD, 0) == (OK, 1)
    assert popup.accessible_navigate(LAST_CHILD, 0) == (OK, 11)
    assert popup.accessible_navigate(NEXT, 10) == (OK, 11)
    assert popup.accessible_navigate(NEXT, 11) == (NONE, -1)
    assert popup.accessible_navigate(PREVIOUS, 1) == (NONE, -1)
    day, evening = (popup.accessible_control(name).id for name in ("DAY", "EVENING"))
    assert popup.accessible_navigate(RIGHT, day) == (OK, evening)
    assert popup.accessible_navigate(DOWN, day) == (OK, popup.accessible_control("KIVO").id)
    assert popup.accessible_navigate(NEXT, 12) == (INVALID_ARGUMENT, -1)


# At any moment

def test_requests_are_answered_and_actions_wait_while_a_panel_answers(start_with_displays):
    desk = start_with_displays(panels=[Panel("panel", 40)])
    card, night, brightness = (desk.accessible_control(name) for name in ("PWM-SAFE MODE", "NIGHT", "BRIGHTNESS"))
    desk.hardware.wmi(delay_exec=UNTIL_ENDED)
    assert desk.accessible_press(card) == OK
    wait_until(desk.hardware.held_calls, "the wait for the panel")
    assert desk.accessible_press(night) == desk.accessible_set(brightness, "50%") == OK
    # The wait dispatches sent messages only. Another program may send this one.
    for message_sent in (desk.send_message, desk.call_window):
        message_sent(ACTIONS_REQUESTED)
    assert desk.effects() == [] and read_panel(desk)[3] == ("slider", "WARMTH", "3,998K")
    assert desk.hardware.held_calls()
    desk.hardware.wmi()
    desk.hardware.end_delays()
    desk.wait_for_colour(model.PRESETS["NIGHT"].intensity, 0.5)


def close_boxes(popup):
    """Lets the program perform all actions, and closes the boxes that they open."""
    popup.wait_until_posted_messages_are_handled()
    while boxes := popup.message_boxes():
        for box in boxes:
            popup.press_button(box, NO if NO in box.buttons else None)
        popup.wait_until_posted_messages_are_handled()


def test_random_calls_from_outside_leave_a_program_that_works(popup):
    quiet = popup.accessible_random(1, RANDOM_CALLS * 3 // 4, acts=False)
    assert quiet["lost"] == 0
    assert quiet["succeeded"] > RANDOM_CALLS // 4 and quiet["refused"] > RANDOM_CALLS // 10
    assert popup.accessible_random(2, RANDOM_CALLS // 4, acts=True)["lost"] == 0
    close_boxes(popup)
    if read_panel(popup)[0] == ("text", "SETTINGS"):
        press(popup, "CLOSE")
        wait_until(lambda: read_panel(popup)[0] == ("text", "AMBREL"), "the main panel")
    press(popup, "EVENING")
    popup.wait_for_factors(model.factors(*model.PRESETS["EVENING"][:2]))
    assert popup.quit() == 0


def test_the_program_ends_while_a_client_holds_its_object(popup):
    press(popup, "NIGHT")
    popup.wait_for_colour(*model.PRESETS["NIGHT"][:2])
    with popup.accessible_holder() as wait_for_failed_call:
        assert popup.quit() == 0
        # Between the end of the window and that of the process the object itself can answer, then COM does.
        assert wait_for_failed_call() in (NOT_CONNECTED, *SERVER_GONE)
    popup.wait_for_plain_screen()


def test_the_accessibility_library_is_loaded_on_the_first_request(popup):
    popup.choose("EVENING")
    popup.wait_for_colour(*model.PRESETS["EVENING"][:2])
    maps = Path(f"/proc/{popup.program_pids()[0]}/maps")
    assert "oleaut32.dll" in maps.read_text(encoding="utf-8") and "oleacc.dll" not in maps.read_text(encoding="utf-8")
    read_panel(popup)
    assert "oleacc.dll" in maps.read_text(encoding="utf-8")


def test_clients_leave_no_handles_behind(popup):
    read_panel(popup)
    before = popup.open_handles()
    assert before > 0
    for _ in range(20):
        read_panel(popup)
    wait_until(lambda: popup.open_handles() <= before + FEW, "the handles to be closed",
               state=lambda: (before, popup.open_handles()))


def test_the_page_on_accessibility_shows_the_current_walk(popup):
    popup.choose("EVENING")
    wait_until(lambda: "checked" in popup.accessible_control("KIVO").state, "the filter")
    page = accessibility.PAGE.read_text(encoding="utf-8")
    assert text_block(page, accessibility.PAGE) == accessibility.walk(popup)
