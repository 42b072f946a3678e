"""Songs made ready for the engine."""
from __future__ import annotations

import ctypes
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Callable, List, Optional, Tuple

import numpy as np

from . import _records as records
from ._library import LIBRARY, Handle, call, check, milliseconds, number_of, place_in, size, text_of, utf8
from .databases import LANGUAGES, Databases, default_databases
from .sound import Saved, Sound

if TYPE_CHECKING:
    from .song import Song

Progress = Callable[[float], Optional[bool]]


@dataclass(frozen=True)
class ScoreNote:
    """A note as it is sung: overlaps cut, transposed, very long ones in pieces."""

    tick: int
    length: int
    key: int
    velocity: int
    joined: bool  #: goes on from the note before without a break
    start: float  #: seconds from the song's start
    end: float
    syllables: str
    phonemes: str


@dataclass(frozen=True)
class ScorePart:
    """A part that is sung, and by whom."""

    song_part: int
    voice: str
    level: float
    pan: float
    notes: List[ScoreNote]


class _Raised:
    """What a callback has raised inside the library, to be raised again behind it."""

    def __init__(self) -> None:
        self.error: Optional[BaseException] = None

    def guard(self, work: Callable[..., Optional[bool]]) -> Callable[..., int]:
        def guarded(*arguments: Any) -> int:
            try:
                return 1 if work(*arguments) is False else 0
            except BaseException as error:
                self.error = error
                return 1

        return guarded

    def check(self, status: int) -> None:
        if self.error:
            raise self.error
        check(status)


class Score(Handle):
    """A song's score: voices cast, words turned into phonemes, parts encoded. It does not change with the song.

    `transpose`: semitones; `verse`: from 1; `plain`: without expressions; `language`: "auto", "english" or "japanese";
    `breaths`: who sings is heard to breathe in, where there is a pause for it.
    """

    OPTIONS = ("transpose", "verse", "plain", "language", "breaths")
    _free = "torv_score_free"

    def __init__(self, song: "Song", databases: Optional[Databases] = None, *, transpose: int = 0, verse: int = 1,
                 plain: bool = False, language: str = "auto", breaths: bool = False) -> None:
        options = records.ScoreOptions(transpose=transpose, verse=verse, plain=plain, breaths=breaths,
                                       language=place_in(LANGUAGES, language, "language"))
        super().__init__(self.make("torv_score_make", song, databases or default_databases(), ctypes.byref(options)))

    def _info(self) -> Any:
        info = records.ScoreInfo()
        call("torv_score_get_info", self, ctypes.byref(info))
        return info

    @property
    def seconds(self) -> float:
        """From the song's start to its last sound."""
        return float(self._info().length / 1000)

    @property
    def remarks(self) -> List[str]:
        """What was guessed or left out."""
        return [text_of("torv_score_get_remark", self, size(index)) for index in range(self._info().remarks)]

    @property
    def parts(self) -> List[ScorePart]:
        return [self._part(index) for index in range(self._info().parts)]

    def _part(self, index: int) -> ScorePart:
        record = records.ScorePartRecord()
        voice = text_of("torv_score_get_part", self, size(index), ctypes.byref(record))
        notes = [self._note(index, note) for note in range(record.notes)]
        return ScorePart(record.song_part, voice, record.level, record.pan, notes)

    def _note(self, part: int, index: int) -> ScoreNote:
        at = (self, size(part), size(index))
        record = records.ScoreNoteRecord()
        call("torv_score_get_note", *at, ctypes.byref(record))
        return ScoreNote(record.tick, record.length, record.key, record.velocity, bool(record.joined), record.start, record.end,
                         text_of("torv_score_get_syllables", *at), text_of("torv_score_get_phonemes", *at))

    def encode(self, part: int = 0) -> List[Tuple[int, bytes]]:
        """What the engine is told of a part: (milliseconds from the song's start at which it is sent, MIDI messages)."""
        events: List[Tuple[int, bytes]] = []
        raised = _Raised()

        def take(event: Any, _: Any) -> None:
            events.append((event.contents.time, bytes(event.contents.bytes[:event.contents.length])))

        raised.check(LIBRARY.torv_score_encode(self, size(part), records.EventCallback(raised.guard(take)), None))
        return events

    def save_midi(self, path: Any) -> None:
        """Writes what the engine is told into a standard MIDI file."""
        call("torv_score_save_midi", self, utf8(path))

    @staticmethod
    def _options(raised: _Raised, rate: int, channels: int, start: float, end: Optional[float], part: Optional[int],
                 progress: Optional[Progress]) -> Any:
        options = records.SingOptions(rate=rate, channels=channels, to=0 if end is None else milliseconds(end),
                                      part=0 if part is None else part + 1)
        setattr(options, "from", milliseconds(start))
        if progress:
            options.progress = records.ProgressCallback(raised.guard(lambda done, _: progress(done)))
        return options

    def sing(self, *, rate: int = 44100, channels: int = 0, start: float = 0, end: Optional[float] = None,
             part: Optional[int] = None, progress: Optional[Progress] = None) -> Sound:
        """Sings it from `start` to `end` (seconds), all parts or one of the score's. `channels` 0: one for one part in the
        middle, else two. `progress` is told how far it is, 0..1; where it answers False, Cancelled is raised."""
        raised = _Raised()
        options = self._options(raised, rate, channels, start, end, part, progress)
        handle = ctypes.c_void_p()
        raised.check(LIBRARY.torv_sing(self, ctypes.byref(options), ctypes.byref(handle)))
        return Sound._of(handle)

    def sing_file(self, path: Any, *, rate: int = 44100, channels: int = 0, start: float = 0, end: Optional[float] = None,
                  part: Optional[int] = None, progress: Optional[Progress] = None) -> Saved:
        """The same into a wave file; of several parts the sum is made softer where it would be cut."""
        raised = _Raised()
        options = self._options(raised, rate, channels, start, end, part, progress)
        saved = records.SavedRecord()
        raised.check(LIBRARY.torv_sing_file(self, ctypes.byref(options), utf8(path), ctypes.byref(saved)))
        return Saved(saved.clipped, saved.lowered)

    def blocks(self, take: Callable[["np.ndarray[Any, Any]"], Optional[bool]], **options: Any) -> None:
        """The same block by block, as they are made: `take` is given arrays of frames x channels; False cancels."""
        raised = _Raised()
        given = {"rate": 44100, "channels": 0, "start": 0.0, "end": None, "part": None, "progress": None, **options}

        def take_block(samples: Any, frames: int, channels: int, _: Any) -> Optional[bool]:
            return take(np.ctypeslib.as_array(samples, (frames, channels)).copy())

        callback = records.BlockCallback(raised.guard(take_block))
        raised.check(LIBRARY.torv_sing_blocks(self, ctypes.byref(self._options(raised, **given)), callback, None))

    def measure(self, sound: Sound, part: int = 0) -> Tuple["np.ndarray[Any, Any]", ...]:
        """What one hears of a part's sound, sung from the song's start, every 20 ms: (seconds, pitch as keys with NaN where
        none is heard, level in dB)."""
        at = (sound, self, size(part))
        count = number_of("torv_sound_measure", *at, None, size(0))
        heard = (records.Heard * count)()
        number_of("torv_sound_measure", *at, heard, size(count))
        rows = np.frombuffer(heard, dtype=np.float32).reshape(-1, 2)
        return 0.02 * np.arange(count), rows[:, 0].copy(), rows[:, 1].copy()
