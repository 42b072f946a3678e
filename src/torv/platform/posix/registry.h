#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/types.h"

/// The machine's registry, read from a text file whenever a key is opened:
///
///     ; a comment, as a line with '#' is
///     [HKEY_LOCAL_MACHINE\SOFTWARE\VENDOR\PRODUCT]
///     PATH = /srv/data
///     NAME = " quotes keep blanks at the ends "
///
/// Which file: the one that TORV_REGISTRY names and no other, if it is set; else the user's, in
/// $XDG_CONFIG_HOME/torv/registry or $HOME/.config/torv/registry, and for a key that it does not have the installed
/// default, torv.registry beside this library or ../share/torv/torv.registry from there. All values are strings, and
/// the first of equal names counts. Keys and names are compared without regard to the case of ASCII letters.

using HKEY = struct HKEY__*;
using REGSAM = DWORD;
using LSTATUS = LONG;

#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(-0x7FFFFFFE)))
constexpr REGSAM KEY_READ = 0x20019;
constexpr DWORD REG_SZ = 1;

/// Opens a key below HKEY_LOCAL_MACHINE or below an open key; with a null or empty name that key again. For reading
/// only: any other access is ERROR_ACCESS_DENIED. A key is there when it, or one below it, is written in the file.
TORV_API LSTATUS RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM access, HKEY* result);
/// The value as it was when the key was opened. `size` goes in as the room in `data` and comes out as the bytes of the
/// value with its NUL; ERROR_MORE_DATA when the room is too small. Null `data` asks for the size alone.
TORV_API LSTATUS RegQueryValueExA(HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
TORV_API LSTATUS RegCloseKey(HKEY key);
