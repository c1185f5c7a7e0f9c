"""The fix for Windows' gamma range limit: the banner, the question, the elevated helper, the restart."""

import time

import pefile
import pytest

from ambrel_lab.layout import STATUS_STRIP, STRIP_TEXT
from desk import TIMEOUT, wait_until
from text_recognition import SMALL, picture_of, span, matches_text

ICM_KEY, ICM_VALUE = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM", "GdiIcmGammaRange"
SWITCH = "--expand-gamma-range"
YES, NO, OK = 6, 7, 1
GROUND = (26, 26, 26)
RED, AMBER = (255, 0, 0), (255, 210, 0)
BLOCKED = "\u26a0 COLORS BLOCKED BY WINDOWS. CLICK TO FIX"
RESTART = "\u26a0 FIX APPLIED. RESTART YOUR COMPUTER"
HINT = "\u26a0 FOR LOWEST FLICKER, KEEP DISPLAY BRIGHTNESS AT 100%"
QUESTION = ("Some of your settings are being blocked by Windows.\n\nAmbrel can fix this with your permission. "
            "A restart\nis needed afterwards.\n\nFix it now?")
DONE_BEFORE = "The fix is already done. Just restart your computer\nto finish. Use Restart, not Shut down."
DONE = ("Done. The limit has been removed.\n\nNow restart your computer (click Restart, not Shut down).\n"
        "Everything should work after the restart.")
NOT_ALLOWED = ("Windows did not allow the change. Ambrel will keep\nworking with mild settings only.\n\nNeed help? "
               "Email support@ambrel.example.")
DEFAULT, EXPANDED = "Gamma range: Windows default", "Gamma range: expanded (GdiIcmGammaRange)"
REJECTED = "Legacy ramp REJECTED (intensity=1.000 brightness=0.700) - Windows range limit"
LAUNCHED = "Gamma-range fix helper launched (elevation requested)"
CONFIRMED = "Gamma-range expansion confirmed in registry - restart pending"
EXHAUSTED = "Gamma fix exhausted: ramps still rejected after restart (driver level limit?) - banner demoted"
LEGACY = {"UseLegacyGamma": 1}
SHOW_POPUP = 0x8000 + 105
TEXT, BINARY, LONG_NUMBER, LINK = 1, 3, 11, 6


@pytest.fixture(name="start_with")
def start_with_fixture(file_desk):
    """Starts the program with a registry value and settings."""
    def start(value=None, **settings):
        if file_desk.program_running():
            file_desk.kill_program()
        file_desk.registry_delete(ICM_KEY, ICM_VALUE)
        if value is not None:
            file_desk.registry_set(ICM_KEY, ICM_VALUE, value)
        return file_desk.start_fresh(settings)
    yield start
    file_desk.registry_delete(ICM_KEY, ICM_VALUE)


@pytest.fixture(name="blocked")
def blocked_fixture(start_with):
    """NIGHT in Legacy Mode: the screen refuses the ramp, and the banner is shown."""
    desk = start_with(**LEGACY)
    desk.choose("NIGHT")
    desk.wait_for_log(REJECTED)
    wait_for_strip(desk, BLOCKED, RED)
    return desk


def gamma_range(desk):
    return desk.registry_get(ICM_KEY, ICM_VALUE)


def strip_shows(desk, text, colour):
    picture = desk.popup_picture()
    colours = set(picture.crop(*STRIP_TEXT).pixels())
    return (colour in colours and not {RED, AMBER} - {colour} & colours
            and matches_text(desk, span(picture, STRIP_TEXT, GROUND), text, SMALL))


def wait_for_strip(desk, text, colour):
    wait_until(lambda: strip_shows(desk, text, colour), f"'{text}' in the strip")


def box_with(desk, text):
    return wait_until(lambda: next((box for box in desk.message_boxes() if box.text == text), None), text,
                      state=desk.message_boxes)


def main_process(desk):
    return desk.window_facts()["process"]


