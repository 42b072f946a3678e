#!/usr/bin/python3
"""Finds the colours of a bank: what the spectra of each of a recorded person's sounds gain so that sung lines are taken
for what they are.

    bench/voice/colours.py build/release --voice Roger [--rounds 12]

In each round the voice sings COLOURING_LINES, in other keys than the round before, to the listener of voice_bench.py, who
trusts his idea of the lines half as much as there, lest it hide what the sounds lack. Where he takes a line for another
one, both are laid over what he heard, and every sound moves the way in which the right one gains on the wrong one (a
gradient of the mutual information: Bahl et al., ICASSP 1986), in its beginning, its middle and its end on their own. The
mean of the last half of the rounds is written to companions/rve/bank/colours, where the next run begins, and the bank
in the build is made anew.
"""
import argparse
import collections
import json
import pathlib
import subprocess
import tempfile

import numpy as np

import voice_bench  # noqa: F401 - tells what is missing
import phrases
import singers
from acoustic_model import FILTERS, HIGHEST, LIFTER, LOWEST, STREAM, AcousticModel, through_slopes, with_slopes
from listener import Listener, english_dictionary, errors
from texts import COLOURING_LINES

FOLDER = pathlib.Path(__file__).parents[2] / "companions/rve/bank/colours"
BANKS = {"Susan": "slt", "Roger": "rms", "Angus": "awb"}
SIZES = {"slt": 0.88}  # of recorded_persons.cpp: at which share of the recording's frequencies a sound is sung
NEUTRAL = {"@": "ax", "V": "ah"}  # which are one vowel to the listener
VOWELS = "AA AE AH AO AW AY EH ER EY IH IY OW OY UH UW".split()
KEYS = (0, -3, 3, -1, 2)  # semitones over the voice's home
STATES = 3  # of a sound in its bank
COEFFICIENTS = 14  # after the level
WARP = 0.42  # of bank_format.h
BANK_TOP = 8000  # Hz
DECIBELS = 20 / np.log(10)
STRETCH = FILTERS * 2  # squared length of what a coefficient of 1 makes of the listener's cepstrum
TRUST = 0.5
PACE = 2.0
MOST_STEP = 1.0  # of the listener's cepstrum in a round
MOST = 4.0  # dB (RMS) in all
MOST_SLOPE = 4.0  # of one frame
STEADIER = 25  # frames that a state has at least, lest seldom ones move far
CLEAR = 5  # frames of a state of a sound that was understood


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
    """Colours by (phone, state)."""
    colours = collections.defaultdict(lambda: np.zeros(COEFFICIENTS))
    for line in (FOLDER / f"{bank}.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            phone, state, *values = line.split()
            colours[phone, int(state)][:len(values)] = np.array(values, float) / 100
    return colours


def write(bank, colours):
    rows = [f"{phone:2} {state}" + "".join(f"{round(100 * value):4}" for value in colours[phone, state])
            for phone, state in sorted(colours)]
    (FOLDER / f"{bank}.txt").write_text("# Found by bench/voice/colours.py: hundredths, without the level.\n" +
                                        "".join(f"{row}\n" for row in rows))


class Dictionary:
    """How words are said: to the listener, and with which of a bank's phones they are sung."""

    def __init__(self, torv, texts, others):
        self.heard = {}
        known = {word.replace("-", "") for text in texts for word in text.split()} | set(others)
        for word, phones in english_dictionary(known):
            self.heard.setdefault(word.split("(")[0], phones.split())
        text = " ".join(sorted({word for text in texts for word in text.split()}))
        told = json.loads(subprocess.run([torv, "phonemes", "--json", "--text", text], check=True, capture_output=True,
                                         text=True).stdout)
        self.sung = {}
        for word in (word["syllables"] for part in told for word in part["words"]):
            letters = "".join(syllable["text"] for syllable in word)
            neutral = [NEUTRAL[symbol] for syllable in word for symbol in syllable["phonemes"] if symbol in NEUTRAL]
            phones = self.heard.get(letters, [])
            parted = len(neutral) == phones.count("AH")
            self.sung[letters] = [(phone.lower(),) if phone != "AH" else (neutral.pop(0),) if parted else ("ah", "ax")
                                  for phone in phones]

    def sounds(self, words):
        return [self.heard[word] for word in words]

    def bank_phones(self, words):
        """One or two names for every sound of words."""
        return [names for word in words for names in self.sung[word]]


def states_of(sounds, isVowel):
    """In which state of its bank's phone every frame lies, where `sounds` has the number of its sound. Of a vowel the
    middle is held."""
    states = np.ones(len(sounds), int)
    for number in np.unique(sounds):
        frames = np.flatnonzero(sounds == number)
        edge = len(frames) // (4 if isVowel[number] else 3)
        states[frames[:edge]] = 0
        states[frames[len(frames) - edge:]] = 2
    return states


def listen(voice, torv, key, lines, who, model, dictionary):
    """How each state of a sound should change: sums of gradients for the listener's plain cepstra, frames, and the share
    of words that came across."""
    sums, frames = collections.defaultdict(lambda: np.zeros(STREAM)), collections.Counter()
    wrong = words = 0
    with tempfile.TemporaryDirectory() as folder:
        singer = singers.Sung(torv, voice, pathlib.Path(folder), key)
        for line, samples in zip(lines, singer.perform(lines, "lines")):
            said, heard = line.text.split(), who.hear(samples)
            mistakes = errors(said, heard)
            wrong, words = wrong + mistakes, words + len(said)
            names = dictionary.bank_phones(said)
            if not mistakes or not heard:
                frames.update({(name, state): CLEAR for both in names for name in both for state in range(STATES)})
                continue
            features = with_slopes(who.cepstra())
            ours, sounds = model.path(features, dictionary.sounds(said))
            others, _ = model.path(features, dictionary.sounds(heard))
            apart = np.flatnonzero(ours != others)
            gradient = np.zeros_like(features)
            gradient[apart] = (model.gradient(features[apart], ours[apart]) -
                               model.gradient(features[apart], others[apart]))
            gradient = np.clip(through_slopes(gradient) * LIFTER, -MOST_SLOPE, MOST_SLOPE)
            isVowel = [False, *(phone in VOWELS for word in dictionary.sounds(said) for phone in word), False]
            for number, state, slope in zip(sounds, states_of(sounds, isVowel), gradient):
                for name in names[number - 1] if 0 < number <= len(names) else ():
                    sums[name, state] += slope
                    frames[name, state] += 1
    return sums, frames, 100 - 100 * wrong / words


def move(colours, sums, frames, to_cepstra):
    for which, total in sums.items():
        step = PACE * total / (frames[which] + STEADIER)
        step *= min(1, MOST_STEP / max(np.linalg.norm(step), 1e-9))
        colours[which] = colours[which] + to_cepstra.T @ step / STRETCH
        decibels = DECIBELS * np.sqrt(np.sum(colours[which] ** 2) / 2)
        colours[which] *= min(1, MOST / max(decibels, 1e-9))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--voice", choices=BANKS, required=True)
    parser.add_argument("--rounds", type=int, default=12)
    arguments = parser.parse_args()
    if arguments.rounds < 1:
        parser.error("--rounds: there is at least one")
    torv = arguments.build / "bin/torv"
    bank = BANKS[arguments.voice]
    voice = next(voice for voice in singers.voices(torv) if voice.name == arguments.voice)
    lines = phrases.sung_lines(COLOURING_LINES)
    words = [word.text for word in phrases.english_words()]
    who = Listener.of_lines([line.text for line in lines], words, trust=TRUST, keeps_cepstra=True)
    dictionary = Dictionary(torv, COLOURING_LINES, words)
    model, to_cepstra, colours = AcousticModel(), basis(bank), read(bank)

    def build():
        write(bank, colours)
        subprocess.run([arguments.build / "companions/rve/bank/build_bank_here", bank, FOLDER / f"{bank}.txt",
                        arguments.build / f"bin/rve/{bank}.bank"], check=True)

    kept = []
    for number in range(arguments.rounds):
        build()
        key = KEYS[number % len(KEYS)]
        sums, frames, understood = listen(voice, torv, key, lines, who, model, dictionary)
        print(f"round {number + 1}: {understood:.1f} % understood, {key:+} semitones", flush=True)
        move(colours, sums, frames, to_cepstra)
        kept.append(dict(colours))
    for which in colours:
        colours[which] = np.mean([each[which] for each in kept[len(kept) // 2:] if which in each], axis=0)
    build()


if __name__ == "__main__":
    main()
