#!/usr/bin/python3
"""Finds the colours of a bank: what the spectrum of each of a recorded person's sounds gains so that sung lines are taken
for what they are.

    bench/voice/colours.py build/release --voice Roger [--rounds 10]

In each round the voice sings COLOURING_LINES, in other keys than the round before. Where the listener of voice_bench.py
takes a line for another one, both are laid over what it heard, and every sound moves the way in which the right one gains
on the wrong one (a gradient of the mutual information: Bahl et al., ICASSP 1986), at most 0.6 of a cepstrum's unit a round
and 2.5 dB (RMS) in all. The mean of the last half of the rounds is written to companions/rve/bank/colours, where the
next run begins, and the bank in the build is made anew.
"""
import argparse
import collections
import pathlib
import subprocess
import tempfile

import numpy as np

import voice_bench  # noqa: F401 - tells what is missing
import phrases
import singers
from acoustic_model import FILTERS, HIGHEST, LIFTER, LOWEST, STREAM, AcousticModel, with_slopes
from listener import Listener, english_dictionary, errors
from texts import COLOURING_LINES

FOLDER = pathlib.Path(__file__).parents[2] / "companions/rve/bank/colours"
BANKS = {"Susan": "slt", "Roger": "rms", "Angus": "awb"}
SIZES = {"slt": 0.88}  # of recorded_persons.cpp: at which share of the recording's frequencies a sound is sung
PHONES = {"AH": ("ah", "ax")}  # the bank's where they are not the listener's, in small letters
KEYS = (0, -3, 3, -1, 2)  # semitones over the voice's home
COEFFICIENTS = 14  # after the level
WARP = 0.42  # of bank_format.h
BANK_TOP = 8000  # Hz
DECIBELS = 20 / np.log(10)
STRETCH = FILTERS * 2  # squared length of what a coefficient of 1 makes of the listener's cepstrum
PACE, MOST_STEP, MOST = 1.0, 0.6, 2.5
STEADIER = 60  # frames that a sound has at least, lest seldom ones move far
CLEAR = 15  # frames of a sound that was understood


def basis(bank):
    """How the listener's plain cepstra change with the coefficients of a colour: an array of (13, 14)."""
    mel = np.linspace(*(2595 * np.log10(1 + hz / 700) for hz in (LOWEST, HIGHEST)), FILTERS + 2)[1:-1]
    hertz = 700 * (10 ** (mel / 2595) - 1)
    angle = np.pi * np.minimum(hertz / SIZES.get(bank, 1) / BANK_TOP, 1)
    warped = angle + 2 * np.arctan(WARP * np.sin(angle) / (1 - WARP * np.cos(angle)))
    powers = 2 * np.cos(np.outer(warped, np.arange(1, COEFFICIENTS + 1)))
    cosines = np.cos(np.pi * np.outer(np.arange(STREAM), np.arange(FILTERS) + 0.5) / FILTERS) * np.sqrt(2 / FILTERS)
    cosines[0] /= np.sqrt(2)
    return cosines @ powers


def read(bank):
    colours = collections.defaultdict(lambda: np.zeros(COEFFICIENTS))
    for line in (FOLDER / f"{bank}.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            phone, *values = line.split()
            colours[phone][:len(values)] = np.array(values, float) / 100
    return colours


def write(bank, colours):
    rows = [f"{phone:3}" + "".join(f"{round(100 * value):4}" for value in colours[phone]) for phone in sorted(colours)]
    (FOLDER / f"{bank}.txt").write_text("# Found by bench/voice/colours.py: hundredths, without the level.\n" +
                                        "".join(f"{row}\n" for row in rows))


def listen(voice, torv, key, lines, who, model, dictionary):
    """How each sound should change: sums of slopes for the listener's plain cepstra, frames, and the share of words that
    came across."""
    sums, frames = collections.defaultdict(lambda: np.zeros(STREAM)), collections.Counter()
    wrong = words = 0
    with tempfile.TemporaryDirectory() as folder:
        singer = singers.Sung(torv, voice, pathlib.Path(folder), key)
        for line, samples in zip(lines, singer.perform(lines, "lines")):
            said, heard = line.text.split(), who.hear(samples)
            mistakes = errors(said, heard)
            wrong, words = wrong + mistakes, words + len(said)
            if not mistakes or not heard:
                frames.update({phone: CLEAR for word in said for phone in dictionary[word]})
                continue
            features = with_slopes(who.cepstra())
            ours, phones = model.path(features, [dictionary[word] for word in said])
            others, _ = model.path(features, [dictionary[word] for word in heard])
            frames.update(phones)
            apart = np.flatnonzero(ours != others)
            cepstra = features[apart, :STREAM]
            slopes = model.slopes(cepstra, ours[apart]) - model.slopes(cepstra, others[apart])
            for place, slope in zip(apart, np.clip(slopes * LIFTER, -3, 3)):
                sums[phones[place]] += slope
    return sums, frames, 100 - 100 * wrong / words


def move(colours, sums, frames, to_cepstra):
    for phone, total in sums.items():
        if not phone.isalpha() or phone == "SIL":
            continue
        step = PACE * total / (frames[phone] + STEADIER)
        step *= min(1, MOST_STEP / max(np.linalg.norm(step), 1e-9))
        for name in PHONES.get(phone, (phone.lower(),)):
            colours[name] += to_cepstra.T @ step / STRETCH
            decibels = DECIBELS * np.sqrt(np.sum(colours[name] ** 2) / 2)
            colours[name] *= min(1, MOST / max(decibels, 1e-9))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--voice", choices=BANKS, required=True)
    parser.add_argument("--rounds", type=int, default=10)
    arguments = parser.parse_args()
    if arguments.rounds < 1:
        parser.error("--rounds: there is at least one")
    torv = arguments.build / "bin/torv"
    bank = BANKS[arguments.voice]
    voice = next(voice for voice in singers.voices(torv) if voice.name == arguments.voice)
    lines = phrases.sung_lines(COLOURING_LINES)
    words = [word.text for word in phrases.english_words()]
    who = Listener.of_lines([line.text for line in lines], words, keeps_cepstra=True)
    dictionary = {}
    for word, phones in english_dictionary({word for line in lines for word in line.text.split()} | set(words)):
        dictionary.setdefault(word.split("(")[0], phones.split())
    model, to_cepstra, colours = AcousticModel(), basis(bank), read(bank)

    def build():
        write(bank, colours)
        subprocess.run([arguments.build / "companions/rve/bank/build_bank_here", bank, FOLDER / f"{bank}.txt",
                        arguments.build / f"bin/rve/{bank}.bank"], check=True)

    kept = []
    for number in range(arguments.rounds):
        build()
        sums, frames, understood = listen(voice, torv, KEYS[number % len(KEYS)], lines, who, model, dictionary)
        print(f"round {number + 1}: {understood:.1f} % understood, {KEYS[number % len(KEYS)]:+} semitones", flush=True)
        move(colours, sums, frames, to_cepstra)
        kept.append({phone: values.copy() for phone, values in colours.items()})
    for phone in colours:
        colours[phone] = np.mean([each[phone] for each in kept[len(kept) // 2:] if phone in each], axis=0)
    build()


if __name__ == "__main__":
    main()
