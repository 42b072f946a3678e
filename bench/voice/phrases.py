"""Phrases with their notes: the same for everybody who sings them, and the same in every run."""
import random
from dataclasses import dataclass

from texts import HELD_OUT, HELD_OUT_LINES, JAPANESE, LINES, WORDS

STEPS = (0, 2, 4, 7, 9)  # semitones over the voice's home: no interval of these is hard to sing
SEED = 20


@dataclass(frozen=True)
class Note:
    key: int  # over the voice's home
    seconds: float
    lyric: str


@dataclass(frozen=True)
class Phrase:
    text: str  # what the listener should answer
    notes: tuple
    spoken: str  # what a speaking voice is given


def tune(count, source):
    """A walk over the steps, never far at once."""
    place = source.randrange(len(STEPS))
    for _ in range(count):
        yield STEPS[place]
        place = min(max(place + source.choice((-1, 0, 1)), 0), len(STEPS) - 1)


def phrase(words, beat, last, source):
    lyrics = [part + ("-" if i + 1 < len(word.split("-")) else "") for word in words
              for i, part in enumerate(word.split("-"))]
    seconds = [beat] * (len(lyrics) - 1) + [last]
    text = " ".join(words).replace("-", "")
    return Phrase(text, tuple(map(Note, tune(len(lyrics), source), seconds, lyrics)), text)


def english_words(held_out=False):
    source = random.Random(SEED)
    return [phrase([word], 0.4, 0.6, source) for word in (HELD_OUT if held_out else WORDS)]


def english_lines(held_out=False):
    return sung_lines(HELD_OUT_LINES if held_out else LINES)


def sung_lines(lines):
    source = random.Random(SEED)
    return [phrase(line.split(), 0.38, 0.76, source) for line in lines]


def japanese_words():
    source = random.Random(SEED)
    phrases = []
    for kana, latin in JAPANESE:
        groups = kana_groups(kana)
        count = len(groups)
        seconds = [0.35] * (count - 1) + [0.5]
        phrases.append(Phrase(latin.replace("-", ""), tuple(map(Note, tune(count, source), seconds, groups)), kana))
    return phrases


def kana_groups(kana):
    """Kana with the small ones that belong to them."""
    groups = []
    for letter in kana:
        if letter in "ゃゅょ":
            groups[-1] += letter
        else:
            groups.append(letter)
    return groups


def spread(phrases, count):
    """So many of them, evenly from the whole list."""
    if not count or count >= len(phrases):
        return phrases
    return [phrases[i * len(phrases) // count] for i in range(count)]
