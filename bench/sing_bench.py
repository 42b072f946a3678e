#!/usr/bin/env python3
"""Times the whole command on a song of five minutes, on one core: sing_bench.py build/release/bin/torv [rounds]

A synthetic voice, and a person as sings by default; beside them the time that sox takes to make as much sound.
"""
import pathlib
import sys
import tempfile
import wave

from rounds import HEAD, measured, row

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "examples"))
from make_examples import TWINKLE, song  # noqa: E402

VERSES = 10
VOICES = {"a synthetic voice": "Alice", "a person": "Susan"}


def rows(torv, rounds):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        midi = folder / "five_minutes.mid"
        midi.write_bytes(song("Five minutes", 100, {"Voice": TWINKLE * VERSES}))
        sung = folder / "sung.wav"
        sides = {label: [torv, "sing", midi, "--voice", voice, "-o", sung, "--quiet"] for label, voice in VOICES.items()}
        measured(sides, 1)
        with wave.open(str(sung)) as file:
            seconds = file.getnframes() / file.getframerate()
        sides["sox, one plain sawtooth"] = ["sox", "-n", "-r", 44100, "-b", 16, folder / "peer.wav", "synth", seconds,
                                            "sawtooth", 220, "vol", 0.2]
        times = measured(sides, rounds)
        peer = {label: each for label, each in times.items() if label not in VOICES}
        for label in VOICES:
            yield f"`torv sing`, {seconds:.0f} s of song, {label}", {label: times[label], **peer}


if __name__ == "__main__":
    print(HEAD)
    for each in rows(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 5):
        print(row(*each), flush=True)