def fix(desk):
    """Clicks the banner, answers Yes, and closes the helper's message box."""
    desk.click_unit(*STATUS_STRIP)
    desk.press_button(box_with(desk, QUESTION), YES)
    desk.press_button(box_with(desk, DONE), OK)
    desk.wait_for_log(CONFIRMED)
    return desk


def show_again(desk):
    """Shows the popup as a second start does: it hides when another program's message box opens, and a click on the
    icon directly afterwards is ignored."""
    desk.post_message(SHOW_POPUP)
    wait_until(lambda: desk.popup_visible() and desk.popup_is_foreground(), "the popup in the foreground")


def ask_for_the_fix(desk):
    """Clicks the banner. Returns the question."""
    show_again(desk)
    desk.click_unit(*STATUS_STRIP)
    return box_with(desk, QUESTION)


def assert_no_message_box(desk):
    time.sleep(0.3)  # No message box may open.
    assert desk.message_boxes() == []


# The registry at start-up

@pytest.mark.parametrize("value, line", [
    (None, DEFAULT), (0, DEFAULT), (255, DEFAULT), (256, EXPANDED), (257, EXPANDED), (1024, EXPANDED),
    pytest.param(0x80000000, EXPANDED, id="2^31"), pytest.param(0xFFFFFFFF, EXPANDED, id="2^32-1"),
    pytest.param("256", DEFAULT, id="text"), pytest.param((BINARY, b"\0\1\0\0"), DEFAULT, id="binary"),
    pytest.param((LONG_NUMBER, b"\0\1\0\0\0\0\0\0"), DEFAULT, id="eight bytes"),
])
def test_the_start_logs_whether_the_gamma_range_is_expanded(start_with, value, line):
    desk = start_with(value)
    desk.wait_for_log(line)
    assert desk.log()[3].startswith("Loaded settings: ") and desk.log()[4] == line
    assert len([each for each in desk.log() if each.startswith("Gamma range")]) == 1


# The banner and its question

def test_a_click_on_the_banner_asks_for_confirmation_and_no_changes_nothing(blocked):
    before, log = picture_of(blocked), blocked.log()
    blocked.click_unit(*STATUS_STRIP)
    box = box_with(blocked, QUESTION)
    assert box.title == "Ambrel" and set(box.buttons) == {YES, NO}
    assert int(box.owner, 16) == blocked.window_facts()["handle"] and box.process == main_process(blocked)
    time.sleep(0.4)  # Longer than the interval of the popup's foreground check.
    assert blocked.popup_visible()
    blocked.press_button(box, NO)
    assert_no_message_box(blocked)
    assert gamma_range(blocked) is None
    assert len(blocked.program_pids()) == 1
    assert blocked.log() in (log, log + ["Saved settings"])
    wait_until(lambda: picture_of(blocked) == before, "the popup as it was")


@pytest.mark.parametrize("position, asks", [
    ((22, 380), True), ((297, 409), True), ((21, 395), False), ((298, 395), False), ((160, 379), False),
    ((160, 410), False),
])
def test_the_banner_reacts_within_its_rectangle_only(blocked, position, asks):
    blocked.click_unit(*position)
    if asks:
        blocked.press_button(box_with(blocked, QUESTION), NO)
    else:
        assert_no_message_box(blocked)


def test_without_a_banner_a_click_at_its_position_does_nothing(start_with):
    desk = start_with(**LEGACY)
    desk.choose("DAY")
    desk.wait_for_saves(1)
    log = desk.log()
    desk.click_unit(*STATUS_STRIP)
    assert_no_message_box(desk)
    assert desk.log() == log


def test_yes_starts_the_helper_which_expands_the_range_and_the_banner_asks_for_a_restart(blocked):
    blocked.wait_for_saves(1)
    started = int(time.time())
    blocked.click_unit(*STATUS_STRIP)
    blocked.press_button(box_with(blocked, QUESTION), YES)
    blocked.wait_for_log(LAUNCHED)
    box = box_with(blocked, DONE)
    assert (box.title, set(box.buttons)) == ("Ambrel", {OK})
    assert box.process != main_process(blocked)
    assert int(box.owner, 16) == 0
    assert len(blocked.program_pids()) == 2
    assert gamma_range(blocked) == 256
    blocked.press_button(box, OK)
    blocked.wait_for_log(CONFIRMED)
    ended = int(time.time())
    assert started <= int(blocked.settings()["GammaFixEpoch"]) <= ended
    log = blocked.log()
    assert log[log.index(LAUNCHED):] == [LAUNCHED, "Saved settings", CONFIRMED]
    show_again(blocked)
    wait_for_strip(blocked, RESTART, RED)
    wait_until(lambda: len(blocked.program_pids()) == 1, "the helper to exit")


