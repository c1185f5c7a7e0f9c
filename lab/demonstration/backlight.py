"""Scenario: the PWM-safe card in each of its nine states, on simulated displays."""

from ambrel_lab.hardware import Monitor, Panel
from ambrel_lab.layout import CARD, CARD_OUTLINE
from ambrel_lab.waiting import TIMEOUT

AMBER, GREY, GREEN = (255, 210, 0), (110, 110, 110), (0, 214, 124)
WM_DISPLAYCHANGE, WM_TIMER, VERIFY_TIMER = 0x7E, 0x113, 5
TEN_FAILURES = 120  # seconds: ten polls of 2 s, each evaluated 0.75 s later, on a slow machine


def card_text(stage):
    """The card's text; None without a card."""
    return next((control.help for control in stage.lab.accessible_controls() if control.name == "PWM-SAFE MODE"), None)


def accent_is(stage, colour):
    """Whether the card's outline shows that colour."""
    rect = stage.lab.popup_rect()
    x, y = stage.lab.unit_to_screen(*CARD_OUTLINE)
    column = [stage.lab.popup_picture().pixel(x - rect.left, y - rect.top + step) for step in range(-1, 2)]
    return colour in column


def expect_card(stage, name, text, colour, timeout=TIMEOUT):
    stage.expect(f"the card says {text}", lambda: card_text(stage) == text and accent_is(stage, colour), timeout)
    stage.save(name)


def displays_changed(stage):
    stage.lab.post_message(WM_DISPLAYCHANGE)


def lock_a_monitor(stage):
    hardware = stage.lab.hardware
    expect_card(stage, "11-already-full", "DISPLAY ALREADY AT 100%", GREY)
    hardware.set_by_user("desk", 40)
    displays_changed(stage)
    expect_card(stage, "12-lock-display", "LOCK DISPLAY AT 100%", AMBER)
    hardware.hold_timers(VERIFY_TIMER)  # The verification would end this state before the picture is taken.
    stage.lab.click_unit(*CARD)
    expect_card(stage, "13-verifying", "VERIFYING 100% LOCK", AMBER)
    hardware.hold_timers()
    stage.lab.post_message(WM_TIMER, VERIFY_TIMER)
    stage.expect("the monitor is at 100", lambda: hardware.value("desk") == 100)
    expect_card(stage, "14-locked", "DISPLAY LOCKED AT 100%", GREEN)
    hardware.set_by_user("desk", 30)
    stage.expect("a monitor that the user turns down is reset to 100", lambda: hardware.value("desk") == 100)
    expect_card(stage, "15-locked-again", "DISPLAY LOCKED AT 100%", GREEN)


def disconnect_and_reconnect(stage):
    hardware = stage.lab.hardware
    hardware.unplug("desk")
    displays_changed(stage)
    expect_card(stage, "16-waiting", "WAITING FOR DISPLAY", AMBER)
    hardware.plug("desk")
    expect_card(stage, "17-found", "DISPLAY LOCKED AT 100%", GREEN)


def refuse_the_lock(stage):
    hardware = stage.lab.hardware
    hardware.change("desk", behaviour="sticks", at=60)
    hardware.set_by_user("desk", 60)
    stage.expect("a monitor that does not hold 100 is logged", lambda: stage.log_has("lock pending"))
    expect_card(stage, "18-reasserting", "REASSERTING 100% LOCK", AMBER)
    stage.expect("after ten failures it is polled less often", lambda: stage.log_has("slowing retries to 30s"),
                 TEN_FAILURES)
    expect_card(stage, "19-will-not-hold", "DISPLAY WON'T HOLD 100%", AMBER)
    hardware.change("desk", behaviour="ok")
    stage.lab.click_unit(*CARD)
    stage.expect("unlocking restores the monitor's old brightness", lambda: hardware.value("desk") == 40)


def lock_a_panel(stage):
    hardware = stage.lab.hardware
    hardware.unplug("desk")
    displays_changed(stage)
    stage.expect("without a display there is no card", lambda: card_text(stage) is None and not accent_is(stage, AMBER))
    hardware.plug("laptop")
    displays_changed(stage)
    expect_card(stage, "20-lock-panel", "LOCK BUILT-IN PANEL AT 100%", AMBER)
    stage.lab.click_unit(*CARD)
    stage.expect("the panel is at 100", lambda: hardware.value("laptop") == 100)
    expect_card(stage, "21-panel-locked", "BUILT-IN PANEL LOCKED AT 100%", GREEN)


def show(stage):
    hardware = stage.lab.hardware
    hardware.monitors([Monitor("desk", current=100)])
    hardware.panels([Panel("laptop", current=35, present=False)])
    stage.start()
    lock_a_monitor(stage)
    disconnect_and_reconnect(stage)
    refuse_the_lock(stage)
    lock_a_panel(stage)
    stage.quit()
    stage.expect("the panel's old brightness is restored", lambda: hardware.value("laptop") == 35)
    stage.expect("every handle and object of the displays was released", lambda: hardware.outstanding() == 0)
