#!/usr/bin/env python3
"""What `torv play` sends to the sound server is what `torv sing` writes: a sink of a private PulseAudio is recorded while
the example song plays into it. Usage: heard_test.py SONG COMMAND...  Exits with 77 where there is no PulseAudio."""

import array
import os
import shutil
import subprocess
import sys
import tempfile
import time
import wave

SKIPPED = 77
RATE = 44100
SECONDS = 5
LATENCY = 0.3  # what a sound server may still have of the end when it is closed
TRIES = 6  # a loaded machine may let the sound server run dry
SLIPS_OF_WINE = 20  # its output loses samples, most of all while it begins
NEARBY = 100  # samples, around a slip
PIECE = 500  # samples that agree behind it
MOST_DIFFERENCE = 2  # of 65536: on Windows the system's mixer calculates in floats


def run(command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.DEVNULL, timeout=120, **options)


class SoundServer:
    """A PulseAudio of our own, with one sink that goes nowhere."""

    def __init__(self, folder):
        self.environment = dict(os.environ, XDG_RUNTIME_DIR=folder, PULSE_RUNTIME_PATH=folder, HOME=folder)
        self.environment.pop("PULSE_SERVER", None)
        sink = "module-null-sink sink_name=heard rate=44100 sink_properties=device.description=Heard"
        self.server = subprocess.Popen(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L", sink, "-L",
             f"module-native-protocol-unix socket={folder}/native"],
            env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.environment["PULSE_SERVER"] = f"unix:{folder}/native"
        for _ in range(100):
            if subprocess.run(["pactl", "info"], env=self.environment, capture_output=True).returncode == 0:
                return
            time.sleep(0.1)
        self.close()
        print("heard: SKIPPED: PulseAudio does not start here, so that nothing was heard")
        raise SystemExit(SKIPPED)

    def record(self, path):
        with open(path, "wb") as file:
            return subprocess.Popen(
                ["parec", "-d", "heard.monitor", "--format=s16le", f"--rate={RATE}", "--channels=2",
                 "--latency-msec=50"], env=self.environment, stdout=file)

    def close(self):
        self.server.terminate()
        self.server.wait()


def left_side(path):
    with open(path, "rb") as file:
        content = file.read()
    samples = array.array("h")
    samples.frombytes(content[: len(content) // 4 * 4])
    return samples[0::2]


def mono_wave(path):
    with wave.open(path) as file:
        samples = array.array("h")
        samples.frombytes(file.readframes(file.getnframes()))
        return samples


def begin_of_sound(samples):
    return next((i for i, sample in enumerate(samples) if abs(sample) > MOST_DIFFERENCE), len(samples))


def compare(heard, sung, most_slips):
    """None, or what is wrong. Both begin with silence of some length; the song's is known, the recording's is not. As many
    slips are passed over: samples that got lost on the way, or a beginning that was told a little too early or late."""
    begin, end = begin_of_sound(sung), int((SECONDS - LATENCY) * RATE)
    at, to_heard = begin, begin_of_sound(heard) - begin
    if len(heard) < end + to_heard + NEARBY:
        return f"only {(len(heard) - begin - to_heard) / RATE:.2f} s were heard"
    for _ in range(most_slips + 1):
        at += equal_length(heard, at + to_heard, sung, at, end - at)
        if at >= end:
            return None
        wrong = f"{(at - begin) / RATE:.3f} s into the sound {heard[at + to_heard]} was heard, not {sung[at]}"
        at = min(at + NEARBY, end)
        length = min(PIECE, end - at)
        to_heard = next((place for place in range(to_heard - NEARBY, to_heard + NEARBY)
                         if equal_length(heard, at + place, sung, at, length) == length), None)
        if to_heard is None:
            break
    return wrong


def equal_length(heard, heard_from, sung, sung_from, length):
    return next((i for i in range(length) if abs(heard[heard_from + i] - sung[sung_from + i]) > MOST_DIFFERENCE), length)


def main():
    if not all(shutil.which(tool) for tool in ("pulseaudio", "pactl", "parec")):
        print("heard: SKIPPED: PulseAudio is not installed, so that nothing was heard")
        return SKIPPED
    song, command = sys.argv[1], sys.argv[2:]
    with tempfile.TemporaryDirectory() as folder:
        run(command + ["sing", song, "-o", os.path.join(folder, "sung.wav"), "--quiet"])
        sung = mono_wave(os.path.join(folder, "sung.wav"))
        server = SoundServer(folder)
        # Wine keeps its own folder.
        environment = dict(server.environment, HOME=os.environ.get("HOME", folder), SDL_AUDIODRIVER="pulseaudio")
        try:
            for _ in range(TRIES):
                path = os.path.join(folder, "heard.raw")
                recording = server.record(path)
                time.sleep(0.5)
                run(command + ["play", song, "--to", f"{SECONDS}s", "--quiet"], env=environment)
                time.sleep(0.5)
                recording.terminate()
                recording.wait()
                wrong = compare(left_side(path), sung, SLIPS_OF_WINE if "wine" in command[0] else 0)
                if wrong is None:
                    print(f"heard: {SECONDS} s as they are sung")
                    return 0
                print(f"heard: {wrong}")
        finally:
            server.close()
    return 1


if __name__ == "__main__":
    sys.exit(main())
