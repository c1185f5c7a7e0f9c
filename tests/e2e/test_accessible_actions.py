"""The popup operated through IAccessible, as a screen reader does."""

import pytest

import model
from accessible import BLOCKED, HINT, check, main_panel, press, put, read_panel, settings_panel, wait_for_panel_read
from accessible import (blocked_fixture, hardware_desk_fixture, popup_fixture,  # noqa: F401
                        start_with_displays_fixture)
from ambrel_lab.accessibility import ACCESS_DENIED, INVALID_ARGUMENT, NOT_SUPPORTED, OK
from ambrel_lab.hardware import Monitor
from backlight import CONFIRMED
from desk import wait_for_value, wait_until
from panels import drawn_picture, wait_for_panel

COPIED_HINT = "PASTE INTO AN EMAIL TO SUPPORT@AMBREL.EXAMPLE"
WM_CLOSE = 0x10
NO = 7  # the button of a message box
TAKE_FOCUS, TAKE_SELECTION, ADD_SELECTION = 1, 2, 8


def test_presets_and_the_power_button_reach_the_screen_and_the_settings(popup):
    for name in ("EVENING", "NIGHT", "DAY"):
        press(popup, name)
        wanted = model.PRESETS[name]
        popup.wait_for_colour(wanted.intensity, wanted.brightness)
        popup.wait_for_setting("Brightness", str(model.per_mille(wanted.brightness)))
        wait_until(lambda: ("radio button", name, "checked", "Check") in read_panel(popup), f"{name} selected")
    press(popup, "KIVO")
    popup.wait_for_plain_screen()
    press(popup, "KIVO")
    popup.wait_for_colour(*model.PRESETS["DAY"][:2])


def test_the_panel_is_drawn_as_after_clicks(popup):
    """The picture after EVENING, after its values as texts, and with the filter off."""
    press(popup, "EVENING")
    wait_for_panel_read(popup, main_panel("2,700K", "85%", ("alert", HINT, "alert"), "EVENING", True))
    chosen = drawn_picture(popup, lambda picture: True)
    press(popup, "KIVO")
    wait_for_panel_read(popup, main_panel("2,700K", "85%", ("alert", HINT, "alert"), "EVENING"))
    switched_off = drawn_picture(popup, lambda picture: picture != chosen)

    popup.start_fresh({"Intensity": 0, "Brightness": 1000}).open_popup()
    start = drawn_picture(popup, lambda picture: picture not in (chosen, switched_off))
    popup.choose("EVENING")
    assert drawn_picture(popup, lambda picture: picture != start) == chosen
    popup.press_power()
    assert drawn_picture(popup, lambda picture: picture != chosen) == switched_off

    popup.start_fresh({"Intensity": 0, "Brightness": 1000}).open_popup()
    assert put(popup, "WARMTH", "2,700K") == put(popup, "BRIGHTNESS", "85%") == OK
    assert drawn_picture(popup, lambda picture: picture != start) == switched_off


def test_a_preset_can_be_selected(popup):
    assert popup.accessible_select(popup.accessible_control("NIGHT"), TAKE_SELECTION) == OK
    popup.wait_for_colour(*model.PRESETS["NIGHT"][:2])
    assert popup.accessible_select(popup.accessible_control("KIVO"), TAKE_SELECTION) == NOT_SUPPORTED
    day = popup.accessible_control("DAY")
    assert popup.accessible_select(day, TAKE_SELECTION | ADD_SELECTION) == INVALID_ARGUMENT
    assert popup.accessible_select(day, TAKE_FOCUS | TAKE_SELECTION) == OK
    popup.wait_for_colour(*model.PRESETS["DAY"][:2])


def test_the_sliders_take_values_as_they_show_them(popup):
    press(popup, "KIVO")
    assert put(popup, "WARMTH", "2,700K") == OK
    assert put(popup, "BRIGHTNESS", "57%") == OK
    popup.wait_for_colour(model.PRESETS["EVENING"].intensity, 0.57)
    wait_for_panel_read(popup, main_panel("2,700K", "57%", ("alert", HINT, "alert"), "EVENING", True))
    popup.wait_for_setting("Brightness", "570")
    assert popup.settings()["Intensity"] == "584"
    assert put(popup, "WARMTH", "3000K") == OK
    popup.wait_for_colour(1 - 3000 / 6500, 0.57)
    assert put(popup, "WARMTH", "25%") == OK
    popup.wait_for_colour(0.25, 0.57)


