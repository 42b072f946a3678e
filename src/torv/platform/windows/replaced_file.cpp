#include "torv/platform/replaced_file_system.h"

#include "torv/platform/windows/full_path.h"

#include <algorithm>

namespace torv::replaced_file {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kPartBytes = 1u << 20;

HANDLE Native(Handle handle) { return reinterpret_cast<HANDLE>(handle); }
int LastError() { return static_cast<int>(GetLastError()); }
int Result(BOOL done) { return done ? 0 : LastError(); }

/// Where a link leads.
int FollowLink(std::string& path) {
    const HANDLE file =
        CreateFileA(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return LastError();
    char full[4096];
    const DWORD length = GetFinalPathNameByHandleA(file, full, sizeof(full), FILE_NAME_NORMALIZED);
    CloseHandle(file);
    if (length == 0 || length >= sizeof(full))
        return ERROR_FILENAME_EXCED_RANGE;
    path = full;
    if (path.compare(0, 8, "\\\\?\\UNC\\") == 0)
        path.replace(0, 8, "\\\\");
    else if (path.compare(0, 4, "\\\\?\\") == 0)
        path.erase(0, 4);
    return 0;
}

std::string FolderOf(const std::string& path) { return path.substr(0, path.find_last_of("\\/") + 1); }

} // namespace

int FindTarget(const char* path, Target& target) {
    char full[4096];
    char* name = nullptr;
    const DWORD length = *path ? FullPathName(path, sizeof(full), full, &name) : 0;
    if (length == 0 || length >= sizeof(full))
        return ERROR_PATH_NOT_FOUND;
    target.path = full;
    target.folder.assign(full, static_cast<std::size_t>((name ? name : full) - full));
    if (target.path.compare(0, 4, "\\\\.\\") == 0) {
        target.isStraight = true;
        char folder[MAX_PATH + 1];
        if (!GetTempPathA(sizeof(folder), folder))
            return LastError();
        target.folder = folder;
        return 0;
    }
    const DWORD attributes = GetFileAttributesA(full);
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return name ? 0 : ERROR_ACCESS_DENIED;
    if (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY))
        return ERROR_ACCESS_DENIED;
    if (!(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
        return 0;
    const int error = FollowLink(target.path);
    target.folder = FolderOf(target.path);
    return error;
}

const int kNoMemory = ERROR_NOT_ENOUGH_MEMORY;

unsigned long ProcessNumber() noexcept { return GetCurrentProcessId(); }
bool IsTaken(int error) noexcept { return error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS; }
bool IsDiskFull(int error) noexcept { return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL; }

int CreateNew(const char* name, const Target&) noexcept {
    const HANDLE file =
        CreateFileA(name, GENERIC_WRITE, kShareAll, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return LastError();
    CloseHandle(file);
    return 0;
}

int Open(const char* name, Handle& handle) noexcept {
    const HANDLE file = CreateFileA(name, GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    handle = file == INVALID_HANDLE_VALUE ? kNone : reinterpret_cast<Handle>(file);
    return handle == kNone ? LastError() : 0;
}

int Write(Handle handle, const char* bytes, std::size_t count) noexcept {
    while (count > 0) {
        DWORD done = 0;
        const DWORD part = static_cast<DWORD>(std::min<std::size_t>(count, kPartBytes));
        if (!WriteFile(Native(handle), bytes, part, &done, nullptr))
            return LastError();
        if (done == 0)
            return ERROR_DISK_FULL;
        bytes += done;
        count -= done;
    }
    return 0;
}

int Seek(Handle handle, std::uint64_t position) noexcept {
    LARGE_INTEGER distance{};
    distance.QuadPart = static_cast<LONGLONG>(position);
    return Result(SetFilePointerEx(Native(handle), distance, nullptr, FILE_BEGIN));
}

int Close(Handle handle) noexcept { return Result(CloseHandle(Native(handle))); }

int Replace(const char* name, const char* target) noexcept {
    Handle file = kNone;
    if (const int error = Open(name, file))
        return error;
    const int flushed = Result(FlushFileBuffers(Native(file)));
    CloseHandle(Native(file));
    if (flushed)
        return flushed;
    const DWORD old = GetFileAttributesA(target);
    if (old != INVALID_FILE_ATTRIBUTES)
        SetFileAttributesA(name, old);
    // Another process may be putting its own file there, or looking at the old one, at this very moment.
    for (int tries = 0;; ++tries) {
        const int error = Result(MoveFileExA(name, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
        if ((error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED) || tries == 20)
            return error;
        Sleep(10);
    }
}

int Pour(const char* name, const char* target) noexcept {
    const HANDLE source =
        CreateFileA(name, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (source == INVALID_HANDLE_VALUE)
        return LastError();
    const HANDLE file = CreateFileA(target, GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
    int error = file == INVALID_HANDLE_VALUE ? LastError() : 0;
    char part[16384];
    for (DWORD count = 1; !error && count > 0;) {
        error = Result(ReadFile(source, part, sizeof(part), &count, nullptr));
        if (!error)
            error = Write(reinterpret_cast<Handle>(file), part, count);
    }
    CloseHandle(source);
    if (file != INVALID_HANDLE_VALUE)
        CloseHandle(file);
    return error;
}

void Remove(const char* name) noexcept { DeleteFileA(name); }

} // namespace torv::replaced_file
