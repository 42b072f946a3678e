#!/usr/bin/env python3
"""Drives the editor in a display of its own with keys and mouse: makes a song, plays it in a loop, saves, exports, opens
it again, and looks at what came out.

    drive_test.py EDITOR [PICTURE.png]     77: skipped, there is no virtual display here
"""
import json
import os
import pathlib
import select
import shutil
import subprocess
import sys
import tempfile
import time

MISSING = [tool for tool in ("Xvfb", "xdotool", "import") if not shutil.which(tool)]
if MISSING:
    print("SKIPPED: the editor is not driven, for want of " + ", ".join(MISSING) + " (scripts/setup --tests installs them)")
    sys.exit(77)

PATIENCE = 120  # seconds, for a busy machine
PAPER = (268, 78)  # where the roll's paper begins in a window of 1280 x 800
QUARTER = 96  # points
ROW = 15
TOP_KEY = 84  # in the first row


def x_of(quarters):
    return PAPER[0] + int(quarters * QUARTER)


def y_of(key):
    return PAPER[1] + (TOP_KEY - key) * ROW + ROW // 2


class Editor:
    def __init__(self, program, folder, display, *arguments):
        self.environment = {**os.environ, "DISPLAY": display, "SDL_VIDEODRIVER": "x11", "SDL_RENDER_DRIVER": "software",
                            "SDL_AUDIODRIVER": "dummy", "TORV_USER_DATA": str(folder / "user")}
        self.process = subprocess.Popen([program, *arguments], cwd=folder, env=self.environment)
        self.window = ""
        try:
            # Its title counts notes once it draws: before that the window may yet be replaced for its renderer.
            self.window = self.wait("a window", lambda: self.tool("search", "--name", "notes.*TORV editor", check=False)).split()[0]
            self.wait("the keyboard", self.focus)
        except BaseException:
            self.process.kill()  # nobody has this object, and who runs the test would wait for its process
            raise

    def tool(self, *arguments, check=True):
        run = subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, capture_output=True, text=True,
                             timeout=PATIENCE)
        assert run.returncode == 0 or not check, run.stderr
        return run.stdout.strip()

    def wait(self, what, condition):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            assert self.process.poll() is None, f"the editor has ended ({self.process.returncode}) while {what} was waited for"
            if result := condition():
                return result
            time.sleep(0.02)
        raise AssertionError(f"{what} did not come; the title is {self.window and self.title()!r}")

    def focus(self):
        """A window that is not on the screen yet refuses."""
        self.tool("windowfocus", self.window, check=False)
        return self.tool("getwindowfocus", check=False) == self.window

    def title(self):
        return self.tool("getwindowname", self.window)

    def expect(self, *parts):
        self.wait(f"a title with {parts}", lambda: all(part in self.title() for part in parts))

    def key(self, *keys):
        self.tool("key", "--delay", 30, *keys)

    def type(self, text):
        self.tool("type", "--delay", 30, text)

    def drag(self, start, end, button=1):
        """By way of the middle, in steps that a frame sees each."""
        self.tool("mousemove", *start, "sleep", 0.1, "mousedown", button, "sleep", 0.1)
        for share in (0.3, 0.7, 1):
            self.tool("mousemove", *(int(a + share * (b - a)) for a, b in zip(start, end)), "sleep", 0.1)
        self.tool("mouseup", button, "sleep", 0.1)

    def look(self, picture):
        run = ["import", "-window", "root", str(picture)]
        return subprocess.run(run, env=self.environment, check=False, timeout=PATIENCE).returncode == 0

    def end(self):
        self.key("ctrl+q")
        assert self.process.wait(PATIENCE) == 0, "the editor did not end as it should"


