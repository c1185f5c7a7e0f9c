"""Functions of Windows that fail, and messages of other programs that mean nothing: the program goes on, or restores
what it changed before it ends."""

import pytest

import model
from desk import MARKER, SLIDER_X, SLIDER_Y, wait_until

START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
WM_TIMER, WM_LBUTTONDOWN, WM_POWERBROADCAST, WM_DPICHANGED = 0x113, 0x201, 0x218, 0x2E0
SAVE_TIMER = 1
PBT_POWERSETTINGCHANGE = 0x8013
WILD = (0, 1, 0x10, 0xFFFF, 0x7FFF0000, 0x123456789, 0x7FFFFFFFFFFF, -1)
MINUS_ONE = 0xFFFFFFFF
TRIMMED, LARGE = 65536, 4 << 20
NO_PAUSE = 1e-6  # seconds


def position(slider):
    return SLIDER_Y << 16 | SLIDER_X[slider]


def log_bytes(desk):
    return desk.events_path.read_bytes()


def save(desk):
    """Makes the program log "Saved settings"."""
    desk.send_message(WM_TIMER, SAVE_TIMER)


def test_two_presses_without_a_release_leave_the_sliders_alive(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    for slider in ("WARMTH", "WARMTH", "BRIGHTNESS", "WARMTH"):
        desk.send_message(WM_LBUTTONDOWN, 1, position(slider))
    for up in (20, 30):
        desk.slide("WARMTH", up)
    desk.wait_for_colour(model.dragged(model.dragged(START[0], 20), 30), START[1])
    desk.slide("BRIGHTNESS", -20)
    desk.wait_for_colour(model.dragged(model.dragged(START[0], 20), 30), model.dragged(START[1], -20, 0.1))


@pytest.mark.parametrize("message, wparam", [(WM_DPICHANGED, 96 << 16 | 96), (WM_DPICHANGED, 144 << 16 | 144),
                                             (WM_DPICHANGED, 0xFFFFFFFF), (WM_POWERBROADCAST, PBT_POWERSETTINGCHANGE)],
                         ids=["same dpi", "other dpi", "absurd dpi", "power setting"])
def test_an_address_of_another_program_does_not_end_the_program(desk, message, wparam):
    for address in WILD:
        desk.send_message(message, wparam, address)
    assert desk.program_running()
    desk.press_power()
    desk.wait_for_colour(*START)


def test_a_popup_that_cannot_be_painted_takes_no_processor_time(desk):
    desk.loaded()
    desk.faults.inject(desk.faults.failing("BeginPaint", error=8))
    desk.show()
    desk.wait_for_foreground()
    # The popup has opened, but the program may still be busy with what follows from it. A program that paints in a loop
    # gets a share of every second, however small.
    wait_until(lambda: desk.processor_share(1.0) == 0, "a program at rest")
    desk.press_power()
    desk.wait_for_colour(*START)


def test_a_message_loop_without_messages_restores_everything_and_ends(file_desk):
    desk = file_desk.start_fresh({"UseLegacyGamma": 1})
    desk.press_power()
    desk.wait_for_legacy_colour(*START)
    desk.faults.inject(desk.faults.failing("GetMessageW", MINUS_ONE, 1400, everywhere=True))
    assert desk.wait_for_exit() == 1
    assert desk.ramp_is_plain()
    assert desk.log()[-1] == "No messages from Windows after 10 attempts - ending"
    desk.wait_for_icon(False)


def test_a_message_loop_that_fails_every_other_time_goes_on(desk):
    desk.faults.inject(desk.faults.failing("GetMessageW", MINUS_ONE, 8, every_other=True,
                                            everywhere=True))
    desk.press_power()
    desk.wait_for_colour(*START)
    assert desk.quit() == 0


@pytest.fixture(name="legacy")
def legacy_fixture(file_desk):
    """A desk with the filter on in Legacy Mode."""
    desk = file_desk.start_fresh({"UseLegacyGamma": 1})
    desk.press_power()
    desk.wait_for_legacy_colour(*START)
    return desk


def test_an_identity_ramp_that_is_refused_at_the_end_is_tried_once_more(legacy):
    legacy.faults.inject(legacy.faults.failing("SetDeviceGammaRamp", times=1))
    assert legacy.quit() == 0
    assert legacy.ramp_is_plain()


def test_quit_ends_the_program_even_if_the_window_cannot_be_destroyed(legacy):
    legacy.faults.inject(legacy.faults.failing("DestroyWindow", error=5))
    assert legacy.quit() == 0
    assert legacy.ramp_is_plain()
    legacy.wait_for_icon(False)


def test_a_matrix_that_cannot_be_removed_is_removed_with_its_library(desk):
    desk.press_power()
    desk.wait_for_colour(*START)
    desk.magnification_script(effect=(5,))
    desk.press_power()
    desk.wait_for_plain_screen()
    desk.magnification_script(effect=(0,))
    desk.press_power()
    desk.wait_for_colour(*START)


def test_settings_are_saved_without_timers(desk):
    desk.show()
    desk.faults.inject(desk.faults.failing("SetTimer", error=8))
    desk.press_power()
    desk.wait_for_saves(1)


# events.log during a run

def test_a_log_that_passes_4_megabytes_during_a_run_is_trimmed(desk):
    desk.loaded()
    desk.write_events("x" * 99 + "\n" + "y" * LARGE + "\n")
    save(desk)
    wait_until(lambda: len(log_bytes(desk)) < LARGE, "a shorter log", state=lambda: len(log_bytes(desk)))
    lines = desk.events_text().splitlines()
    assert lines[0] == "y" * (TRIMMED - 1) and len(lines) == 2 and lines[1].endswith("] Saved settings")
    assert sorted(path.name for path in desk.settings_folder.iterdir()) == ["events.log", "settings.ini"]


def test_a_log_that_cannot_be_replaced_is_kept_and_stops_growing(desk):
    desk.loaded()
    content = b"y" * (LARGE + 1)
    desk.write_events(content.decode())
    desk.faults.inject(desk.faults.failing("MoveFileExW", error=5))
    for _ in range(3):
        save(desk)
    assert log_bytes(desk) == content
    assert sorted(path.name for path in desk.settings_folder.iterdir()) == ["events.log", "settings.ini"]


OLD_LOG = b"".join(b"[00:00:00.000] line %d\r\n" % number for number in range(20000))
LOG_END = OLD_LOG[-TRIMMED:]


def unfinished_log(desk):
    """The file that a trim writes beside the log and then renames."""
    return desk.settings_folder / "events.log.new"


def kill_at_start(desk, moment):
    """Starts the program with an old log, kills it once moment() is true, and returns the log that is left."""
    desk.clear()
    unfinished_log(desk).unlink(missing_ok=True)
    desk.write_events(OLD_LOG)
    program = desk.start_program()
    wait_until(moment, "the moment of the kill", state=lambda: log_size(desk), pause=NO_PAUSE)
    program.kill()
    desk.kill_program()
    return log_bytes(desk)


def log_size(desk):
    return desk.events_path.stat().st_size


def is_trimmed(log):
    """Whether a log is the end of the old one, with or without the new run's lines."""
    return log == LOG_END or log.startswith(LOG_END + MARKER.encode())


def test_a_program_killed_at_its_start_leaves_the_old_log_or_its_end(desk):
    def at_once():
        return True

    def trimming():
        return unfinished_log(desk).exists() or trimmed()

    def trimmed():
        return log_size(desk) != len(OLD_LOG)
    # A kill at once comes long before the trim. The unfinished file exists only for a moment, so a kill that waits for it
    # comes during the trim or soon after it.
    left = [kill_at_start(desk, moment) for moment in [at_once] * 3 + [trimming] * 6]
    assert [len(log) for log in left if log != OLD_LOG and not is_trimmed(log)] == []
    assert OLD_LOG in left[:3]
    assert is_trimmed(kill_at_start(desk, trimmed))
