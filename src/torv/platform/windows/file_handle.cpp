#include "torv/platform/file_handle.h"

#include "torv/platform/afx/file.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/windows/full_path.h"

namespace torv {
namespace {

HANDLE Native(FileHandle handle) { return reinterpret_cast<HANDLE>(handle); }

DWORD Result(BOOL done) { return done ? NO_ERROR : GetLastError(); }

OVERLAPPED PlaceOf(ULONGLONG place) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(place);
    at.OffsetHigh = static_cast<DWORD>(place >> 32);
    return at;
}

} // namespace

DWORD OpenFileHandle(const char* path, UINT flags, FileHandle& handle, std::string& fullPath) {
    static constexpr DWORD kAccess[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE, GENERIC_READ};
    // With nothing denied an unfinished file can be removed while it is open.
    static constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    static constexpr DWORD kShare[] = {0, 0, FILE_SHARE_READ, FILE_SHARE_WRITE, kShareAll};
    const UINT share = (flags & 0x70) >> 4;
    const DWORD disposition = !(flags & CFile::modeCreate)    ? OPEN_EXISTING
                              : flags & CFile::modeNoTruncate ? OPEN_ALWAYS
                                                              : CREATE_ALWAYS;
    char full[4096];
    const DWORD length = FullPathName(path, sizeof(full), full, nullptr);
    const bool isNamed = OrFail(false, [&] {
        fullPath = length > 0 && length < sizeof(full) ? full : path;
        return true;
    });
    if (!isNamed)
        return ERROR_NOT_ENOUGH_MEMORY;
    const HANDLE file = CreateFileA(path, kAccess[flags & 3], kShare[share <= 4 ? share : 0], nullptr, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError();
    handle = reinterpret_cast<FileHandle>(file);
    return NO_ERROR;
}

DWORD CloseFileHandle(FileHandle handle) { return Result(CloseHandle(Native(handle))); }

DWORD ReadFileHandle(FileHandle handle, void* buffer, UINT bytes, UINT& done) {
    DWORD count = 0;
    const DWORD error = Result(ReadFile(Native(handle), buffer, bytes, &count, nullptr));
    done = count;
    return error;
}

DWORD WriteFileHandle(FileHandle handle, const void* buffer, UINT bytes, UINT& done) {
    DWORD count = 0;
    const DWORD error = Result(WriteFile(Native(handle), buffer, bytes, &count, nullptr));
    done = count;
    return error;
}

DWORD ReadFileHandleAt(FileHandle handle, ULONGLONG place, void* buffer, UINT bytes, UINT& done) {
    DWORD count = 0;
    OVERLAPPED at = PlaceOf(place);
    const DWORD error = Result(ReadFile(Native(handle), buffer, bytes, &count, &at));
    done = count;
    return error == ERROR_HANDLE_EOF ? NO_ERROR : error; // from a place, the end is told as an error
}

DWORD WriteFileHandleAt(FileHandle handle, ULONGLONG place, const void* buffer, UINT bytes, UINT& done) {
    DWORD count = 0;
    OVERLAPPED at = PlaceOf(place);
    const DWORD error = Result(WriteFile(Native(handle), buffer, bytes, &count, &at));
    done = count;
    return error;
}

DWORD SeekFileHandle(FileHandle handle, LONGLONG offset, SeekFrom from, ULONGLONG& position) {
    LARGE_INTEGER distance{};
    LARGE_INTEGER result{};
    distance.QuadPart = offset;
    const DWORD error = Result(SetFilePointerEx(Native(handle), distance, &result, static_cast<DWORD>(from)));
    position = static_cast<ULONGLONG>(result.QuadPart);
    return error;
}

DWORD FileHandleLength(FileHandle handle, ULONGLONG& length) {
    LARGE_INTEGER result{};
    const DWORD error = Result(GetFileSizeEx(Native(handle), &result));
    length = static_cast<ULONGLONG>(result.QuadPart);
    return error;
}

DWORD CutFileHandle(FileHandle handle) { return Result(SetEndOfFile(Native(handle))); }

DWORD RemoveFile(const char* path) { return Result(DeleteFileA(path)); }

DWORD RenameFile(const char* from, const char* to, bool replace) {
    return Result(MoveFileExA(from, to, MOVEFILE_COPY_ALLOWED | (replace ? MOVEFILE_REPLACE_EXISTING : 0)));
}

} // namespace torv
