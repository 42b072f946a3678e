#!/usr/bin/env python3
"""Times the command's mix of sixteen minutes into one, on one core, beside sox and ffmpeg over the same files:
mix_bench.py build/release/bin/torv [folder for the files, best in memory: /dev/shm]

Sixteen files of noise, mono and then stereo, 60 s at 44100 Hz, each with its level and pan, into a stereo file; the sides
take turns and the best of five counts. Before a time is shown, the result is compared with what the arithmetic gives for
the first second, and with the peers' results sample by sample: all round the sum (sox without dither, ffmpeg's amix
without its scaling, in single precision), so that up to one step lies between. Left to itself ffmpeg pans in whole numbers
and so rounds every track: up to as many steps as there are tracks.
"""
import array
import math
import os
import pathlib
import resource
import shutil
import subprocess
import sys
import tempfile
import wave

RATE = 44100
SECONDS = 60
TRACKS = 16
ROUNDS = 5
LEVELS = [-26 - 0.5 * track for track in range(TRACKS)]
PANS = [(track - 7.5) / 8 for track in range(TRACKS)]


def gains(track):
    """Left and right."""
    volume = 10 ** (LEVELS[track] / 20)
    q = (PANS[track] + 1) * 0.5
    return 2 * (1 - q) * volume, 2 * q * volume


def samples(path):
    with wave.open(str(path)) as file:
        return array.array("h", file.readframes(file.getnframes()))


def expected(inputs, channels, frames):
    """The mix as it is defined: summed in double precision, rounded to the nearest."""
    sums = [0.0] * (2 * frames)
    for track, path in enumerate(inputs):
        values = samples(path)[:channels * frames]
        for side, gain in enumerate(gains(track)):
            for i in range(frames):
                sums[2 * i + side] += gain * (values[channels * i + side * (channels - 1)] / 32768)
    return array.array("h", (int(math.copysign(math.floor(abs(x) * 32768 + 0.5), x)) for x in sums))


def commands(torv, inputs, channels, folder):
    ours = [f"{path}:{level}:{pan}" for path, level, pan in zip(inputs, LEVELS, PANS)]
    remix = [",".join(f"{channels * i + 1 + side * (channels - 1)}v{gains(i)[side]:.9f}" for i in range(TRACKS))
             for side in (0, 1)]

    def mixed(form):
        pan = ";".join(f"[{i}:a]{form}pan=stereo|c0={gains(i)[0]:.9f}*c0|c1={gains(i)[1]:.9f}*c{channels - 1}[p{i}]"
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
    """Of processor: the machine may have other work."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(["taskset", "-c", "0", *map(str, command)], check=True, capture_output=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def measure(channels):
    with tempfile.TemporaryDirectory(dir=sys.argv[2] if len(sys.argv) > 2 else None) as name:
        folder = pathlib.Path(name)
        inputs = [folder / f"track{track}.wav" for track in range(TRACKS)]
        for path in inputs:
            with wave.open(str(path), "wb") as file:
                file.setparams((channels, 2, RATE, 0, "NONE", ""))
                file.writeframes(os.urandom(2 * channels * RATE * SECONDS))
        sides = list(commands(sys.argv[1], inputs, channels, folder))
        for missing in {"sox", "ffmpeg"} - {label for label, _, _ in sides}:
            print(f"NO ROW of {missing}: it is not installed (apt-get install {missing})")
        times = {label: [] for label, _, _ in sides}
        for _ in range(ROUNDS):
            for label, output, command in sides:
                output.unlink(missing_ok=True)
                times[label].append(seconds(command))
        ours = samples(folder / "torv.wav")
        if ours[:2 * RATE] != expected(inputs, channels, RATE):
            sys.exit("torv mix: the samples are not what the arithmetic gives")
        best = min(times["torv mix"])
        for label, output, _ in sides:
            theirs = samples(output)
            apart = max(map(abs, map(int.__sub__, ours, theirs))) if len(theirs) == len(ours) else math.inf
            if apart > (TRACKS if label == "ffmpeg" else 1):
                sys.exit(f"{label}: {len(theirs)} samples, up to {apart} steps from ours: not the same mix")
            least = min(times[label])
            print(f"{'stereo' if channels == 2 else 'mono'}: {label:14} {least:.3f} s, {SECONDS / least:.0f} x real time,"
                  f" {least / best:.1f} times ours  (samples at most {apart} apart)")


for each in (1, 2):
    measure(each)
