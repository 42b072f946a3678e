#!/usr/bin/env python3
"""Times the command's mix of sixteen minutes into one, on one core, beside others over the same files:
mix_bench.py build/release/bin/torv [rounds]

Sixteen files of noise, mono and then stereo, 60 s at 44100 Hz, each with its level and pan, into a stereo file; the files
lie in memory where /dev/shm is. Before a time is shown, the result is compared with what the arithmetic gives for
the first second, and with the peers' results sample by sample: all round the sum (sox without dither, ffmpeg's amix
without its scaling, in single precision), so that up to one step lies between. Left to itself ffmpeg pans in whole numbers
and so rounds every track: up to as many steps as there are tracks. The loop is mix_sndfile.cpp.
"""
import array
import math
import os
import pathlib
import shutil
import sys
import tempfile
import wave

from rounds import HEAD, measured, row

RATE = 44100
SECONDS = 60
TRACKS = 16
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

    sides = {"torv mix": [torv, "mix", *ours, "--quiet", "-o", folder / "torv mix.wav"]}
    loop = pathlib.Path(torv).parent / "mix_sndfile"
    if loop.exists():
        sides["a loop on libsndfile"] = [loop, folder / "a loop on libsndfile.wav",
                                         *(word for i, path in enumerate(inputs) for word in (path, *gains(i)))]
    if shutil.which("sox"):
        sides["sox"] = ["sox", "-D", "-M", *inputs, folder / "sox.wav", "remix", *remix]
    if shutil.which("ecasound"):
        chains = (word for i, path in enumerate(inputs)
                  for word in (f"-a:{i}", "-i", path, *(["-chcopy:1,2"] if channels == 1 else []),
                               *(f"-eac:{100 * gain:.9f},{side + 1}" for side, gain in enumerate(gains(i)))))
        sides["ecasound"] = ["ecasound", "-q", "-z:nodb", "-b:1024", *chains, "-a:all", f"-f:16,2,{RATE}", "-o",
                             folder / "ecasound.wav"]
    if shutil.which("ffmpeg"):
        reads = [word for path in inputs for word in ("-i", path)]
        for label, form in (("ffmpeg", ""), ("ffmpeg in floats", "aformat=sample_fmts=fltp,")):
            sides[label] = ["ffmpeg", "-v", "error", "-y", *reads, "-filter_complex", mixed(form), "-c:a", "pcm_s16le",
                            folder / f"{label}.wav"]
    return sides


def compare(folder, inputs, channels, labels):
    ours = samples(folder / "torv mix.wav")
    if ours[:2 * RATE] != expected(inputs, channels, RATE):
        sys.exit("torv mix: the samples are not what the arithmetic gives")
    for label in labels:
        theirs = samples(folder / f"{label}.wav")
        apart = max(map(abs, map(int.__sub__, ours, theirs))) if len(theirs) == len(ours) else math.inf
        if apart > (TRACKS if label == "ffmpeg" else 1):
            sys.exit(f"{label}: {len(theirs)} samples, up to {apart} steps from ours: not the same mix")


def rows(torv, rounds):
    for channels, kind in ((1, "mono"), (2, "stereo")):
        with tempfile.TemporaryDirectory(dir="/dev/shm" if pathlib.Path("/dev/shm").is_dir() else None) as name:
            folder = pathlib.Path(name)
            inputs = [folder / f"track{track}.wav" for track in range(TRACKS)]
            for path in inputs:
                with wave.open(str(path), "wb") as file:
                    file.setparams((channels, 2, RATE, 0, "NONE", ""))
                    file.writeframes(os.urandom(2 * channels * RATE * SECONDS))
            sides = commands(torv, inputs, channels, folder)
            times = measured(sides, rounds, lambda label: (folder / f"{label}.wav").unlink(missing_ok=True))
            compare(folder, inputs, channels, sides)
            yield f"`torv mix`, {TRACKS} {kind} files of {SECONDS} s", times


def missing(torv):
    return [name for name in ("sox", "ecasound", "ffmpeg") if not shutil.which(name)] + (
        [] if (pathlib.Path(torv).parent / "mix_sndfile").exists() else ["a loop on libsndfile"])


if __name__ == "__main__":
    print(HEAD)
    for each in rows(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 5):
        print(row(*each), flush=True)
