"""The watchdog: a small process per lab that owns the X server and cleans up after the lab.

It waits for the end of its standard input, which is reached when the lab closes the pipe or the lab's process is
killed. Then it ends every process of the run, restores a borrowed display's gamma ramp and deletes the run's folder.
All clean-up is done here, so it is the same however the lab ended.
"""

import ctypes
import json
import os
import shutil
import signal
import subprocess
import sys
from pathlib import Path

from .processes import end_processes

PR_SET_PDEATHSIG = 1
KEPT = "keep"


def die_with_parent():
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGTERM)


def start_screen(folder):
    """Starts the X server configured in the folder and returns (process, display)."""
    reader, writer = os.pipe()
    command = ["Xorg", "-displayfd", str(writer), "-config", str(folder / "xorg.conf"),
               "-logfile", str(folder / "xorg.log"), "-nolisten", "tcp", "-novtswitch", "-sharevts", "-noreset",
               "-ac", "-quiet"]
    with open(folder / "xorg.out", "wb") as out:
        # A separate session, because Ctrl-C at the terminal would otherwise end the screen before the clean-up.
        server = subprocess.Popen(command, pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=out, stderr=out,
                                  preexec_fn=die_with_parent, start_new_session=True)
    os.close(writer)
    with os.fdopen(reader) as answer:
        number = answer.readline().strip()
    return server, f":{number}" if number else ""


def end_screen(server):
    server.terminate()
    try:
        server.wait(5)
    except subprocess.TimeoutExpired:
        server.kill()
        server.wait()


def restore_ramp(connection, ramp):
    """Restores a borrowed display's gamma ramp. Ignores a display that no longer exists."""
    from .paths import LabError
    try:
        if ramp:
            connection.set_ramp(ramp)
        connection.close()
    except LabError:
        pass


def watch(folder, borrowed_display):
    connection, ramp, server, display = None, None, None, borrowed_display
    if borrowed_display:
        from .x11 import Connection
        connection = Connection(borrowed_display)
        ramp = connection.ramp() if connection.ramp_size() else None
    else:
        server, display = start_screen(folder)
    print(json.dumps({"display": display}), flush=True)
    sys.stdin.buffer.read()
    if not end_processes(folder / "prefix"):
        print(f"lab: some processes of {folder} do not end", file=sys.stderr)
    if connection:
        restore_ramp(connection, ramp)
    if server:
        end_screen(server)
    if not (folder / KEPT).exists():
        shutil.rmtree(folder, ignore_errors=True)


def main():
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)
    watch(Path(sys.argv[1]), sys.argv[2] if len(sys.argv) > 2 else "")


if __name__ == "__main__":
    main()