def test_the_fix_is_confirmed_while_the_helper_still_shows_its_message_box(blocked):
    blocked.click_unit(*STATUS_STRIP)
    blocked.press_button(box_with(blocked, QUESTION), YES)
    box = box_with(blocked, DONE)
    blocked.wait_for_log(CONFIRMED)
    wait_until(lambda: int(blocked.settings()["GammaFixEpoch"]) > 0, "the stored time of the fix")
    blocked.press_button(box)


def test_a_click_on_the_second_text_only_repeats_the_request(blocked):
    fix(blocked)
    show_again(blocked)
    wait_for_strip(blocked, RESTART, RED)
    log, epoch = blocked.log(), blocked.settings()["GammaFixEpoch"]
    for _ in range(2):
        show_again(blocked)
        blocked.click_unit(*STATUS_STRIP)
        box = box_with(blocked, DONE_BEFORE)
        assert (box.title, set(box.buttons), box.process) == ("Ambrel", {OK}, main_process(blocked))
        blocked.press_button(box)
    assert_no_message_box(blocked)
    assert len(blocked.program_pids()) == 1
    assert blocked.log() == log
    assert blocked.settings()["GammaFixEpoch"] == epoch


def test_polling_ends_with_the_confirmation(blocked):
    fix(blocked)
    saves = blocked.saves()
    time.sleep(2.3)  # Longer than the polling interval of the registry.
    assert blocked.saves() == saves
    assert blocked.log().count(CONFIRMED) == 1


def test_the_banner_keeps_asking_for_a_restart_in_the_next_run(blocked):
    fix(blocked)
    epoch = blocked.settings()["GammaFixEpoch"]
    blocked.restart()
    blocked.wait_for_log(EXPANDED)
    blocked.choose("NIGHT")
    blocked.wait_for_log(REJECTED + " (registry expanded - restart pending?)")
    wait_for_strip(blocked, RESTART, RED)
    blocked.wait_for_saves(1)
    assert blocked.settings()["GammaFixEpoch"] == epoch
    assert EXHAUSTED not in blocked.log()


def test_with_the_range_expanded_an_accepted_ramp_removes_the_banner(blocked):
    fix(blocked)
    show_again(blocked)
    blocked.choose("DAY")
    blocked.wait_for_log("Legacy ramp accepted again (intensity=0.385 brightness=1.000)")
    wait_until(lambda: not strip_shows(blocked, RESTART, RED), "the banner to disappear")
    blocked.click_unit(*STATUS_STRIP)
    assert_no_message_box(blocked)


# Failures

WITHOUT_EFFECT = "C:\\windows\\system32\\hostname.exe"


def put_without_console(desk, windows_path, target):
    """Copies a console program as one without a console, whose window would take the foreground from the popup."""
    program = pefile.PE(desk.prefix.path(windows_path), fast_load=True)
    program.OPTIONAL_HEADER.Subsystem = pefile.SUBSYSTEM_TYPE["IMAGE_SUBSYSTEM_WINDOWS_GUI"]
    desk.prefix.path(target).write_bytes(program.write())


def replace_program_file(desk, windows_path=None):
    """Replaces the running program's file with a console program's (or none). Returns a function that restores it."""
    path = desk.prefix.path(desk.program_path)
    aside = path.with_suffix(".aside")
    path.rename(aside)
    if windows_path:
        put_without_console(desk, windows_path, desk.program_path)

    def restore():
        path.unlink(missing_ok=True)
        aside.rename(path)
    return restore


