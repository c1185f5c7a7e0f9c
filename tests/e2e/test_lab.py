"""The lab itself: it runs on one processor, closing it ends every process, and failures and hangs save evidence."""

import os
import select
import subprocess
import sys
import threading
import time
from contextlib import suppress
from pathlib import Path

import pytest

from ambrel_lab import console_runner, paths
from ambrel_lab import lab as lab_module
from ambrel_lab.console import SIGNALLED, NoOutput
from ambrel_lab.console_runner import evidence_of_a_hang
from ambrel_lab.paths import DEFAULT_BUILD
from ambrel_lab.processes import end_processes, has_memory, processes_of
from ambrel_lab.run import PROCESSOR, least_used_processor
from ambrel_lab.watchdog import KEPT
from desk import BUILD, TIMEOUT, Lab, LabError, wait_until

ROUNDS = 100
SHARED_DATA = 0x7FFE0000  # the address of Windows' data for all processes
# System call 60 of x86-64 Linux ends only the calling thread.
LOSES_ITS_FIRST_THREAD = """
import ctypes, threading, time
threading.Thread(target=time.sleep, args=(600,)).start()
ctypes.CDLL(None).syscall(60, 0)
"""
# The clean-up of a Linux library that takes longer than Wine's server waits for the end of a process.
SLOW_EXIT = """
int atexit(void (*function)(void));
unsigned sleep(unsigned seconds);
static void clean_up(void) { sleep(2); }
__attribute__((constructor)) static void load(void) { atexit(clean_up); }
"""


def processors_of(processes):
    """The sets of processors that the threads of these processes may use."""
    used = set()
    for pid in processes:
        with suppress(FileNotFoundError, ProcessLookupError):  # It has ended.
            used |= {frozenset(os.sched_getaffinity(int(thread))) for thread in os.listdir(f"/proc/{pid}/task")}
    return used


def test_a_lab_runs_on_one_processor(tmp_path):
    before = os.sched_getaffinity(0)
    with Lab(evidence=tmp_path / "evidence", **BUILD) as lab:
        lab.desktop.open()
        watchdog = lab.run.watchdog.pid
        screen = Path(f"/proc/{watchdog}/task/{watchdog}/children").read_text(encoding="ascii").split()
        assert screen
        used = processors_of([watchdog, *screen, *processes_of(lab.prefix.folder)])
        assert used == {frozenset(lab.run.processors)} and len(lab.run.processors) == 1
    assert os.sched_getaffinity(0) == before


def test_a_run_takes_the_processor_with_the_fewest_runs(tmp_path):
    numbers = sorted(os.sched_getaffinity(0))
    for run, number in enumerate([*numbers, *numbers[:-1]]):
        (tmp_path / str(run)).mkdir()
        (tmp_path / str(run) / PROCESSOR).write_text(str(number), encoding="ascii")
    (tmp_path / "on all processors").mkdir()
    for run in range(3):
        (tmp_path / f"kept {run}").mkdir()
        (tmp_path / f"kept {run}" / PROCESSOR).write_text(str(numbers[-1]), encoding="ascii")
        (tmp_path / f"kept {run}" / KEPT).touch()
    assert least_used_processor(tmp_path) == numbers[-1]


def test_closing_a_prefix_ends_processes_during_an_exec(tmp_path):
    script = tmp_path / "again.sh"
    script.write_text('exec /bin/sh "$0"\n')
    for _ in range(ROUNDS):
        children = [subprocess.Popen(["/bin/sh", script], env={"WINEPREFIX": str(tmp_path)}) for _ in range(3)]
        try:
            time.sleep(0.01)
            assert end_processes(tmp_path, TIMEOUT)
            wait_until(lambda: all(child.poll() is not None for child in children), "the exit of all three")
        finally:
            for child in children:
                child.kill()
                child.wait()


def test_closing_a_prefix_ends_processes_whose_first_thread_has_ended(tmp_path):
    child = subprocess.Popen([sys.executable, "-c", LOSES_ITS_FIRST_THREAD], env={"WINEPREFIX": str(tmp_path)},
                             stdout=subprocess.PIPE)
    try:
        wait_until(lambda: not has_memory(child.pid), "the end of the first thread")
        assert end_processes(tmp_path, TIMEOUT)
        # Its output ends with its last thread.
        ready, _, _ = select.select([child.stdout], [], [], TIMEOUT)
        assert ready and child.stdout.read() == b""
    finally:
        child.kill()
        child.wait()


def test_the_heap_of_a_program_does_not_cover_the_data_that_windows_shares(desk):
    heap = next(line for line in Path(f"/proc/{desk.program_pids()[0]}/maps").read_text().splitlines() if "[heap]" in line)
    start, end = (int(address, 16) for address in heap.split()[0].split("-"))
    # Without randomisation it begins behind the loader.
    assert SHARED_DATA - 0x4000000 < start < end < SHARED_DATA


