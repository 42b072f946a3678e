#include "torv/platform/path.h"

#include "torv/platform/file_handle.h"
#include "torv/platform/library_module.h"
#include "torv/platform/text.h"

#if defined(_WIN32)
#include "torv/platform/windows/full_path.h"
#endif

namespace torv {
namespace {

constexpr bool IsSeparator(char c) { return c == '/' || c == '\\'; }

#if defined(_WIN32)
bool IsLeadByte(char c) { return IsDBCSLeadByte(static_cast<BYTE>(c)); }
#else
bool IsLeadByte(char c) { return IsLeadByte932(static_cast<unsigned char>(c)); }

DWORD ModuleFileName(HMODULE module, char* path, DWORD size) { return GetModuleFileNameA(module, path, size); }
#endif

/// Every code page's second bytes lie behind the digits and signs: a lead byte before "/" is alone.
bool IsDoubleByte(const char* text) { return IsLeadByte(text[0]) && static_cast<unsigned char>(text[1]) >= 0x40; }

bool EndsWithSeparator(const char* path) {
    const char* const last = FileNamePart(path);
    return last != path && !*last && IsSeparator(last[-1]);
}

} // namespace

const char* NextSeparator(const char* path) {
    while (*path && !IsSeparator(*path))
        path += IsDoubleByte(path) ? 2 : 1;
    return path;
}

CString JoinPath(const char* folder, const char* file) {
    CString path(folder);
    if (!path.IsEmpty() && !EndsWithSeparator(path))
        path += kPathSeparator;
    path += file;
    return path;
}

const char* FileNamePart(const char* path) {
    if (!path)
        return "";
    const char* name = path;
#if defined(_WIN32)
    if (path[0] && path[1] == ':')
        name = path + 2;
#endif
    for (const char* at = NextSeparator(name); *at; at = NextSeparator(at + 1))
        name = at + 1;
    return name;
}

CString FolderPart(const char* path) {
    return path ? CString(path, static_cast<int>(FileNamePart(path) - path)) : CString();
}

BOOL RenameOver(const char* from, const char* to) {
    const DWORD error = RenameFile(from ? from : "", to ? to : "", true);
    if (error)
        SetLastError(error);
    return error == 0;
}

CString LibraryFolder() {
    char path[4096];
    const DWORD length = ModuleFileName(LibraryModule(), path, sizeof(path));
    if (length == 0 || length >= sizeof(path))
        return {};
    const CString folder = FolderPart(path);
    return folder.Left(folder.GetLength() - 1);
}

} // namespace torv