@pytest.fixture(name="replace_program")
def replace_program_fixture(blocked):
    undo = []
    yield lambda path=None: undo.append(replace_program_file(blocked, path))
    for each in undo:
        each()


def test_a_helper_that_fails_to_start_is_logged_and_the_banner_stays(blocked, replace_program):
    replace_program()
    blocked.click_unit(*STATUS_STRIP)
    blocked.press_button(box_with(blocked, QUESTION), YES)
    blocked.wait_for_log("Gamma-range fix helper failed to launch (rc=2)")
    assert_no_message_box(blocked)
    assert LAUNCHED not in blocked.log()
    assert gamma_range(blocked) is None
    show_again(blocked)
    wait_for_strip(blocked, BLOCKED, RED)


def test_a_helper_without_effect_can_be_started_again_and_another_programs_value_counts(blocked, replace_program):
    replace_program(WITHOUT_EFFECT)
    for times in (1, 2):
        blocked.press_button(ask_for_the_fix(blocked), YES)
        blocked.wait_for_log(LAUNCHED, times)
    assert_no_message_box(blocked)
    show_again(blocked)
    wait_for_strip(blocked, BLOCKED, RED)
    blocked.registry_set(ICM_KEY, ICM_VALUE, 255)
    time.sleep(2.3)  # Longer than the polling interval of the registry.
    assert CONFIRMED not in blocked.log()
    assert blocked.settings()["GammaFixEpoch"] == "0"
    blocked.registry_set(ICM_KEY, ICM_VALUE, 1024)
    blocked.wait_for_log(CONFIRMED)
    wait_until(lambda: int(blocked.settings()["GammaFixEpoch"]) > 0, "the stored time of the fix")
    show_again(blocked)
    wait_for_strip(blocked, RESTART, RED)


def test_quit_while_waiting_for_the_helper_ends_the_program(blocked, replace_program):
    replace_program(WITHOUT_EFFECT)
    blocked.click_unit(*STATUS_STRIP)
    blocked.press_button(box_with(blocked, QUESTION), YES)
    blocked.wait_for_log(LAUNCHED)
    assert blocked.quit() == 0
    assert blocked.screen_is_plain()


# After the restart

def started_at():
    """The start of this machine in seconds since 1970."""
    return int(time.time() - time.clock_gettime(time.CLOCK_MONOTONIC))


@pytest.mark.parametrize("epoch", [pytest.param(1, id="long ago"), pytest.param(-60, id="a minute before the start")])
def test_after_a_restart_without_effect_the_banner_is_removed(start_with, epoch):
    epoch = epoch if epoch > 0 else started_at() + epoch
    desk = start_with(256, GammaFixEpoch=epoch, **LEGACY)
    desk.choose("NIGHT")
    desk.wait_for_log(EXHAUSTED)
    wait_for_strip(desk, HINT, AMBER)
    log = desk.log()
    assert log.index(REJECTED + " (registry expanded - restart pending?)") < log.index(EXHAUSTED)
    desk.click_unit(*STATUS_STRIP)
    assert_no_message_box(desk)
    desk.choose("DAY")
    desk.choose("NIGHT")
    desk.wait_for_log(REJECTED + " (registry expanded - restart pending?)", 2)
    wait_for_strip(desk, HINT, AMBER)
    assert desk.log().count(EXHAUSTED) == 1
    desk.wait_for_setting("GammaFixEpoch", str(epoch))


@pytest.mark.parametrize("epoch", [
    pytest.param(0, id="never"), pytest.param(60, id="a minute after the start"),
    pytest.param(10**9, id="in the future"), pytest.param(None, id="the largest"),
])
def test_until_a_restart_the_banner_asks_for_one(start_with, epoch):
    seconds = 2**64 - 1 if epoch is None else epoch and started_at() + epoch
    desk = start_with(256, GammaFixEpoch=seconds, **LEGACY)
    desk.choose("NIGHT")
    desk.wait_for_log(REJECTED + " (registry expanded - restart pending?)")
    wait_for_strip(desk, RESTART, RED)
    assert EXHAUSTED not in desk.log()


