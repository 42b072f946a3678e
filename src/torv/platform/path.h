#pragma once

#include "torv/platform/afx/string.h"
#include "torv/platform/export.h"
#include "torv/platform/system.h"

/// Paths are bytes. Both separators are read on both systems; the system's own is written. A "\" that is the second
/// half of a double-byte character is none: of code page 932 on POSIX, where such names come from, of the system's own
/// code page on Windows.
namespace torv {

#if defined(_WIN32)
constexpr char kPathSeparator = '\\';
#else
constexpr char kPathSeparator = '/'; ///< what the library writes between folder and file
#endif

/// Folder and file with one separator between them; the file alone for an empty folder. Null texts are empty.
TORV_API CString JoinPath(const char* folder, const char* file);

/// The next separator at or after `path`, which is the beginning of a character, or the NUL.
TORV_API const char* NextSeparator(const char* path);

/// Where the last component begins: after the last separator or, on Windows, a drive's colon.
TORV_API const char* FileNamePart(const char* path);
/// What stands before it, with its separator; empty for a bare name.
TORV_API CString FolderPart(const char* path);

/// Renames a file, replacing one that has the new name: readers see the old file or the new one, never half of it.
/// FALSE, and nothing has changed, when it fails; the last error tells why.
TORV_API BOOL RenameOver(const char* from, const char* to);

} // namespace torv
