"""The popup through IAccessible, as a screen reader in another process sees and operates it."""

import os
from pathlib import Path

import pytest

import model
from ambrel_lab.accessibility import ACCESS_DENIED, INVALID_ARGUMENT, NONE, NOT_CONNECTED, NOT_SUPPORTED, OK, SERVER_GONE
from ambrel_lab.hardware import UNTIL_ENDED, Monitor, Panel
from ambrel_lab.layout import TRACK_BOTTOM, TRACK_TOP
from backlight import BUILD, CONFIRMED, VERIFY, WM_TIMER
from desk import SLIDER_X, SLIDER_Y, wait_for_value, wait_until
from documents import accessibility
from documents.text_block import text_block
from panels import show_settings, wait_for_panel

HINT = "\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%"
BLOCKED = "\u26a0 COLORS BLOCKED BY WINDOWS. CLICK TO FIX"
COPIED_HINT = "PASTE INTO AN EMAIL TO SUPPORT@AMBREL.EXAMPLE"
WM_DISPLAYCHANGE, WM_CLOSE = 0x7E, 0x10
WM_QUERYENDSESSION, WM_ENDSESSION, ENDSESSION_CLOSEAPP = 0x11, 0x16, 1
ACTIONS_REQUESTED = 0x806C  # the program's own message
RUN_KEY = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run"
NO = 7  # the button of a message box
NEXT, PREVIOUS, FIRST_CHILD, LAST_CHILD, RIGHT, DOWN = 5, 6, 7, 8, 4, 2
TAKE_FOCUS, TAKE_SELECTION, ADD_SELECTION = 1, 2, 8
SCALINGS = [96, 120, 144, 192]
FEW = 5  # handles that are opened and closed in the meantime
# A call takes a millisecond or two. AMBREL_RANDOM_CALLS=5000 runs the long form.
RANDOM_CALLS = int(os.environ.get("AMBREL_RANDOM_CALLS", "1600"))


def read_panel(desk):
    """The panel as a client reads it: (role, name, and whatever else it has) of each control."""
    rows = []
    for control in desk.accessible_controls():
        more = [*sorted(control.state - {"read-only"}), control.value, control.description, control.action]
        rows.append((control.role, control.name, *filter(None, more)))
    return rows


def preset(name, selected):
    return ("radio button", name, *(["checked"] if name == selected else []), "Check")


def check(name, on, description=None):
    return ("check button", name, *(["checked"] if on else []), *([description] if description else []),
            "Uncheck" if on else "Check")


def main_panel(warmth, brightness, strip, selected=None, on=False):
    return [("text", "AMBREL"), ("button", "SETTINGS", "Press"),
            ("text", "WARMTH"), ("slider", "WARMTH", warmth),
            ("text", "BRIGHTNESS"), ("slider", "BRIGHTNESS", brightness),
            strip, *(preset(name, selected) for name in ("DAY", "EVENING", "NIGHT")), check("KIVO", on)]


def settings_panel(launch=False, dim=False, legacy=False, support=("button", "COPY FEEDBACK FOR SUPPORT", "Press")):
    return [("text", "SETTINGS"), ("button", "CLOSE", "Press"), check("LAUNCH AT STARTUP", launch),
            check("ALLOW EXTREME DIM", dim), check("LEGACY MODE", legacy), support]


def wait_for_panel_read(desk, expected):
    wait_for_value(lambda: read_panel(desk), expected, "the panel that a client reads")


def press(desk, name):
    assert desk.accessible_press(desk.accessible_control(name)) == OK


def put(desk, slider, text):
    return desk.accessible_set(desk.accessible_control(slider), text)


@pytest.fixture(name="popup")
def popup_fixture(file_desk):
    """The file's desk with the popup open, the filter off at 6500 K, every setting off."""
    file_desk.registry_delete(RUN_KEY, "Ambrel2")
    file_desk.start_fresh({"Intensity": 0, "Brightness": 1000})
    file_desk.open_popup()
    return file_desk


@pytest.fixture(name="blocked")
def blocked_fixture(file_desk):
    """The file's desk with the popup open and a ramp that Windows refuses."""
    file_desk.start_fresh({"UseLegacyGamma": 1, "Intensity": 1000, "Brightness": 700})
    file_desk.press_power()
    wait_until(lambda: ("button", BLOCKED, "Press") in read_panel(file_desk), "the banner",
               state=lambda: read_panel(file_desk))
    return file_desk


@pytest.fixture(name="hardware_desk", scope="module")
def hardware_desk_fixture(make_file_desk):
    return make_file_desk(build_dir=BUILD)


@pytest.fixture(name="start_with_displays")
def start_with_displays_fixture(hardware_desk):
    """A function that opens the popup of a program with these displays, and the filter off at DAY."""
    def begin(monitors=(), panels=()):
        if hardware_desk.program_running():
            hardware_desk.kill_program()
        hardware_desk.hardware.monitors(monitors)
        hardware_desk.hardware.panels(panels)
        hardware_desk.hardware.wmi()
        hardware_desk.hardware.hold_timers()
        hardware_desk.start_fresh()
        hardware_desk.show()
        return hardware_desk
    return begin


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


