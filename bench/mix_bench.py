#!/usr/bin/env python3
"""Times the command's mix of sixteen minutes into one, on one core, beside sox and ffmpeg over the same files:
mix_bench.py build/release/bin/torv [folder for the files, best in memory: /dev/shm]

Sixteen mono files of noise, 60 s at 44100 Hz, each with its level and pan, into a stereo file; the sides take turns and
the best of five counts. Before a time is shown, the result is compared with what the arithmetic gives for the first
second, and with the peers' results sample by sample: we cut the sum toward zero, they round it (sox without dither, ffmpeg's
amix without its scaling), so that up to one step lies between. Left to itself ffmpeg pans in whole numbers and so rounds
every track: up to as many steps as there are tracks.
"""
import array
import math
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import wave

RATE = 44100
SECONDS = 60
TRACKS = 16
ROUNDS = 5
LEVELS = [-26 - 0.5 * track for track in range(TRACKS)]
PANS = [(track - 7.5) / 8 for track in range(TRACKS)]


def single(value):
    return struct.unpack("f", struct.pack("f", value))[0]


def gains(track):
    """Left and right, from the single-precision numbers that a mix gets."""
    volume = 10 ** (single(LEVELS[track]) * 0.05)
    q = (single(PANS[track]) + 1) * 0.5
    return 2 * (1 - q) * volume, 2 * q * volume


def samples(path):
    with wave.open(str(path)) as file:
        return array.array("h", file.readframes(file.getnframes()))


def expected(inputs, frames):
    """The mix as it is defined: tracks in single precision, sums in double, cut toward zero."""
    sums = [[0.0] * frames, [0.0] * frames]
    for track, path in enumerate(inputs):
        values = samples(path)[:frames]
        for side, gain in enumerate(gains(track)):
            for i, value in enumerate(array.array("f", (value * gain * 2.0 ** -15 for value in values))):
                sums[side][i] += value
    return array.array("h", (int(sums[i % 2][i // 2] * 32768) for i in range(2 * frames)))


def commands(torv, inputs, folder):
    ours = [f"{path}:{level}:{pan}" for path, level, pan in zip(inputs, LEVELS, PANS)]
    remix = [",".join(f"{i + 1}v{gains(i)[side]:.9f}" for i in range(TRACKS)) for side in (0, 1)]
    def mixed(form):
        pan = ";".join(f"[{i}:a]{form}pan=stereo|c0={gains(i)[0]:.9f}*c0|c1={gains(i)[1]:.9f}*c0[p{i}]"
                       for i in range(TRACKS))
        return pan + ";" + "".join(f"[p{i}]" for i in range(TRACKS)) + f"amix=inputs={TRACKS}:normalize=0"

    yield "torv mix", folder / "torv.wav", [torv, "mix", *ours, "--quiet", "-o", folder / "torv.wav"]
    if shutil.which("sox"):
        yield "sox", folder / "sox.wav", ["sox", "-D", "-M", *inputs, folder / "sox.wav", "remix", *remix]
    if shutil.which("ffmpeg"):
        reads = [word for path in inputs for word in ("-i", path)]
        for label, form in (("ffmpeg", ""), ("ffmpeg, floats", "aformat=sample_fmts=fltp,")):
            output = folder / f"{label}.wav"
            yield label, output, ["ffmpeg", "-v", "error", "-y", *reads, "-filter_complex", mixed(form),
                                  "-c:a", "pcm_s16le", output]


def seconds(command):
    start = time.perf_counter()
    subprocess.run(["taskset", "-c", "0", *map(str, command)], check=True, capture_output=True)
    return time.perf_counter() - start


def main():
    with tempfile.TemporaryDirectory(dir=sys.argv[2] if len(sys.argv) > 2 else None) as name:
        folder = pathlib.Path(name)
        inputs = [folder / f"track{track}.wav" for track in range(TRACKS)]
        for path in inputs:
            with wave.open(str(path), "wb") as file:
                file.setparams((1, 2, RATE, 0, "NONE", ""))
                file.writeframes(os.urandom(2 * RATE * SECONDS))
        sides = list(commands(sys.argv[1], inputs, folder))
        for missing in {"sox", "ffmpeg"} - {label for label, _, _ in sides}:
            print(f"NO ROW of {missing}: it is not installed (apt-get install {missing})")
        times = {label: [] for label, _, _ in sides}
        for _ in range(ROUNDS):
            for label, output, command in sides:
                output.unlink(missing_ok=True)
                times[label].append(seconds(command))
        ours = samples(folder / "torv.wav")
        if ours[:2 * RATE] != expected(inputs, RATE):
            sys.exit("torv mix: the samples are not what the arithmetic gives")
        best = min(times["torv mix"])
        for label, output, _ in sides:
            theirs = samples(output)
            apart = max(map(abs, map(int.__sub__, ours, theirs))) if len(theirs) == len(ours) else math.inf
            if apart > (TRACKS if label == "ffmpeg" else 1):
                sys.exit(f"{label}: {len(theirs)} samples, up to {apart} steps from ours: not the same mix")
            least = min(times[label])
            print(f"{label:14} {least:.3f} s, {SECONDS / least:.0f} x real time, {least / best:.1f} times ours"
                  f"  (samples at most {apart} apart)")


main()
