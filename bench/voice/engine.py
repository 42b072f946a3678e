"""The engine by its entry points, for what no command asks of it: a plain tone without its breath."""
import ctypes
import pathlib

import numpy as np

STEP = 256
NOISE = 0x61  # the voice control's selector


class Setting(ctypes.Structure):
    _fields_ = [("rate", ctypes.c_uint32), ("frame", ctypes.c_uint32), ("option", ctypes.c_char_p),
                ("zero", ctypes.c_uint32), ("one", ctypes.c_uint8)]


class Event(ctypes.Structure):
    _fields_ = [("delta", ctypes.c_uint32), ("status", ctypes.c_uint8), ("data1", ctypes.c_uint8),
                ("data2", ctypes.c_uint8), ("padding", ctypes.c_uint8)]


class Output(ctypes.Structure):
    _fields_ = [("count", ctypes.c_uint32), ("samples", ctypes.POINTER(ctypes.c_int16))]


def block(number, *parameters):
    """A block that applies at once: (parameter, data MSB[, data LSB]) after its opening."""
    messages = []
    for parameter, *data in [(0, 0, 0), (1, 0, 0), *parameters]:
        messages += [(99, number), (98, parameter), *zip((6, 38), data)]
    return messages


def tone(torv, program, key, rate, seconds):
    """The vowel "a" without breath, vibrato, jitter or shimmer, so that what is no harmonic is a fault."""
    library = ctypes.CDLL(str(next(pathlib.Path(torv).parent.rglob("RVE.so"))))
    messages = (block(0x53, (2, program)) + block(0x55, (2, NOISE), (3, 0)) +
                block(0x50, (2, key), (3, 64), (4, 60, 0), (5, 3), (17, 1), (18, 1), (19, ord("a"), 0), (127, 127)))
    events = (Event * len(messages))(*(Event(0, 0xB0, number, value, 0) for number, value in messages))
    handle = library.RVECreate()
    library.RVESetStaticSetting(handle, Setting(rate, STEP, b"still", 0, 1))
    library.RVEStart(handle)
    sounds = []
    buffer = (ctypes.c_int16 * 1024)()
    for step in range(int(seconds * 44100 / STEP)):
        output = Output(1024, ctypes.cast(buffer, ctypes.POINTER(ctypes.c_int16)))
        library.RVEDoStepSynthesis(handle, 0 if step else len(messages), events, ctypes.byref(output))
        sounds.append(np.array(buffer[:output.count]) / 32768)
    library.RVEDelete(handle)
    return np.concatenate(sounds)
