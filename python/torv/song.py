"""Songs as plain values: parts of notes with words, tempo and meter, and what is added for singing."""
from __future__ import annotations

import ctypes
import os
from dataclasses import dataclass, field, replace
from typing import Any, Iterable, Iterator, List, Optional, Sequence, Tuple, Union

import numpy as np

from . import notebook
from ._library import Handle, call, number_of, place_in, size, text_of, utf8
from ._records import Measure, Meter, NoteRecord, PartRecord, Point, SongInfo, Tempo, WordRecord
from .databases import KINDS, Databases
from .score import Score
from .sound import Sound

TICKS_PER_QUARTER = 480
CURVES = ("pitch", "dynamics", "tremolo", "frequency1", "frequency2", "frequency3", "frequency4", "width1", "width2", "width3",
          "width4", "amplitude1", "amplitude2", "amplitude3", "amplitude4", "harmonics", "noise", "brightness", "clearness",
          "gender")  #: the curves of a part, by torv_curve's numbers
_NOTE_FLAGS = ("slurred", "staccato", "tenuto", "accent", "fermata", "breath")
_MARKS = ("voice", "dynamics")
_STAGE = 2.0
_SING = {None: 0, True: 1, False: 2}
Path = Union[str, "os.PathLike[str]"]


@dataclass
class Word:
    """One syllable that a note sings in one verse."""

    text: str
    hyphen_before: bool = False  #: its word has begun with an earlier syllable
    hyphen_after: bool = False  #: its word goes on with the next one
    extends: bool = False  #: the notes after it go on with its vowel
    verse: int = 1
    phonemes: str = ""  #: SAMPA, blanks between them; empty: they are looked up

    @staticmethod
    def split(text: str, verse: int = 1) -> List["Word"]:
        """The syllables of a text whose words are parted by blanks and whose syllables by hyphens: "twin-kle star"."""
        words = []
        for word in text.split():
            syllables = [syllable for syllable in word.split("-") if syllable] or [word]
            for i, syllable in enumerate(syllables):
                words.append(Word(syllable, i > 0, i + 1 < len(syllables), verse=verse))
        return words


@dataclass
class Note:
    """One note. Ticks are 480 to a quarter note, keys 0..127 with 60 as middle C."""

    tick: int
    length: int
    key: int
    velocity: int = 80
    words: List[Word] = field(default_factory=list)
    slurred: bool = False
    staccato: bool = False
    tenuto: bool = False
    accent: bool = False
    fermata: bool = False
    breath: bool = False

    @property
    def end(self) -> int:
        return self.tick + self.length


@dataclass(frozen=True)
class Mark:
    """A voice or a dynamic that stands at a tick, by name."""

    tick: int
    name: str


