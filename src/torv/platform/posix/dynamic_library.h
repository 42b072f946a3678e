#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

/// Loads a library by its Windows name: under that name itself, then as NAME.so for "NAME.DLL" (any case) or "NAME".
/// A bare name is sought in the folders of TORV_LIBRARY_PATH (separated by colons), beside this library, in the
/// `companions` folder beside it, and by the system's loader; a name with a folder only there.
/// Loading again counts. Null, with ERROR_MOD_NOT_FOUND, when there is none.
TORV_API HMODULE LoadLibraryA(LPCSTR name);
/// The entry point of an undecorated name, or null. The module must be loaded.
TORV_API FARPROC GetProcAddress(HMODULE module, LPCSTR name);
/// Zero for a handle that names no loaded library. The library goes when every load has been freed.
TORV_API BOOL FreeLibrary(HMODULE module);
/// Writes the path of a loaded library, for null of this library, and returns its length. A path that does not fit is
/// cut, terminated, with `size` returned and ERROR_INSUFFICIENT_BUFFER. 0 when the handle names nothing.
TORV_API DWORD GetModuleFileNameA(HMODULE module, LPSTR path, DWORD size);