def test_a_deleted_value_brings_back_the_offer(start_with):
    desk = start_with(None, GammaFixEpoch=1, **LEGACY)
    desk.choose("NIGHT")
    desk.wait_for_log(REJECTED)
    wait_for_strip(desk, BLOCKED, RED)
    assert EXHAUSTED not in desk.log()


# The helper by itself

@pytest.fixture(name="stopped")
def stopped_fixture(file_desk):
    """A desk without a running program, settings or registry value."""
    if file_desk.program_running():
        file_desk.kill_program()
    file_desk.registry_delete(ICM_KEY, ICM_VALUE)
    file_desk.clear()
    yield file_desk
    file_desk.registry_delete(ICM_KEY, ICM_VALUE)


@pytest.mark.parametrize("arguments", [
    [SWITCH], ["--before", SWITCH, "after it"], ["x" * 20000, SWITCH], [f"/{SWITCH}ed"],
], ids=["alone", "between others", "after many characters", "within a word"])
def test_the_switch_anywhere_in_the_command_line_only_expands_the_range(stopped, arguments):
    before = sorted(stopped.settings_folder.iterdir()) if stopped.settings_folder.exists() else None
    helper = stopped.start_program(*arguments)
    box = box_with(stopped, DONE)
    assert (box.title, set(box.buttons), int(box.owner, 16)) == ("Ambrel", {OK}, 0)
    assert gamma_range(stopped) == 256
    assert stopped.desktop.facts("registry-get", ICM_KEY, ICM_VALUE)["size"] == 4
    assert stopped.window_facts() is None
    assert not stopped.icon_shown()
    stopped.press_button(box)
    assert helper.wait(TIMEOUT) == 0
    assert (sorted(stopped.settings_folder.iterdir()) if stopped.settings_folder.exists() else None) == before
    assert stopped.magnification_calls() == []


def test_a_start_while_the_helper_runs_is_a_first_instance(stopped):
    helper = stopped.start_program(SWITCH)
    box = box_with(stopped, DONE)
    stopped.start()
    stopped.wait_for_log(EXPANDED)
    assert len(stopped.program_pids()) == 2
    stopped.press_button(box)
    assert helper.wait(TIMEOUT) == 0
    assert stopped.program_running()


def test_a_helper_does_not_show_the_popup_of_the_running_program(desk):
    desk.registry_delete(ICM_KEY, ICM_VALUE)
    desk.wait_for_log(DEFAULT)
    log = desk.events_path.read_bytes()
    first = desk.program
    helper = desk.start_program(SWITCH)
    desk.program = first
    desk.press_button(box_with(desk, DONE))
    assert helper.wait(TIMEOUT) == 0
    assert not desk.popup_visible()
    assert desk.events_path.read_bytes() == log
    desk.registry_delete(ICM_KEY, ICM_VALUE)


@pytest.mark.parametrize("word", ["--expand-gamma", "--Expand-Gamma-Range", "expand-gamma-range"])
def test_a_similar_argument_starts_the_program(stopped, word):
    stopped.start_program(word)
    stopped.wait_for_log(DEFAULT)
    stopped.wait_for_icon()
    assert stopped.message_boxes() == []
    assert gamma_range(stopped) is None


def test_a_helper_that_windows_denies_the_change_reports_it_and_exits_with_1(make_desk):
    desk = make_desk()
    # A key that links to a root that does not exist can neither be opened nor created.
    target = "\\Registry\\Nowhere\\Missing".encode("utf-16-le")
    with open(desk.prefix.folder / "system.reg", "a", encoding="ascii") as file:
        file.write("\n[" + ICM_KEY.partition("\\")[2].replace("\\", "\\\\") + "] 1700000000\n#link\n"
                   f'"SymbolicLinkValue"=hex({LINK}):' + ",".join(f"{byte:02x}" for byte in target) + "\n")
    helper = desk.start_program(SWITCH)
    box = wait_until(desk.message_boxes, "the helper's box")[0]
    assert (box.title, box.text) == ("Ambrel", NOT_ALLOWED)
    desk.press_button(box)
    assert helper.wait(TIMEOUT) == 1
    desk.start()
    desk.wait_for_log(DEFAULT)
