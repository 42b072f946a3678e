#!/usr/bin/env python3
"""Ctrl+C in a terminal while `torv sing` writes leaves the old file and nothing else. Usage: interrupted_test.py COMMAND...
Exits with 77 where there is no terminal to be had."""

import os
import pathlib
import signal
import sys
import tempfile
import time

try:
    import pty
except ImportError:
    print("interrupted: SKIPPED: this system has no terminals for programs")
    raise SystemExit(77)

NOTE = bytes([0, 0x90, 60, 80, 0x83, 0x60, 0x80, 60, 0])  # half a second
NOTES = 5000  # sung for longer than the test takes
TRACK = NOTE * NOTES + bytes([0, 0xFF, 0x2F, 0])
SONG = b"MThd\0\0\0\6\0\1\0\1\1\xE0MTrk" + len(TRACK).to_bytes(4, "big") + TRACK


def wait_until(is_so):
    deadline = time.monotonic() + 60
    while not is_so() and time.monotonic() < deadline:
        time.sleep(0.01)


def sing_and_interrupt(folder, command):
    """The exit status."""
    child, terminal = pty.fork()
    if child == 0:
        os.execvp(command[0], [*command, "sing", str(folder / "song.mid"), "-o", str(folder / "out.wav"), "--quiet"])
    wait_until(lambda: len(list(folder.iterdir())) == 3)
    os.write(terminal, b"\x03")
    try:
        while os.read(terminal, 4096):
            pass
    except OSError:
        pass  # the other end is closed
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])


with tempfile.TemporaryDirectory() as name:
    FOLDER = pathlib.Path(name)
    (FOLDER / "song.mid").write_bytes(SONG)
    (FOLDER / "out.wav").write_bytes(b"old")
    STATUS = sing_and_interrupt(FOLDER, sys.argv[1:])
    assert STATUS in (-signal.SIGINT, 130), STATUS
    # Wine's server takes away what was open a moment after the program itself has gone.
    wait_until(lambda: len(list(FOLDER.iterdir())) == 2)
    LEFT = {path.name: path.stat().st_size for path in FOLDER.iterdir()}
    assert LEFT == {"song.mid": len(SONG), "out.wav": 3}, LEFT