class Part:
    """A part of a song; what is set here is set in the song. Good while the song's parts stay in their order."""

    def __init__(self, song: "Song", index: int) -> None:
        self._song = song
        self._at = (song, size(index))
        self.index = index

    def _record(self) -> Any:
        record = PartRecord()
        call("torv_part_get", *self._at, ctypes.byref(record))
        return record

    def _set(self, **values: Any) -> None:
        record = self._record()
        for name, value in values.items():
            setattr(record, name, value)
        call("torv_part_set", *self._at, ctypes.byref(record))

    @property
    def name(self) -> str:
        return text_of("torv_part_get_text", *self._at, 0)

    @name.setter
    def name(self, text: str) -> None:
        call("torv_part_set_text", *self._at, 0, utf8(text))

    @property
    def level(self) -> float:
        """dB in a mix."""
        return float(self._record().level)

    @level.setter
    def level(self, decibels: float) -> None:
        self._set(level=decibels)

    @property
    def pan(self) -> Optional[float]:
        """-1 left .. 1 right; None: where a choir would stand."""
        pan = self._record().pan
        return None if pan == _STAGE else pan

    @pan.setter
    def pan(self, pan: Optional[float]) -> None:
        self._set(pan=_STAGE if pan is None else pan)

    @property
    def sing(self) -> Optional[bool]:
        """Whether it is sung; None: when it has words."""
        return {number: sing for sing, number in _SING.items()}[self._record().sing]

    @sing.setter
    def sing(self, sing: Optional[bool]) -> None:
        self._set(sing=_SING[sing])

    def __len__(self) -> int:
        return int(self._record().notes)

    @property
    def notes(self) -> List[Note]:
        """The notes by time: copies. Set the list, or use add_note and remove_note, to change the song."""
        return [self._note(index) for index in range(len(self))]

    @notes.setter
    def notes(self, notes: Iterable[Note]) -> None:
        kept = [replace(note, words=list(note.words)) for note in notes]
        for _ in range(len(self)):
            call("torv_note_remove", *self._at, size(0))
        for note in kept:
            self.add_note(note)

    def _note(self, index: int) -> Note:
        at = (*self._at, size(index))
        record = NoteRecord()
        call("torv_note_get", *at, ctypes.byref(record))
        flags = {name: bool(record.flags >> bit & 1) for bit, name in enumerate(_NOTE_FLAGS)}
        words = [self._word(*at, size(word)) for word in range(record.words)]
        return Note(record.tick, record.length, record.key, record.velocity, words, **flags)

    @staticmethod
    def _word(*at: Any) -> Word:
        record = WordRecord()
        call("torv_word_get", *at, ctypes.byref(record))
        return Word(text_of("torv_word_get_text", *at), *(bool(record.flags >> bit & 1) for bit in range(3)), record.verse,
                    text_of("torv_word_get_phonemes", *at))

    def add_note(self, note: Note) -> int:
        """Puts a note with its words in its place by time; its index there."""
        flags = sum(getattr(note, name) << bit for bit, name in enumerate(_NOTE_FLAGS))
        record = NoteRecord(tick=note.tick, length=note.length, key=note.key, velocity=note.velocity, flags=flags)
        index = number_of("torv_note_add", *self._at, ctypes.byref(record))
        for word in note.words:
            flags = word.hyphen_before | word.hyphen_after << 1 | word.extends << 2
            word_record = WordRecord(verse=word.verse, flags=flags)
            place = number_of("torv_word_add", *self._at, size(index), ctypes.byref(word_record), utf8(word.text))
            if word.phonemes:
                call("torv_word_set_phonemes", *self._at, size(index), size(place), utf8(word.phonemes))
        return int(index)

    def remove_note(self, index: int) -> None:
        call("torv_note_remove", *self._at, size(index))

    def transpose(self, semitones: int) -> None:
        """Moves every note up or down."""
        for index in range(len(self)):
            record = NoteRecord()
            call("torv_note_get", *self._at, size(index), ctypes.byref(record))
            record.key += semitones
            call("torv_note_set", *self._at, size(index), ctypes.byref(record), None)

    def set_words(self, text: str, verse: int = 1) -> None:
        """Puts a text's syllables under the notes, one each: words parted by blanks, syllables by hyphens; a "_" has its
        note go on with the vowel before. Notes beyond the text lose their words in this verse."""
        syllables = Word.split(text, verse)
        for index in range(len(self)):
            at = (*self._at, size(index))
            for word in reversed(range(len(self._note(index).words))):
                if self._word(*at, size(word)).verse == verse:
                    call("torv_word_remove", *at, size(word))
            if index < len(syllables) and syllables[index].text != "_":
                word = syllables[index]
                record = WordRecord(verse=verse, flags=word.hyphen_before | word.hyphen_after << 1)
                call("torv_word_add", *at, ctypes.byref(record), utf8(word.text), None)

    def _marks(self, kind: int) -> List[Mark]:
        marks = []
        for index in range(number_of("torv_part_count_marks", *self._at, kind)):
            tick = ctypes.c_uint32()
            name = text_of("torv_part_get_mark", *self._at, kind, size(index), ctypes.byref(tick))
            marks.append(Mark(tick.value, name))
        return marks

    @property
    def voices(self) -> List[Mark]:
        """Who sings from where; without one at tick 0 the voice that suits the part."""
        return self._marks(0)

    @property
    def dynamics(self) -> List[Mark]:
        """The dynamics by name: "mf", "Crescendo"."""
        return self._marks(1)

    def set_voice(self, name: Optional[str], tick: int = 0) -> None:
        """This voice sings from the tick on; None takes away what stands there."""
        self._set_mark("voice", name, tick)

    def set_dynamics(self, name: Optional[str], tick: int = 0) -> None:
        self._set_mark("dynamics", name, tick)

    def _set_mark(self, kind: str, name: Optional[str], tick: int) -> None:
        call("torv_part_set_mark", *self._at, place_in(_MARKS, kind, "kind of mark"), ctypes.c_uint32(tick), utf8(name or ""))

    def set_icon(self, kind: str, name: Optional[str], note: Optional[int] = None) -> None:
        """Gives a note, or all that have none of their own, an "attack", "release", "transition" or "vibrato": "none" for
        none, None for the usual one."""
        place = ctypes.c_size_t(-1) if note is None else size(note)
        call("torv_icon_set", *self._at, place, place_in(KINDS, kind, "kind of icon"), utf8(name or ""))

    def curve(self, name: str) -> "np.ndarray[Any, Any]":
        """A curve's points as rows of tick and value; see CURVES. The value of a point holds until the next one."""
        number = place_in(CURVES, name, "curve")
        count = number_of("torv_part_get_curve", *self._at, number, None, size(0))
        points = (Point * count)()
        number_of("torv_part_get_curve", *self._at, number, points, size(count))
        return np.array([(point.tick, point.value) for point in points], dtype=float).reshape(-1, 2)

    def set_curve(self, name: str, ticks: Sequence[float], values: Sequence[float]) -> None:
        """Sets a curve from arrays of ascending ticks and as many values; empty ones take it away. Of points whose ticks
        are rounded to one the last holds."""
        whole = np.rint(np.asarray(ticks, dtype=float)).astype(np.int64)
        heights = np.asarray(values, dtype=np.float32)
        if whole.shape != heights.shape or whole.ndim != 1:
            raise ValueError("ticks and values are two lists of one length")
        if whole.size and whole.min() < 0:
            raise ValueError("ticks count from 0")
        last = np.append(np.diff(whole) != 0, True) if whole.size else np.array([], dtype=bool)
        points = [Point(int(tick), float(value)) for tick, value in zip(whole[last], heights[last])]
        call("torv_part_set_curve", *self._at, place_in(CURVES, name, "curve"), (Point * len(points))(*points), size(len(points)))


