#pragma once

#include <windows.h>

/// The system's calls, for folders of any name: where the code page of the process lacks letters of a folder, its short
/// form stands in its place, if the disk keeps one.
namespace torv {

DWORD ModuleFileName(HMODULE module, char* path, DWORD size);
DWORD FullPathName(const char* path, DWORD size, char* full, char** name);

} // namespace torv