def test_values_are_clamped_as_in_a_drag(popup):
    press(popup, "KIVO")
    assert put(popup, "BRIGHTNESS", "3%") == put(popup, "WARMTH", "12,000K") == OK
    popup.wait_for_colour(0.0, 0.1)
    assert put(popup, "BRIGHTNESS", "300%") == put(popup, "WARMTH", "101%") == OK
    popup.wait_for_colour(1.0, 1.0)


@pytest.mark.parametrize("text", ["", "2700", "85", "2700k", " 2700K", "27,00K", "-5%", "85.5%", "warm", "9" * 5000])
def test_any_other_value_is_refused_and_changes_nothing(popup, text):
    before = read_panel(popup)
    assert put(popup, "WARMTH", text) == put(popup, "BRIGHTNESS", text) == INVALID_ARGUMENT
    assert put(popup, "BRIGHTNESS", "2700K") == INVALID_ARGUMENT
    popup.send_message(0)
    assert read_panel(popup) == before and popup.effects() == []


def test_a_control_that_cannot_be_pressed_or_set_returns_an_error(popup):
    assert popup.accessible_press(popup.accessible_control("WARMTH")) == NOT_SUPPORTED
    assert popup.accessible_press(1) == popup.accessible_press(0) == NOT_SUPPORTED
    assert popup.accessible_press(12) == popup.accessible_press(-1) == INVALID_ARGUMENT
    assert put(popup, "KIVO", "85%") == NOT_SUPPORTED


def test_gear_rows_support_button_and_close(popup):
    press(popup, "SETTINGS")
    wait_for_panel(popup, "settings")
    for row, key in (("LAUNCH AT STARTUP", "LaunchAtStart"), ("ALLOW EXTREME DIM", "AllowExtremeDim"),
                     ("LEGACY MODE", "UseLegacyGamma")):
        press(popup, row)
        popup.wait_for_setting(key, "1")
    press(popup, "COPY FEEDBACK FOR SUPPORT")
    copied = ("button", "COPIED", COPIED_HINT, "Press")
    wait_for_panel_read(popup, settings_panel(True, True, True, copied))
    assert popup.clipboard_text().startswith("TO: support@")
    wait_for_panel_read(popup, settings_panel(True, True, True))
    press(popup, "CLOSE")
    wait_for_panel(popup, "main")


def test_the_card_locks_and_unlocks(start_with_displays):
    desk = start_with_displays([Monitor("desk", 40)])
    wait_for_panel_read(desk, main_panel("3,998K", "100%", check("PWM-SAFE MODE", False, "LOCK DISPLAY AT 100%"), "DAY"))
    press(desk, "PWM-SAFE MODE")
    desk.wait_for_log(CONFIRMED % 1)
    assert desk.hardware.value("desk") == 100
    assert desk.accessible_control("PWM-SAFE MODE").help == "DISPLAY LOCKED AT 100%"
    locked = check("PWM-SAFE MODE", True, "DISPLAY LOCKED AT 100%")
    wait_for_panel_read(desk, main_panel("3,998K", "100%", locked, "DAY"))
    press(desk, "PWM-SAFE MODE")
    wait_for_value(lambda: desk.hardware.value("desk"), 40, "the monitor's brightness")


def test_a_message_box_makes_the_controls_unavailable(blocked):
    every_state = [("state", child) for child in range(12)]
    with blocked.accessible_events() as events:
        press(blocked, BLOCKED)
        box = blocked.wait_for_message_box()
        assert sorted(events.wait_for(*every_state)) == every_state
        assert "unavailable" in blocked.accessible_popup().state
        refuse_under_the_box(blocked)
        blocked.press_button(box, NO)
        assert [event for event in events.wait_for(*every_state) if event[0] == "state"] == every_state
    assert blocked.accessible_control("KIVO").state == {"checked"}
    press(blocked, "KIVO")
    blocked.wait_for_plain_screen()


def refuse_under_the_box(blocked):
    power = blocked.accessible_control("KIVO")
    assert power.state == {"unavailable", "checked"}
    assert blocked.accessible_press(power) == ACCESS_DENIED
    assert put(blocked, "WARMTH", "2700K") == ACCESS_DENIED


def test_a_hidden_popup_can_be_operated(popup):
    popup.post_message(WM_CLOSE)
    popup.wait_for_popup(False)
    press(popup, "EVENING")
    popup.wait_for_colour(*model.PRESETS["EVENING"][:2])
    assert not popup.popup_visible()