def make_song(editor, folder):
    for i, key in enumerate((60, 62, 64, 65)):
        editor.drag((x_of(i) + 3, y_of(key)), (x_of(i + 1) - 6, y_of(key)))
        editor.expect(f"{i + 1} notes")
    editor.key("ctrl+z")
    editor.expect("3 notes")
    editor.key("ctrl+shift+z")
    editor.expect("4 notes")
    editor.key("n")  # a fifth one by the keyboard, in front of all, and away again
    editor.expect("5 notes")
    editor.key("Delete")
    editor.expect("4 notes")
    editor.drag((x_of(0) + 40, y_of(60)), (x_of(0) + 40, y_of(60)))
    editor.key("Return")
    editor.type("twin-kle night")
    editor.key("Return")
    editor.drag((60, 398), (x_of(3) + 30, y_of(65)))  # the first vibrato
    editor.drag((x_of(0), 740), (x_of(4), 650))  # dynamics that grow
    editor.drag((x_of(0) + 2, PAPER[1] - 12), (x_of(2), PAPER[1] - 12))  # the loop
    editor.key("space")
    editor.expect("playing")
    editor.key("F8")  # louder, while it plays
    editor.key("ctrl+s")
    editor.key("ctrl+a")
    editor.type(str(folder / "first.torv"))
    editor.key("Return")
    editor.expect("first.torv - 4 notes, playing")


def check_song(path):
    song = json.loads(path.read_text())
    track = song["tracks"][0]
    notes = [(note["tick"], note["length"], note["key"], note.get("lyric", "")) for note in track["notes"]]
    assert notes == [(0, 480, 60, "twin-"), (480, 480, 62, "kle"), (960, 480, 64, "night"), (1440, 480, 65, "")], notes
    assert [bool(note.get("vibrato")) for note in track["notes"]] == [False, False, False, True], track["notes"]
    levels = [value for _, value in track["dynamics"]]
    assert levels[:-1] == sorted(levels[:-1]) and levels[0] < 20 and levels[-2] > 90, levels
    assert track["volume"] == 1


def main(program, picture):
    display, wanted = os.pipe()
    # A server that resets itself when its last client goes would take the editor with it that is just coming.
    server = subprocess.Popen(["Xvfb", "-displayfd", str(wanted), "-screen", "0", "1280x800x24", "-noreset"],
                              pass_fds=[wanted], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(wanted)
    numbers = os.fdopen(display)  # left open: the server would end at a pipe that is closed
    editor = None
    try:
        assert select.select([display], [], [], PATIENCE)[0], "Xvfb does not say which display is its own"
        name = ":" + numbers.readline().strip()
        assert name != ":", "Xvfb has ended: see what it says when it is started by hand"
        with tempfile.TemporaryDirectory() as temporary:
            folder = pathlib.Path(temporary)
            editor = Editor(program, folder, name)
            make_song(editor, folder)
            editor.key("Left", "Right")  # the dialog has left the screen when these were taken
            editor.wait("the picture", lambda: editor.look(picture or folder / "picture.png"))
            editor.key("space")
            editor.wait("silence", lambda: "playing" not in editor.title())
            for keys, ending in (("ctrl+e", "wav"), ("ctrl+m", "mid")):
                editor.key(keys, "Return")
                editor.wait(f"a {ending} file",
                            lambda: (folder / f"first.{ending}").exists() and "singing" not in editor.title())
            editor.end()
            check_song(folder / "first.torv")
            assert (folder / "first.wav").stat().st_size > 300000, "two seconds and more, in stereo"
            assert (folder / "first.mid").read_bytes().startswith(b"MThd")

            editor = Editor(program, folder, name, "first.torv")
            editor.expect("first.torv - 4 notes")
            editor.key("ctrl+shift+s")
            editor.key("ctrl+a")
            editor.type(str(folder / "second.torv"))
            editor.key("Return")
            editor.expect("second.torv")
            editor.end()
            assert (folder / "first.torv").read_bytes() == (folder / "second.torv").read_bytes()
    finally:
        if editor:
            editor.process.kill()
        server.terminate()
        try:
            server.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            server.kill()
    print("the editor made, played, saved and opened a song")


main(os.path.abspath(sys.argv[1]), sys.argv[2] if len(sys.argv) > 2 else None)
