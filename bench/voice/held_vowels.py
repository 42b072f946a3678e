#!/usr/bin/python3
"""Which vowel a held one is taken for, by the listener of voice_bench.py:

    bench/voice/held_vowels.py build/release/bin/torv [--voices Susan,Roger] [--seconds 0.6]

Each English voice sings every vowel between the same consonants, and the listener chooses among all vowels there. The table
has how many of the syllables came across, and what the others were taken for.
"""
import argparse
import collections
import pathlib
import random
import tempfile
from concurrent.futures import ProcessPoolExecutor

import voice_bench  # noqa: F401 - tells what is missing
import singers
from listener import Listener
from phrases import SEED, STEPS, Note, Phrase

# The engine's symbols and the listener's.
VOWELS = {"Q": "AA", "{": "AE", "V": "AH", "@": "AH", "O:": "AO", "aU": "AW", "aI": "AY", "e": "EH", "@r": "ER", "eI": "EY",
          "I": "IH", "i:": "IY", "@U": "OW", "OI": "OY", "U": "UH", "u:": "UW"}
CONSONANTS = {"p": "P", "b": "B", "t": "T", "d": "D", "k": "K", "g": "G", "s": "S", "S": "SH", "f": "F", "v": "V", "m": "M",
              "n": "N", "l": "L", "r": "R", "w": "W", "h": "HH", "D": "DH", "tS": "CH", "dZ": "JH", "z": "Z"}
FRAMES = [frame.split("_") for frame in ("p_ t,b_ d,t_ k,d_ n,k_ s,g_ v,s_ d,S_ p,f_ k,v_ n,m_ t,n_ z,l_ v,r_ s,w_ d,h_ t,"
                                         "D_ s,tS_ m,dZ_ d,s_,b_ k,m_,l_,t_ l").split(",")]


def said(before, vowel, after):
    """The listener's sounds."""
    return " ".join(CONSONANTS.get(sound, sound) for sound in (before, vowel, *after.split()))


def score(torv, voice, seconds):
    """By vowel: of how many syllables it is, and what was heard instead."""
    source = random.Random(SEED)
    syllables = [(before, vowel, after) for before, after in FRAMES for vowel in VOWELS]
    phrases = [Phrase("", (Note(source.choice(STEPS), seconds, f"x[{before} {vowel}{after}]"),), "")
               for before, vowel, after in syllables]
    choices = sorted(set(VOWELS.values()))
    who = Listener([(f"{number}x{choice.lower()}", said(before, choice, after))
                    for number, (before, after) in enumerate(FRAMES) for choice in choices])
    heard = {vowel: collections.Counter() for vowel in VOWELS}
    with tempfile.TemporaryDirectory() as folder:
        samples = singers.Sung(torv, voice, pathlib.Path(folder)).perform(phrases, "held")
    for (before, vowel, after), sung in zip(syllables, samples):
        number = FRAMES.index([before, after])
        words = " | ".join(f"{number}x{choice.lower()}" for choice in choices)
        who.decoder.set_jsgf_string("held", f"#JSGF V1.0;\ngrammar held;\npublic <syllable> = {words};\n")
        who.decoder.set_search("held")
        heard[vowel][(who.hear(sung) or ["x-"])[0].split("x")[1].upper()] += 1
    return heard


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("torv")
    parser.add_argument("--voices", help="only these, parted by commas")
    parser.add_argument("--seconds", type=float, default=0.6, help="how long each is held")
    options = parser.parse_args()
    torv = str(pathlib.Path(options.torv).resolve())
    voices = [voice for voice in singers.voices(torv) if voice.language == "English"
              and (not options.voices or voice.name in options.voices.split(","))]
    with ProcessPoolExecutor(2) as pool:
        jobs = [pool.submit(score, torv, voice, options.seconds) for voice in voices]
        for voice, job in zip(voices, jobs):
            rows = job.result()
            right = sum(row[VOWELS[vowel]] for vowel, row in rows.items())
            print(f"{voice.name}: {100 * right / len(FRAMES) / len(VOWELS):.0f} %")
            for vowel, row in rows.items():
                own = row.pop(VOWELS[vowel], 0)
                others = ", ".join(f"{name} {count}" for name, count in row.most_common())
                print(f"  {vowel:3}{own:3} of {len(FRAMES)}  {others}")


if __name__ == "__main__":
    main()