# Where the controls are

def drawn_bounds(picture, rect, margin):
    """Where what is drawn about `rect` begins: the first pixels that differ from the surface around it, found inwards
    from `margin` outside the middle of each edge."""
    left, top, right, bottom = rect
    middle_x, middle_y = (left + right) // 2, (top + bottom) // 2

    def first(x, y, step_x, step_y):
        surface = picture.pixel(x, y)
        for _ in range(4 * margin):
            if picture.pixel(x, y) != surface:
                break
            x, y = x + step_x, y + step_y
        return x, y
    return (first(left - margin, middle_y, 1, 0)[0], first(middle_x, top - margin, 0, 1)[1],
            first(right + margin, middle_y, -1, 0)[0] + 1, first(middle_x, bottom + margin, 0, -1)[1] + 1)


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


def ink_bounds(picture, area):
    """Where the text or glyph in `area` is: the pixels that differ from the header, whose colour depends on the row."""
    left, top, right, bottom = area
    ink = [(x, y) for y in range(top, bottom) for x in range(left, right) if picture.pixel(x, y) != picture.pixel(left, y)]
    assert ink, f"nothing is drawn in {area}"
    columns, rows = zip(*ink)
    return min(columns), min(rows), max(columns) + 1, max(rows) + 1


def assert_centred_ink(picture, rect, unit):
    """The gear and CLOSE have no outline: each is drawn in the middle of its rectangle. A glyph's ink is not exactly in
    the middle of its cell, hence the tolerance of three units."""
    margin = round(4 * unit)
    ink = ink_bounds(picture, [edge + side * margin for edge, side in zip(rect, (-1, -1, 1, 1))])
    assert rect[0] <= ink[0] and rect[1] <= ink[1] and ink[2] <= rect[2] and ink[3] <= rect[3], (rect, ink)
    for low, high in ((0, 2), (1, 3)):
        assert abs(ink[low] + ink[high] - rect[low] - rect[high]) / 2 <= 3 * unit, (rect, ink)


@pytest.mark.parametrize("dpi", SCALINGS)
def test_the_rectangles_are_where_the_controls_are_drawn(make_desk, dpi):
    desk = make_desk(build_dir=BUILD, dpi=dpi, size=(1920, 1200))
    desk.hardware.monitors([Monitor("desk", 100)])
    desk.start()
    desk.open_popup()

    def on_popup(control):
        corner = desk.popup_rect()
        return tuple(edge - base for edge, base in zip(control.rect, (corner.left, corner.top) * 2))

    unit = dpi / 96
    margin = round(4 * unit)
    lower, background = (0x1A,) * 3, (0x0D,) * 3
    picture = drawn_picture(desk, lambda picture: picture.pixel(3, picture.height - 3) == lower)
    for name in ("DAY", "EVENING", "NIGHT", "KIVO"):
        rect = on_popup(desk.accessible_control(name))
        # A ring of one unit surrounds these buttons, drawn with a pen that is up to two pixels wide.
        ring = [edge + side * unit for edge, side in zip(rect, (-1, -1, 1, 1))]
        assert near(drawn_bounds(picture, rect, margin), ring, 2), (name, rect, drawn_bounds(picture, rect, margin))
    card = on_popup(desk.accessible_control("PWM-SAFE MODE"))
    assert near(drawn_bounds(picture, card, margin), card, 1), (card, drawn_bounds(picture, card, margin))
    assert_centred_ink(picture, on_popup(desk.accessible_control("SETTINGS")), unit)
    for name, x in (("WARMTH", 80), ("BRIGHTNESS", 240)):
        # The track that is 52 units wide and 198 high, as the slider can be pressed.
        track = tuple(round_half_up(edge * unit) for edge in (x - 26, TRACK_TOP, x + 26, TRACK_BOTTOM))
        assert on_popup(desk.accessible_control(name)) == track

    show_settings_by_press(desk)
    picture = drawn_picture(desk, lambda picture: picture.pixel(3, picture.height - 3) == background)
    for name in ("LAUNCH AT STARTUP", "ALLOW EXTREME DIM", "LEGACY MODE", "COPY FEEDBACK FOR SUPPORT"):
        rect = on_popup(desk.accessible_control(name))
        assert near(drawn_bounds(picture, rect, margin), rect, 1), (name, rect, drawn_bounds(picture, rect, margin))
    assert_centred_ink(picture, on_popup(desk.accessible_control("CLOSE")), unit)


def near(drawn, rect, pixels):
    """Whether two rectangles differ by so many pixels at most: GDI and the program round edges separately."""
    return all(abs(one - other) <= pixels for one, other in zip(drawn, rect))


def round_half_up(value):
    return int(value + 0.5)


