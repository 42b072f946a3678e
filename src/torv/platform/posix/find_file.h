#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x01;
constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x02;
constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x04;
constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;

struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    CHAR cFileName[MAX_PATH];
    CHAR cAlternateFileName[14];
};
using LPWIN32_FIND_DATAA = WIN32_FIND_DATAA*;
static_assert(sizeof(WIN32_FIND_DATAA) == 320, "the record has one layout on every system");

/// Files whose name matches the pattern's last component, whatever the case of letters; `*` stands for any bytes, `?`
/// for one. A name without wildcards finds the file of just that spelling first. "." and ".." belong to a wildcard's
/// answers. Attributes: a directory, hidden for a leading dot, read-only when nobody may write, archive for a plain
/// file. INVALID_HANDLE_VALUE, with ERROR_FILE_NOT_FOUND or ERROR_PATH_NOT_FOUND, when there is none.
TORV_API HANDLE FindFirstFileA(LPCSTR pattern, LPWIN32_FIND_DATAA found);
/// Zero, with ERROR_NO_MORE_FILES, after the last match.
TORV_API BOOL FindNextFileA(HANDLE search, LPWIN32_FIND_DATAA found);
TORV_API BOOL FindClose(HANDLE search);

/// Writes the folder for temporary files with a separator at its end; returns its length, or the size that is needed
/// when `size` is too small.
TORV_API DWORD GetTempPathA(DWORD size, LPSTR path);
