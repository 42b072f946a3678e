"""Playing."""
from __future__ import annotations

import ctypes
from dataclasses import dataclass
from typing import Any, Callable, List, Optional

import numpy as np

from ._library import Handle, call, milliseconds, number_of, size, text_of, utf8
from ._records import PlayerCallback, PlayerOptions, PlayerState
from .score import Score


def devices() -> List[str]:
    """The wave outputs' names; "Null Output" is one that nobody hears."""
    return [text_of("torv_devices_get", size(index)) for index in range(number_of("torv_devices_count"))]


@dataclass(frozen=True)
class State:
    """How a player is: seconds of the song."""

    position: float
    length: float
    sung: float
    playing: bool
    ended: bool
    failed: bool


class Player(Handle):
    """Plays a score, on a wave output or, with `pull`, into arrays. `listener` is told the position in seconds and whether
    it has ended, on a thread of the player's."""

    _free = "torv_player_free"

    def __init__(self, score: Score, device: str = "", *, rate: int = 44100, pull: bool = False,
                 listener: Optional[Callable[[float, bool], Any]] = None) -> None:
        options = PlayerOptions(rate=rate, pull=pull, device=utf8(device))
        if listener:
            options.callback = PlayerCallback(lambda event, position, _: listener(position / 1000, event == 1))
        self._kept = options.callback
        super().__init__(self.make("torv_player_new", score, ctypes.byref(options)))

    def start(self) -> None:
        call("torv_player_start", self)

    def stop(self) -> None:
        call("torv_player_stop", self)

    def seek(self, seconds: float) -> None:
        call("torv_player_seek", self, ctypes.c_uint32(milliseconds(seconds)))

    def set_region(self, start: float, end: Optional[float], loop: bool = False) -> None:
        """Where playing ends, and with `loop` goes on from; an end of None is the song's."""
        last = 0 if end is None else milliseconds(end)
        call("torv_player_set_region", self, ctypes.c_uint32(milliseconds(start)), ctypes.c_uint32(last), ctypes.c_int32(loop))

    def set_part(self, part: int, level: float = 0, pan: float = 0, mute: bool = False) -> None:
        call("torv_player_set_part", self, size(part), ctypes.c_double(level), ctypes.c_double(pan), ctypes.c_int32(mute))

    def set_level(self, level: float) -> None:
        """dB of all together."""
        call("torv_player_set_level", self, ctypes.c_double(level))

    @property
    def state(self) -> State:
        state = PlayerState()
        call("torv_player_get_state", self, ctypes.byref(state))
        return State(state.position / 1000, state.length / 1000, state.sung / 1000, bool(state.playing), bool(state.ended),
                     bool(state.failed))

    def read(self, frames: int) -> "np.ndarray[Any, Any]":
        """The next frames of a player with `pull`: frames x 2."""
        samples = np.empty((frames, 2), np.float32)
        call("torv_player_read", self, samples.ctypes.data_as(ctypes.POINTER(ctypes.c_float)), size(frames))
        return samples