class Song(Handle):
    """A song."""

    _free = "torv_song_free"

    def __init__(self, handle: Optional[ctypes.c_void_p] = None) -> None:
        """An empty song in 4/4 at 120 quarters a minute."""
        super().__init__(handle or self.make("torv_song_new"))

    @classmethod
    def open(cls, path: Path, encoding: str = "") -> "Song":
        """Reads a song file: standard MIDI, MusicXML or UST. `encoding`: of the words; else their bytes are looked at."""
        return cls(cls.make("torv_song_open", utf8(path), utf8(encoding)))

    @classmethod
    def read(cls, data: bytes, source: str = "", encoding: str = "") -> "Song":
        """The same of a file's bytes."""
        return cls(cls.make("torv_song_read", data, size(len(data)), utf8(source), utf8(encoding)))

    def copy(self) -> "Song":
        return Song(self.make("torv_song_copy", self))

    def _info(self) -> Any:
        info = SongInfo()
        call("torv_song_get_info", self, ctypes.byref(info))
        return info

    def _text(self, which: int) -> str:
        return text_of("torv_song_get_text", self, which)

    @property
    def title(self) -> str:
        return self._text(0)

    @title.setter
    def title(self, text: str) -> None:
        call("torv_song_set_text", self, 0, utf8(text))

    @property
    def composer(self) -> str:
        return self._text(1)

    @property
    def format(self) -> str:
        return self._text(4)

    @property
    def end(self) -> int:
        """The tick where the last note or measure ends."""
        return int(self._info().end)

    @property
    def verses(self) -> int:
        return int(self._info().verses)

    @property
    def remarks(self) -> List[str]:
        """What reading guessed or left out."""
        return [text_of("torv_song_get_remark", self, size(index)) for index in range(self._info().remarks)]

    @property
    def parts(self) -> List[Part]:
        return [Part(self, index) for index in range(self._info().parts)]

    def part(self, name: str) -> Part:
        """The part of this name; KeyError without one."""
        for part in self.parts:
            if part.name == name:
                return part
        raise KeyError(f"there is no part {name!r}: there are {', '.join(repr(part.name) for part in self.parts)}")

    def add_part(self, name: str) -> Part:
        return Part(self, number_of("torv_part_add", self, utf8(name)))

    def remove_part(self, part: Part) -> None:
        call("torv_part_remove", self, size(part.index))

    def _records(self, name: str, kind: Any, count: int) -> Iterator[Any]:
        for index in range(count):
            record = kind()
            call(name, self, size(index), ctypes.byref(record))
            yield record

    @property
    def tempos(self) -> List[Tuple[int, float]]:
        """(tick, quarters a minute); none: 120."""
        records = self._records("torv_song_get_tempo", Tempo, self._info().tempos)
        return [(record.tick, 60e6 / record.microseconds) for record in records]

    def set_tempo(self, quarters_per_minute: float, tick: int = 0) -> None:
        record = Tempo(tick=tick, microseconds=round(60e6 / quarters_per_minute))
        call("torv_song_set_tempo", self, ctypes.byref(record))

    @property
    def meters(self) -> List[Tuple[int, int, int]]:
        """(tick, numerator, denominator); none: 4/4."""
        records = self._records("torv_song_get_meter", Meter, self._info().meters)
        return [(record.tick, record.numerator, record.denominator) for record in records]

    def set_meter(self, numerator: int, denominator: int, tick: int = 0) -> None:
        """The measures are made anew."""
        record = Meter(tick=tick, numerator=numerator, denominator=denominator)
        call("torv_song_set_meter", self, ctypes.byref(record))

    @property
    def measures(self) -> List[Tuple[int, int, int]]:
        """(tick, length in ticks, number) as they sound: what is repeated stands there twice."""
        records = self._records("torv_song_get_measure", Measure, self._info().measures)
        return [(record.tick, record.length, record.number) for record in records]

    def tick_of_measure(self, number: int) -> int:
        return int(number_of("torv_song_find_measure", self, ctypes.c_int32(number), kind=ctypes.c_uint32))

    def seconds_at(self, tick: int) -> float:
        return float(number_of("torv_song_seconds_at", self, ctypes.c_uint32(tick), kind=ctypes.c_double))

    def score(self, databases: Optional[Databases] = None, **options: Any) -> Score:
        """Makes it ready to be sung; see Score for the options."""
        return Score(self, databases, **options)

    def sing(self, databases: Optional[Databases] = None, **options: Any) -> Sound:
        """Sings it; options of Score and of Score.sing."""
        of_score = {name: options.pop(name) for name in Score.OPTIONS if name in options}
        return self.score(databases, **of_score).sing(**options)

    def _repr_svg_(self) -> str:
        return notebook.piano_roll(self)
