#include "torv/platform/path.h"

#include "torv/platform/file_handle.h"
#include "torv/platform/library_module.h"

namespace torv {
namespace {

constexpr bool IsSeparator(char c) { return c == '/' || c == '\\'; }

} // namespace

CString JoinPath(const char* folder, const char* file) {
    CString path(folder);
    if (!path.IsEmpty() && !IsSeparator(path[path.GetLength() - 1]))
        path += kPathSeparator;
    path += file;
    return path;
}

const char* FileNamePart(const char* path) {
    if (!path)
        return "";
    const char* name = path;
    for (const char* at = path; *at; ++at) {
        bool ends = IsSeparator(*at);
#if defined(_WIN32)
        ends = ends || (*at == ':' && at == path + 1);
#endif
        if (ends)
            name = at + 1;
    }
    return name;
}

BOOL RenameOver(const char* from, const char* to) {
    const DWORD error = RenameFile(from ? from : "", to ? to : "", true);
    if (error)
        SetLastError(error);
    return error == 0;
}

CString LibraryFolder() {
    char path[4096];
    const DWORD length = GetModuleFileNameA(LibraryModule(), path, sizeof(path));
    if (length == 0 || length >= sizeof(path))
        return {};
    const char* name = FileNamePart(path);
    return name == path ? CString() : CString(path, static_cast<int>(name - path) - 1);
}

} // namespace torv
