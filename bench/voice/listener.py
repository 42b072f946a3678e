"""Who listens: pocketsphinx with Debian's English model, with nothing but words that it was told of."""
import itertools
import math
import pathlib
import tempfile

import numpy as np
from pocketsphinx.pocketsphinx import Decoder

MODEL = pathlib.Path("/usr/share/pocketsphinx/model/en-us")
RATE = 16000
LEVEL = 0.05  # RMS that everything is brought to
ROOM = 2e-4  # of the room's noise, so that silence is one to the listener too
QUIET = int(0.25 * RATE)  # before and after

STAND_INS = {"a": ["AA"], "i": ["IY"], "u": ["UW", "UH"], "e": ["EH"], "o": ["OW", "AO"], "sh": ["SH"], "ch": ["CH"],
             "ts": ["T S"], "k": ["K"], "s": ["S"], "t": ["T"], "n": ["N"], "h": ["HH"], "f": ["F"], "m": ["M"],
             "y": ["Y"], "r": ["R", "L", "D"], "w": ["W"], "g": ["G"], "z": ["Z"], "j": ["JH"], "d": ["D"],
             "b": ["B"], "p": ["P"]}


def english_dictionary(words):
    wanted = set(words)
    entries = []
    for line in (MODEL / "cmudict-en-us.dict").read_text().splitlines():
        head, phones = line.split(" ", 1)
        if head.split("(")[0] in wanted:
            entries.append((head, phones))
    missing = wanted - {head for head, _ in entries}
    if missing:
        raise SystemExit(f"voice_bench: the listener's dictionary lacks {', '.join(sorted(missing))}")
    return entries


def japanese_dictionary(words):
    """English phones in the place of the Japanese ones; a sound with several candidates is one of them all through."""
    entries = []
    for word in words:
        sounds = []
        rest = word
        while rest:
            sounds.append(next(sound for sound in (rest[:2], rest[:1]) if sound in STAND_INS))
            rest = rest[len(sounds[-1]):]
        open_sounds = sorted({sound for sound in sounds if len(STAND_INS[sound]) > 1})
        for number, choice in enumerate(itertools.product(*(STAND_INS[sound] for sound in open_sounds))):
            chosen = dict(zip(open_sounds, choice))
            phones = " ".join(chosen.get(sound, STAND_INS[sound][0]) for sound in sounds)
            entries.append((word if number == 0 else f"{word}({number + 1})", phones))
    return entries


def weak_bigrams(lines, words):
    """A bigram model in ARPA's format: half of the weight is what follows in the lines, half is any word at all."""
    words = sorted(set(words) | {word for line in lines for word in line.split()})
    follows = {}
    for line in lines:
        sentence = ["<s>", *line.split(), "</s>"]
        for pair in zip(sentence, sentence[1:]):
            follows.setdefault(pair[0], {}).setdefault(pair[1], 0)
            follows[pair[0]][pair[1]] += 1
    vocabulary = [*words, "<s>", "</s>"]
    backoff = math.log10(0.5)
    uniform = -math.log10(len(words) + 1)
    pairs = [(math.log10(0.5 * count / sum(nexts.values()) + 0.5 * 10 ** uniform), first, second)
             for first, nexts in sorted(follows.items()) for second, count in sorted(nexts.items())]
    text = [f"\\data\\\nngram 1={len(vocabulary)}\nngram 2={len(pairs)}\n\n\\1-grams:"]
    text += [f"{-99 if word == '<s>' else uniform:.4f} {word} {backoff if word in follows else 0:.4f}"
             for word in vocabulary]
    text += ["\n\\2-grams:", *(f"{value:.4f} {first} {second}" for value, first, second in pairs), "\n\\end\\\n"]
    return "\n".join(text)


class Listener:
    def __init__(self, dictionary, keeps_cepstra=False, **settings):
        self.folder = tempfile.TemporaryDirectory()
        path = pathlib.Path(self.folder.name) / "words.dict"
        path.write_text("".join(f"{head} {phones}\n" for head, phones in dictionary))
        config = Decoder.default_config()
        config.set_string("-hmm", str(MODEL / "en-us"))
        config.set_string("-dict", str(path))
        config.set_string("-logfn", "/dev/null")
        if keeps_cepstra:
            config.set_string("-mfclogdir", self.folder.name)
        for key, value in settings.items():
            config.set_float(f"-{key}", value)
        self.decoder = Decoder(config)

    @classmethod
    def of_words(cls, dictionary):
        """One word at a time."""
        listener = cls(dictionary)
        words = " | ".join(head for head, _ in dictionary if "(" not in head)
        listener.decoder.set_jsgf_string("words", f"#JSGF V1.0;\ngrammar words;\npublic <word> = {words};\n")
        listener.decoder.set_search("words")
        return listener

    @classmethod
    def of_lines(cls, lines, words, trust=1.0, **options):
        """Any words in any order, and a half idea of how the lines go: the weights are half the usual ones, times
        trust."""
        known = {word for line in lines for word in line.split()} | set(words)
        listener = cls(english_dictionary(known), lw=3.25 * trust, fwdflatlw=4.25 * trust, bestpathlw=4.75 * trust,
                       **options)
        path = pathlib.Path(listener.folder.name) / "lines.arpa"
        path.write_text(weak_bigrams(lines, words))
        listener.decoder.set_lm_file("lines", str(path))
        listener.decoder.set_search("lines")
        return listener

    def hear(self, samples):
        """What it takes the samples (16 kHz) for: words, or nothing."""
        samples = np.asarray(samples, dtype=float)
        loud = np.abs(samples) > 0.05 * max(np.abs(samples).max(initial=0), 1e-9)
        rms = np.sqrt(np.mean(samples[loud] ** 2)) if loud.any() else 1
        sound = np.concatenate([np.zeros(QUIET), samples * (LEVEL / rms), np.zeros(QUIET)])
        sound += np.random.default_rng(1).normal(0, ROOM, len(sound))
        self.decoder.start_stream()
        self.decoder.start_utt()
        self.decoder.process_raw((np.clip(sound, -1, 1) * 32767).astype("<i2").tobytes(), False, True)
        self.decoder.end_utt()
        heard = self.decoder.hyp()
        return heard.hypstr.split() if heard else []

    def cepstra(self):
        """Of what it heard last, if it keeps them: 13 values each 10 ms."""
        *others, last = sorted(pathlib.Path(self.folder.name).glob("*.mfc"))
        values = np.fromfile(last, "<f4")[1:].reshape(-1, 13).astype(float)
        for path in (*others, last):
            path.unlink()
        return values


def errors(said, heard):
    """Words that were put in, left out or taken for others."""
    costs = list(range(len(heard) + 1))
    for i, word in enumerate(said, 1):
        last, costs[0] = costs[0], i
        for j, other in enumerate(heard, 1):
            last, costs[j] = costs[j], min(last + (word != other), costs[j] + 1, costs[j - 1] + 1)
    return costs[-1]
