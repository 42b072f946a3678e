#!/usr/bin/python3
"""How well sung words are understood, by a listener that shares no code with the engine (colours.py learns from it):

    bench/voice/voice_bench.py build/release/bin/torv [--words 30] [--voices Alice,Thomas] [--no-peers] ...

Every voice of `torv voices` sings single words (the listener knows which they may be), lines of old songs (it half knows
how they go), and Japanese words (by the English sounds that are nearest); flite and espeak-ng speak them in the same run,
and flite's speech is also moved to the notes. The table has the share of words that came across, in per cent: 100 less
words that were left out, put in or taken for others. Below it stands what is measured in the sound itself.
Needs pocketsphinx-en-us, python3-pocketsphinx and python3-numpy; flite, espeak-ng and praat for their rows.
"""
import argparse
import pathlib
import sys
import tempfile
from concurrent.futures import ProcessPoolExecutor

try:
    import numpy  # noqa: F401
    from pocketsphinx.pocketsphinx import Decoder  # noqa: F401
    import listener
    if not listener.MODEL.exists():
        raise ImportError("no model")
except ImportError:
    sys.exit("SKIPPED: the listener is not installed (apt-get install python3-pocketsphinx pocketsphinx-en-us "
             "python3-numpy; run it by /usr/bin/python3)")

import measures
import phrases
import singers
from listener import Listener, english_dictionary, errors, japanese_dictionary

EXERCISES = ("words", "lines", "Japanese")
LINES_FOR_ONE = 14


def exercise(name, held_out):
    """All its phrases with who listens to each."""
    if name == "lines":
        lines = phrases.english_lines(held_out)
        words = [phrase.text for phrase in phrases.english_words()]
        # The more lines a listener half knows, the more it mixes them up: many are parted among several.
        parts = max(1, round(len(lines) / LINES_FOR_ONE))
        known = [Listener.of_lines([line.text for line in lines[part::parts]], words) for part in range(parts)]
        return [(line, known[i % parts]) for i, line in enumerate(lines)]
    words = phrases.english_words(held_out) if name == "words" else phrases.japanese_words()
    dictionary = english_dictionary if name == "words" else japanese_dictionary
    who = Listener.of_words(dictionary([word.text for word in words]))
    return [(word, who) for word in words]


def score(singer, name, count, held_out):
    """Per cent of the words that came across, and what was heard instead of the others."""
    chosen, listeners = zip(*phrases.spread(exercise(name, held_out), count))
    wrong = words = 0
    heard = []
    for phrase, who, samples in zip(chosen, listeners, singer.perform(chosen, name)):
        said, answer = phrase.text.split(), who.hear(samples)
        mistakes = errors(said, answer)
        wrong += mistakes
        words += len(said)
        if mistakes:
            heard.append(f"{phrase.text} > {' '.join(answer) or '-'}")
    return 100 * (1 - wrong / words), heard


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("torv")
    parser.add_argument("--words", type=int, help="so many of the single words, evenly from the list")
    parser.add_argument("--lines", type=int, help="so many of the lines")
    parser.add_argument("--japanese", type=int, help="so many of the Japanese words")
    parser.add_argument("--only", choices=[*EXERCISES, "sound"], action="append", help="only this part; may be repeated")
    parser.add_argument("--voices", help="only these of the engine's, parted by commas")
    parser.add_argument("--transpose", type=int, default=0, help="the engine's voices sing so many semitones higher")
    parser.add_argument("--held-out", action="store_true", help="the other lists of single words and of lines")
    parser.add_argument("--no-peers", action="store_true")
    parser.add_argument("--verbose", action="store_true", help="what was heard instead")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--keep", type=pathlib.Path, help="a folder that the files stay in")
    return parser.parse_args()


def main():
    options = arguments()
    torv = str(pathlib.Path(options.torv).resolve())
    parts = options.only or [*EXERCISES, "sound"]
    counts = {"words": options.words, "lines": options.lines, "Japanese": options.japanese}
    ours = singers.voices(torv)
    if options.voices:
        ours = [voice for voice in ours if voice.name in options.voices.split(",")]
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.keep or pathlib.Path(temporary)
        folder.mkdir(parents=True, exist_ok=True)
        rows = {}
        with ProcessPoolExecutor(options.jobs) as pool:
            for language in ("English", "Japanese"):
                who = [singers.Sung(torv, voice, folder, options.transpose) for voice in ours
                       if voice.language == language]
                who += [] if options.no_peers else singers.peers(folder, language)
                for singer in who:
                    for name in EXERCISES:
                        if name in parts and (name == "Japanese") == (language == "Japanese"):
                            job = pool.submit(score, singer, name, counts[name], options.held_out)
                            rows.setdefault(singer.name, {})[name] = job
            sounds = {voice.name: pool.submit(measures.of_voice, torv, voice, folder) for voice in ours
                      if "sound" in parts}
            programs = {program: pool.submit(measures.foreign_lines, torv, program) for program in measures.PROGRAMS
                        if "sound" in parts}
            show(rows, options.verbose)
            if sounds:
                measures.show({name: job.result() for name, job in sounds.items()},
                              {program: job.result() for program, job in programs.items()})


def show(rows, verbose):
    if not rows:
        return
    print(f"{'per cent understood':34}" + "".join(f"{name:>10}" for name in EXERCISES), flush=True)
    for singer, results in rows.items():
        cells = (f"{results[name].result()[0]:10.0f}" if name in results else f"{'':10}" for name in EXERCISES)
        print(f"{singer:34}" + "".join(cells), flush=True)
        if verbose:
            for job in results.values():
                print("    " + "; ".join(job.result()[1]))


if __name__ == "__main__":
    main()
