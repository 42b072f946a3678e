"""The C library, loaded: its calls as functions that raise."""
from __future__ import annotations

import ctypes
import os
import pathlib
import sys
from typing import Any, Callable, List, Sequence

_NAMES = {"win32": "torvc.dll"}


class TorvError(Exception):
    """A call that failed: `status` is its number in torv.h, the text says what, where and what to do."""

    def __init__(self, status: int, text: str) -> None:
        super().__init__(text)
        self.status = status


class NotFound(TorvError, LookupError):
    """There is no such name; the text has the nearest ones."""


class Busy(TorvError):
    """Another call, or another part of the process, is using it."""


class Cancelled(TorvError):
    """A callback said so."""


_OUT_OF_RANGE, _NOT_FOUND, _BUSY, _NO_MEMORY, _FILE_ERROR, _CANCELLED = 3, 4, 6, 8, 9, 13


class _OutOfRange(TorvError, IndexError, ValueError):
    pass


class _NoMemory(TorvError, MemoryError):
    pass


class _FileError(TorvError, OSError):
    pass


_CLASSES = {_OUT_OF_RANGE: _OutOfRange, _NOT_FOUND: NotFound, _BUSY: Busy, _NO_MEMORY: _NoMemory, _FILE_ERROR: _FileError,
            _CANCELLED: Cancelled}


def _candidates() -> List[str]:
    """Where the library may be: named by TORV_C_LIBRARY, in the package, in the tree that both are installed in, where the
    system keeps libraries."""
    name = _NAMES.get(sys.platform, "libtorvc.so.0")
    named = [os.environ["TORV_C_LIBRARY"]] if "TORV_C_LIBRARY" in os.environ else []
    here = pathlib.Path(__file__).resolve().parent
    own = here / "native" / ("bin" if sys.platform == "win32" else "lib") / name
    beside = here / "../../.." / name  # lib, of lib/python3/dist-packages/torv
    return [*named, *(str(path) for path in (own, beside) if path.exists()), name]


def _load() -> ctypes.CDLL:
    failures = []
    for candidate in _candidates():
        try:
            return ctypes.CDLL(candidate)
        except OSError as error:
            failures.append(str(error))
    raise ImportError("the library libtorvc cannot be loaded: install the package libtorv0, or name it in TORV_C_LIBRARY ("
                      + "; ".join(failures) + ")")


LIBRARY = _load()
LIBRARY.torv_error_text.restype = ctypes.c_char_p
LIBRARY.torv_version.restype = ctypes.c_char_p


def version() -> str:
    """The library's version."""
    return LIBRARY.torv_version().decode()


def check(status: int) -> None:
    """Raises what a status says."""
    if status:
        raise _CLASSES.get(status, TorvError)(status, LIBRARY.torv_error_text().decode("utf-8", "replace"))


def call(name: str, *arguments: Any) -> None:
    """Calls a function of the library. Whole numbers are passed as sizes where they are wrapped as such."""
    check(getattr(LIBRARY, name)(*arguments))


def size(value: int) -> ctypes.c_size_t:
    """An index or a count; what is below 0 is out of range in any case."""
    return ctypes.c_size_t(value if value >= 0 else 2**32)


def milliseconds(seconds: float) -> int:
    """What no song has, below 0 or beyond weeks, lies behind every end."""
    return round(1000 * seconds) if 0 <= seconds < 4e6 else 2**32 - 1


def place_in(names: Sequence[str], name: str, what: str) -> int:
    """The number that the library has for one of these names."""
    if name not in names:
        raise ValueError(f'there is no {what} "{name}", only {", ".join(names)}')
    return names.index(name)


def text_of(name: str, *arguments: Any) -> str:
    """The text that a call gives out, whose last arguments are a buffer, its capacity and what is needed."""
    needed = ctypes.c_size_t()
    call(name, *arguments, None, ctypes.c_size_t(0), ctypes.byref(needed))
    buffer = ctypes.create_string_buffer(max(needed.value, 1))
    call(name, *arguments, buffer, ctypes.c_size_t(len(buffer)), ctypes.byref(needed))
    return buffer.value.decode("utf-8", "replace")


def number_of(name: str, *arguments: Any, kind: Callable[[], Any] = ctypes.c_size_t) -> Any:
    """The number that a call gives out with its last argument."""
    number = kind()
    call(name, *arguments, ctypes.byref(number))
    return number.value


def utf8(text: Any) -> bytes:
    """A text or a path as the library takes it."""
    return os.fspath(text).encode("utf-8", "surrogateescape") if not isinstance(text, bytes) else text


class Handle:
    """Owns something of the library's; freed with this object. Usable as an argument of calls."""

    _free = ""

    def __init__(self, handle: ctypes.c_void_p) -> None:
        self._as_parameter_ = handle

    @classmethod
    def make(cls, name: str, *arguments: Any) -> ctypes.c_void_p:
        """What a call gives out with its last argument."""
        handle = ctypes.c_void_p()
        call(name, *arguments, ctypes.byref(handle))
        return handle

    def close(self) -> None:
        """Frees it now; harmless when it is."""
        handle, self._as_parameter_ = self._as_parameter_, ctypes.c_void_p()
        if handle:
            call(self._free, handle)

    def __del__(self) -> None:
        handle = getattr(self, "_as_parameter_", None)
        if handle and LIBRARY is not None:
            getattr(LIBRARY, self._free)(handle)

    def __enter__(self) -> Any:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()