def show_settings_by_press(desk):
    press(desk, "SETTINGS")
    wait_until(lambda: read_panel(desk)[0] == ("text", "SETTINGS"), "the settings panel",
               state=lambda: read_panel(desk))


def test_the_hit_test_finds_each_control_and_nothing_outside(popup):
    for control in popup.accessible_controls():
        x, y = (control.rect.left + control.rect.right) // 2, (control.rect.top + control.rect.bottom) // 2
        assert popup.accessible_at(x, y) == (OK, control.id), control
    client = popup.accessible_popup().rect
    assert popup.accessible_at(client.left + 2, client.top + 300) == (OK, 0)
    assert popup.accessible_at(client.left - 1, client.top) == (NONE, -1)
    assert popup.accessible_at(-2**31, 2**31 - 1) == (NONE, -1)


# Actions

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


# Events

def test_a_preset_announces_values_and_states(popup):
    with popup.accessible_events() as events:
        press(popup, "DAY")
        found = events.wait_for(("value", 4), ("state", 8), ("state", 11))
        assert len(found) == len(set(found)) and ("value", 6) not in found
        press(popup, "EVENING")
        events.wait_for(("reorder", 0), ("value", 4), ("value", 6), ("state", 7), ("state", 8), ("state", 9))


def test_the_panels_and_the_popup_announce_themselves(popup):
    with popup.accessible_events() as events:
        press(popup, "SETTINGS")
        assert events.wait_for(("reorder", 0)) == [("reorder", 0)]
        press(popup, "ALLOW EXTREME DIM")
        assert events.wait_for(("state", 4)) == [("state", 4)]
        press(popup, "COPY FEEDBACK FOR SUPPORT")
        copied = [("name", 6), ("description", 6), ("help", 6)]
        assert events.wait_for(*copied) == copied
        popup.post_message(WM_CLOSE)
        assert ("hide", 0) in events.wait_for(("hide", 0))
        popup.show()
        assert ("show", 0) in events.wait_for(("show", 0))


def test_a_drag_announces_the_steps_that_change_the_text_and_no_others(file_desk):
    desk = file_desk.start_fresh({"Brightness": 850})
    desk.press_power()
    wait_until(lambda: read_panel(desk)[-1][-1] == "Uncheck", "the filter")
    x, y = SLIDER_X["BRIGHTNESS"], SLIDER_Y
    desk.press_unit(x, y)
    shown = [model.percent(0.85)]
    with desk.accessible_events() as events:
        for step in range(1, 13):
            before = len(desk.effects())
            desk.move_unit(x, y + step)
            wait_until(lambda: len(desk.effects()) > before, "the step")
            desk.paint()
            shown.append(model.percent(model.dragged(0.85, -step)))
        desk.release()
        changes = sum(one != other for one, other in zip(shown, shown[1:]))
        assert 0 < changes < 12
        wait_for_value(lambda: len(events.read()), changes, "the number of events")
        assert events.take() == [("value", 6)] * changes


def test_a_lock_announces_the_status_of_the_strip(start_with_displays):
    desk = start_with_displays([Monitor("desk", 40, present=False)])
    desk.hardware.hold_timers(VERIFY)
    assert read_panel(desk)[6] == ("text", HINT)
    with desk.accessible_events() as events:
        desk.hardware.plug("desk")
        desk.post_message(WM_DISPLAYCHANGE)
        events.wait_for(("reorder", 0), ("name", 7), ("description", 7), ("help", 7))
        press(desk, "PWM-SAFE MODE")
        events.wait_for(("state", 7), ("description", 7), ("help", 7))
        desk.wait_for_saves(1)
        desk.call_window(WM_TIMER, VERIFY)
        assert CONFIRMED % 1 in desk.log()
        wait_until(lambda: read_panel(desk)[6][3] == "DISPLAY LOCKED AT 100%", "the confirmed lock")
        events.wait_for(("description", 7), ("help", 7))


def test_an_end_of_the_program_announces_that_the_popup_disappears(popup):
    with popup.accessible_events() as events:
        # As an installer that replaces the program's file.
        popup.send_message(WM_QUERYENDSESSION, 0, ENDSESSION_CLOSEAPP)
        popup.send_message(WM_ENDSESSION, 1, ENDSESSION_CLOSEAPP)
        assert ("hide", 0) in events.wait_for(("hide", 0))
    assert popup.wait_for_exit() == 0


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
    for _ in range(20):
        read_panel(popup)
    wait_until(lambda: popup.open_handles() <= before + FEW, "the handles to be closed",
               state=lambda: (before, popup.open_handles()))


def test_the_page_on_accessibility_shows_the_current_walk(popup):
    popup.choose("EVENING")
    wait_until(lambda: "checked" in popup.accessible_control("KIVO").state, "the filter")
    page = accessibility.PAGE.read_text(encoding="utf-8")
    assert text_block(page, accessibility.PAGE) == accessibility.walk(popup)
