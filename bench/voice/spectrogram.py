#!/usr/bin/python3
"""A picture of a sung line, for looking at: its waves' spectra over time, and where its notes lie.

    bench/voice/spectrogram.py build/release/bin/torv "a-ma-zing grace" picture.png [--voice Roger] [--top 8000] [--dpi 100]

Hyphens part the syllables, of which each has a note of its own. Needs python3-matplotlib and python3-numpy.
"""
import argparse
import pathlib
import random
import sys
import tempfile

try:
    import matplotlib
    import numpy as np
    from PIL import Image
except ImportError:
    sys.exit("SKIPPED: nothing to draw with (apt-get install python3-matplotlib python3-numpy; run it by /usr/bin/python3)")
matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402

import phrases  # noqa: E402
import singers  # noqa: E402

RATE = 48000
WINDOW = 0.006  # seconds: formants are seen, and single periods of low voices
HOP = 0.002
RANGE_DB = 70
COLOURS = 32  # as many are told apart, and the file stays small


def decibels(samples):
    """Levels, one column for each moment."""
    width, hop = int(WINDOW * RATE), int(HOP * RATE)
    frames = np.lib.stride_tricks.sliding_window_view(samples, width)[::hop] * np.hanning(width)
    return 20 * np.log10(np.abs(np.fft.rfft(frames, 2048)).T + 1e-9)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("torv")
    parser.add_argument("line")
    parser.add_argument("picture", type=pathlib.Path)
    parser.add_argument("--voice", default="Roger")
    parser.add_argument("--top", type=float, default=8000, help="Hz")
    parser.add_argument("--dpi", type=float, default=100)
    options = parser.parse_args()
    torv = str(pathlib.Path(options.torv).resolve())
    voice = next((voice for voice in singers.voices(torv) if voice.name == options.voice), None)
    if not voice:
        sys.exit(f"spectrogram: no voice {options.voice}; `torv voices` lists them")
    phrase = phrases.phrase(options.line.split(), 0.38, 0.76, random.Random(phrases.SEED))
    with tempfile.TemporaryDirectory() as folder:
        samples, [(begin, end)] = singers.Sung(torv, voice, pathlib.Path(folder), rate=RATE).whole([phrase], "line")
    first = begin - singers.BEFORE
    levels = decibels(samples[int(first * RATE):int((end + singers.AFTER) * RATE)])
    figure, axes = pyplot.subplots(figsize=(2 + 2.5 * (end - begin), 5), layout="constrained")
    axes.imshow(levels, origin="lower", aspect="auto", cmap="magma", vmin=levels.max() - RANGE_DB, vmax=levels.max(),
                extent=(-singers.BEFORE, levels.shape[1] * HOP - singers.BEFORE, 0, RATE / 2))
    now = 0.0
    for note in phrase.notes:
        axes.axvline(now, color="white", linewidth=0.5)
        axes.text(now, options.top, f" {note.lyric}", color="white", verticalalignment="top")
        now += note.seconds
    figure.set_dpi(options.dpi)
    axes.set(ylim=(0, options.top), xlabel="seconds", ylabel="Hz", title=f"{voice.name}: {options.line}")
    figure.canvas.draw()
    shown = Image.fromarray(np.asarray(figure.canvas.buffer_rgba())).convert("RGB")
    shown.quantize(COLOURS).save(options.picture, optimize=True)


if __name__ == "__main__":
    main()