def test_a_process_that_ends_slowly_keeps_its_exit_code(make_desk, tmp_path):
    source, library = tmp_path / "slow.c", tmp_path / "slow.so"
    source.write_text(SLOW_EXIT)
    subprocess.run(["clang", "-shared", "-fPIC", source, "-o", library], check=True)
    desk = make_desk()
    environment = desk.desktop.environment
    environment["LD_PRELOAD"] = " ".join(filter(None, [environment.get("LD_PRELOAD"), str(library)]))
    desk.start_fresh()
    assert desk.quit() == 0


def test_a_lab_that_does_not_start_saves_evidence(monkeypatch, tmp_path):
    def refuse(display):
        raise LabError(f"no X server answers on {display}")
    monkeypatch.setattr(lab_module, "Connection", refuse)
    with pytest.raises(LabError, match="no X server answers") as error:
        with Lab(evidence=tmp_path / "evidence", **BUILD):
            pass
    assert str(tmp_path / "evidence") in error.value.__notes__[0]
    assert "dummy" in (tmp_path / "evidence" / "xorg.log").read_text()
    assert "screen" in (tmp_path / "evidence" / "missing.txt").read_text()


def test_a_lab_saves_evidence_when_its_block_fails(tmp_path):
    with pytest.raises(ZeroDivisionError) as error:
        with Lab(evidence=tmp_path / "evidence", **BUILD) as lab:
            lab.desktop.open()
            raise ZeroDivisionError
    assert error.value.__notes__ == [f"evidence: {tmp_path / 'evidence'}"]
    assert "labtool.exe" in (tmp_path / "evidence" / "processes.txt").read_text()
    assert (tmp_path / "evidence" / "screen.png").stat().st_size


def test_a_hang_saves_evidence_and_continues(desk, tmp_path, capsys):
    folder = tmp_path / "evidence"
    with evidence_of_a_hang(desk, folder, timeout=0.1):
        wait_until(lambda: "evidence" in capsys.readouterr().err, "the message about the evidence")
    assert "ambrel.exe" in (folder / "processes.txt").read_text()
    assert (folder / "screen.png").stat().st_size and "Ambrel2Class" in (folder / "windows.txt").read_text()


def test_a_program_that_ends_in_time_saves_no_evidence(desk, tmp_path):
    before = threading.active_count()
    with evidence_of_a_hang(desk, tmp_path / "evidence", timeout=TIMEOUT):
        assert threading.active_count() == before + 1
    # The thread that would save the evidence ends without doing so.
    wait_until(lambda: threading.active_count() == before, "the end of the thread", timeout=2 * TIMEOUT)
    assert not (tmp_path / "evidence").exists()


@pytest.fixture
def open_input():
    """A standard input that stays open and empty."""
    before, (source, sink) = os.dup(0), os.pipe()
    os.dup2(source, 0)
    yield
    os.dup2(before, 0)
    for descriptor in (before, source, sink):
        os.close(descriptor)


def test_a_program_that_prints_nothing_is_started_once_more(open_input, tmp_path, monkeypatch, capfd):
    """The tool waits for commands and prints nothing until one arrives."""
    monkeypatch.setattr(console_runner, "FAILURES", tmp_path)
    monkeypatch.setattr(paths, "REPETITIONS", tmp_path / "repetitions.log")
    monkeypatch.setattr(console_runner, "end_on_signals", lambda: None)
    monkeypatch.setattr(console_runner, "START_TIMEOUT", 1.0)
    tool = Path(BUILD.get("build_dir", DEFAULT_BUILD)) / "lab" / "labtool.exe"
    assert console_runner.main(["--test", str(tool), "serve"]) == SIGNALLED - 1
    assert capfd.readouterr().err.count("labtool.exe has printed nothing for 1 s") == 2
    assert "labtool.exe" in (tmp_path / "labtool" / "processes.txt").read_text()
    assert (tmp_path / "repetitions.log").read_text() == f"{tool} has printed nothing for 1 s; started once more\n"


def test_the_second_start_of_a_program_counts_and_the_first_is_recorded(tmp_path, monkeypatch):
    results = [NoOutput("nothing"), 3]
    repetitions = tmp_path / "repetitions.log"
    repetitions.write_text("an earlier program\n")

    def run_console(*_, **__):
        result = results.pop(0)
        if isinstance(result, Exception):
            raise result
        return result
    monkeypatch.setattr(paths, "REPETITIONS", repetitions)
    monkeypatch.setattr(console_runner, "run_console", run_console)
    monkeypatch.setattr(console_runner, "save_evidence", lambda *_: None)
    monkeypatch.setattr(console_runner, "end_on_signals", lambda: None)
    assert console_runner.main(["--test", "any.exe"]) == 3 and not results
    assert repetitions.read_text() == "an earlier program\nnothing; started once more\n"


def test_a_covered_menu_is_opened_again_and_recorded(desk, tmp_path, monkeypatch):
    topmost = [False, True, True, True]
    monkeypatch.setattr(paths, "REPETITIONS", tmp_path / "repetitions.log")
    monkeypatch.setattr(desk, "topmost_at", lambda *_: topmost.pop(0))
    desk.open_menu()
    recorded = (tmp_path / "repetitions.log").read_text().splitlines()
    assert len(recorded) == 1 and recorded[0].startswith("the menu was covered by ") and not topmost
