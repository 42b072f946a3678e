"""The records of torv.h."""
import ctypes
from typing import Any

U32, I32, U64, I64 = ctypes.c_uint32, ctypes.c_int32, ctypes.c_uint64, ctypes.c_int64
REAL, DOUBLE, POINTER = ctypes.c_float, ctypes.c_double, ctypes.c_void_p


class Record(ctypes.Structure):
    """Knows its own size, as every call wants."""

    def __init__(self, **values: Any) -> None:
        super().__init__(**values)
        self.size = ctypes.sizeof(self)


def _record(name: str, *fields: Any) -> Any:
    return type(name, (Record,), {"_fields_": [("size", U32), *fields], "__doc__": f"torv_{name.lower()} of torv.h"})


SongInfo = _record("SongInfo", *((name, U32) for name in ("end", "parts", "tempos", "meters", "measures", "remarks", "verses")))
Tempo = _record("Tempo", ("tick", U32), ("microseconds", U32))
Meter = _record("Meter", ("tick", U32), ("numerator", U32), ("denominator", U32))
Measure = _record("Measure", ("tick", U32), ("length", U32), ("number", I32))
PartRecord = _record("PartRecord", ("notes", U32), ("track", I32), ("channel", I32), ("program", I32), ("sing", I32),
                     ("level", DOUBLE), ("pan", DOUBLE))
NoteRecord = _record("NoteRecord", ("tick", U32), ("length", U32), ("key", I32), ("velocity", I32), ("flags", U32), ("words", U32))
WordRecord = _record("WordRecord", ("verse", I32), ("flags", U32))
IconRecord = _record("IconRecord", ("id", U32), ("kind", I32), ("language", I32))
ScoreOptions = _record("ScoreOptions", ("transpose", I32), ("verse", I32), ("plain", I32), ("language", I32), ("presend", U32),
                       ("breaths", I32))
ScoreInfo = _record("ScoreInfo", *((name, U32) for name in ("parts", "remarks", "lead", "length")))
ScorePartRecord = _record("ScorePartRecord", ("song_part", U32), ("notes", U32), ("voice", U32), ("level", DOUBLE), ("pan", DOUBLE))
ScoreNoteRecord = _record("ScoreNoteRecord", ("tick", U32), ("length", U32), ("key", I32), ("velocity", I32), ("joined", I32),
                          ("start", DOUBLE), ("end", DOUBLE))
Event = _record("Event", ("length", U32), ("time", I64), ("bytes", ctypes.POINTER(ctypes.c_uint8)))
SoundInfo = _record("SoundInfo", ("rate", U32), ("channels", U32), ("peak", REAL), ("frames", U64))
SavedRecord = _record("SavedRecord", ("clipped", U32), ("lowered", DOUBLE))
PlayerState = _record("PlayerState", ("position", U32), ("length", U32), ("sung", U32), ("playing", I32), ("ended", I32),
                      ("failed", I32), ("waited", U32))
MixTrack = _record("MixTrack", ("start", U32), ("sound", POINTER), ("level", DOUBLE), ("pan", DOUBLE))

ProgressCallback = ctypes.CFUNCTYPE(ctypes.c_int, DOUBLE, POINTER)
BlockCallback = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(REAL), ctypes.c_size_t, U32, POINTER)
EventCallback = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(Event), POINTER)
PlayerCallback = ctypes.CFUNCTYPE(None, ctypes.c_int, U32, POINTER)

SingOptions = _record("SingOptions", ("rate", U32), ("channels", U32), ("from", U32), ("to", U32), ("part", U32),
                      ("progress", ProgressCallback), ("user", POINTER))
PlayerOptions = _record("PlayerOptions", ("rate", U32), ("pull", I32), ("device", ctypes.c_char_p), ("callback", PlayerCallback),
                        ("user", POINTER))


class Point(ctypes.Structure):
    """torv_point of torv.h."""

    _fields_ = [("tick", U32), ("value", REAL)]


class Heard(ctypes.Structure):
    """torv_heard of torv.h."""

    _fields_ = [("pitch", REAL), ("level", REAL)]
