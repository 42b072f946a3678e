#!/usr/bin/env python3
"""Times the whole command on a song of five minutes, on one core: sing_bench.py build/release/bin/torv

Prints how much faster than real time it is, beside the time that sox takes to make as much sound on the same core.
"""
import pathlib
import resource
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "examples"))
from make_examples import TWINKLE, song  # noqa: E402

VERSES = 10


def seconds(command):
    """Of processor: the machine may have other work."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(["taskset", "-c", "0", *command], check=True, capture_output=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


torv = sys.argv[1]
with tempfile.TemporaryDirectory() as folder:
    midi = pathlib.Path(folder) / "five_minutes.mid"
    wave = pathlib.Path(folder) / "five_minutes.wav"
    midi.write_bytes(song("Five minutes", 100, TWINKLE * VERSES))
    sing = min(seconds([torv, "sing", str(midi), "-o", str(wave), "--quiet"]) for _ in range(3))
    length = (wave.stat().st_size - 44) / 2 / 44100
    peer = min(seconds(["sox", "-n", "-r", "44100", "-b", "16", f"{folder}/peer.wav", "synth", f"{length}",
                        "sawtooth", "220", "vol", "0.2"]) for _ in range(3))
print(f"{length:.1f} s of song in {sing:.2f} s: {length / sing:.0f} x real time")
print(f"sox, one plain sawtooth of the same length: {peer:.2f} s, {length / peer:.0f} x real time")
