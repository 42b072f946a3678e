#pragma once

#include "torv/platform/system.h"

#include <string>

/// The system's half of CFile: each call does one thing to an open file and returns 0 or a Windows error number.
/// One declaration, two implementations, under posix/ and windows/.
namespace torv {

/// A file as the system names it; never a valid one.
using FileHandle = INT_PTR;
constexpr FileHandle kNoFile = -1;

enum class SeekFrom { Begin, Current, End };

/// `flags` are CFile's open flags. On success `handle` names the open file and `fullPath` is its absolute path.
DWORD OpenFileHandle(const char* path, UINT flags, FileHandle& handle, std::string& fullPath);
DWORD CloseFileHandle(FileHandle handle);
/// `done` is less than `bytes` only at the end of the file.
DWORD ReadFileHandle(FileHandle handle, void* buffer, UINT bytes, UINT& done);
/// `done` is less than `bytes` with result 0 when the disk is full.
DWORD WriteFileHandle(FileHandle handle, const void* buffer, UINT bytes, UINT& done);
/// The same from a place of the file, in one call of the system; where the position is afterwards is left open.
/// @{
DWORD ReadFileHandleAt(FileHandle handle, ULONGLONG place, void* buffer, UINT bytes, UINT& done);
DWORD WriteFileHandleAt(FileHandle handle, ULONGLONG place, const void* buffer, UINT bytes, UINT& done);
/// @}
DWORD SeekFileHandle(FileHandle handle, LONGLONG offset, SeekFrom from, ULONGLONG& position);
DWORD FileHandleLength(FileHandle handle, ULONGLONG& length);
/// Cuts or grows (with zeros) the file at the current position.
DWORD CutFileHandle(FileHandle handle);

DWORD RemoveFile(const char* path);
/// Refuses to replace an existing file, unless `replace`.
DWORD RenameFile(const char* from, const char* to, bool replace);

} // namespace torv
