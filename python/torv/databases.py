"""The voices, expressions and presets that songs are sung with."""
from __future__ import annotations

import ctypes
import threading
from dataclasses import dataclass
from typing import List, Optional

from ._library import Handle, call, number_of, place_in, size, text_of
from ._records import IconRecord

KINDS = ("attack", "release", "transition", "vibrato", "dynamics", "voice")
LANGUAGES = ("auto", "japanese", "english")


@dataclass(frozen=True)
class Icon:
    """Something of a database: a voice, an expression, a preset."""

    name: str
    id: int
    kind: str
    language: str  #: of a voice; "auto" of anything else


class Databases(Handle):
    """The open databases. A process has them once: opening them again raises Busy."""

    _free = "torv_databases_free"

    def __init__(self) -> None:
        super().__init__(self.make("torv_databases_open"))

    def list(self, kind: str) -> List[Icon]:
        """All of a kind (see KINDS), presets before users' own."""
        number = place_in(KINDS, kind, "kind of icon")
        icons = []
        for index in range(number_of("torv_databases_count", self, number)):
            record = IconRecord()
            name = text_of("torv_databases_get", self, number, size(index), ctypes.byref(record))
            icons.append(Icon(name, record.id, kind, LANGUAGES[record.language]))
        return icons

    def voices(self, language: Optional[str] = None) -> List[str]:
        """The voices' names, of one language ("english", "japanese") or of all."""
        return [voice.name for voice in self.list("voice") if language in (None, voice.language)]


_lock = threading.Lock()
_shared: Optional[Databases] = None


def default_databases() -> Databases:
    """The databases that songs are sung with where none are named: opened with the first call, closed with the process."""
    global _shared
    with _lock:
        if _shared is None:
            _shared = Databases()
        return _shared
