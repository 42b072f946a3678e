"""Sound in memory."""
from __future__ import annotations

import base64
import ctypes
import os
import tempfile
from dataclasses import dataclass
from typing import Any, Iterable, Tuple, Union

import numpy as np

from ._library import Handle, call, size, utf8
from ._records import MixTrack, SavedRecord, SoundInfo


@dataclass(frozen=True)
class Saved:
    """What became of a sound in a file."""

    clipped: int  #: frames that were cut at full scale
    lowered: float  #: dB that all is softer, so that nothing is cut


class Sound(Handle):
    """A sound: frames x channels of 32-bit floats, full scale 1."""

    _free = "torv_sound_free"

    def __init__(self, samples: Any, rate: int = 44100) -> None:
        """Of an array: frames, or frames x channels (1 or 2)."""
        array = np.ascontiguousarray(samples, dtype=np.float32)
        frames = array.reshape(len(array), -1)
        pointer = frames.ctypes.data_as(ctypes.POINTER(ctypes.c_float))
        super().__init__(self.make("torv_sound_new", ctypes.c_uint32(rate), ctypes.c_uint32(frames.shape[1] if frames.size else 1),
                                   pointer, ctypes.c_uint64(len(frames))))

    @classmethod
    def _of(cls, handle: ctypes.c_void_p) -> "Sound":
        sound = cls.__new__(cls)
        Handle.__init__(sound, handle)
        return sound

    @classmethod
    def open(cls, path: Any) -> "Sound":
        """Reads a wave file."""
        return cls._of(cls.make("torv_sound_open", utf8(path)))

    def _info(self) -> Any:
        info = SoundInfo()
        call("torv_sound_get_info", self, ctypes.byref(info))
        return info

    @property
    def rate(self) -> int:
        """Frames a second."""
        return int(self._info().rate)

    @property
    def seconds(self) -> float:
        info = self._info()
        return float(info.frames / info.rate)

    @property
    def peak(self) -> float:
        return float(self._info().peak)

    @property
    def samples(self) -> "np.ndarray[Any, Any]":
        """Frames x channels, a copy."""
        info = self._info()
        pointer = ctypes.POINTER(ctypes.c_float)()
        call("torv_sound_get_samples", self, ctypes.byref(pointer))
        shape = (int(info.frames), int(info.channels))
        return np.ctypeslib.as_array(pointer, shape).copy() if info.frames else np.zeros(shape, np.float32)

    def save(self, path: Any, lower: bool = True) -> Saved:
        """Writes a 16-bit wave file. Where it would pass full scale all is made softer, or with `lower` False cut."""
        saved = SavedRecord()
        call("torv_sound_save", self, utf8(path), ctypes.c_int32(lower), ctypes.byref(saved))
        return Saved(saved.clipped, saved.lowered)

    def _repr_html_(self) -> str:
        """A player for notebooks, with the sound in it."""
        handle, path = tempfile.mkstemp(suffix=".wav")
        os.close(handle)
        try:
            self.save(path)
            with open(path, "rb") as file:
                data = base64.b64encode(file.read()).decode()
        finally:
            os.unlink(path)
        return f'<audio controls src="data:audio/wav;base64,{data}"></audio>'


def mix(tracks: Iterable[Union[Sound, Tuple[Sound, float], Tuple[Sound, float, float]]]) -> Sound:
    """Mixes sounds of one rate in stereo: each alone, with its level in dB, or with level and pan (-1 left .. 1 right)."""
    given = [track if isinstance(track, tuple) else (track,) for track in tracks]
    whole = [(*track, 0.0, 0.0)[:3] for track in given]
    array = (MixTrack * len(whole))(*(MixTrack(sound=sound._as_parameter_, level=level, pan=pan) for sound, level, pan in whole))
    return Sound._of(Sound.make("torv_mix", array, size(len(array))))
