#include "torv/platform/file_handle.h"

#include "torv/platform/afx/file.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/resolve_path.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace torv {
namespace {

int Native(FileHandle handle) { return static_cast<int>(handle); }

/// What a failed transfer means: the right to read or write that a handle lacks counts as a bad handle here.
DWORD TransferError(FileHandle handle) {
    const int error = errno;
    return error == EBADF && fcntl(Native(handle), F_GETFD) != -1 ? ERROR_ACCESS_DENIED : ErrorFromErrno(error);
}

/// A missing file, or already its folder?
DWORD MissingError(const char* path) {
    return *path && !ResolvePath(FolderOf(WithSlashes(path))).empty() ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

/// Whether two paths lead to one entry of one folder; two links to one file do not.
bool IsSameEntry(const std::string& a, const std::string& b) {
    struct stat folderOfA {};
    struct stat folderOfB {};
    return a.substr(a.rfind('/') + 1) == b.substr(b.rfind('/') + 1) && // npos + 1 is the beginning
           stat(FolderOf(a).c_str(), &folderOfA) == 0 && stat(FolderOf(b).c_str(), &folderOfB) == 0 &&
           folderOfA.st_dev == folderOfB.st_dev && folderOfA.st_ino == folderOfB.st_ino;
}

/// Transfers until all is done, the file ends or an error comes: the system may take a request in parts.
template <class Byte, class Transfer>
DWORD TransferAll(FileHandle handle, Byte* bytes, UINT count, UINT& done, Transfer transfer) {
    done = 0;
    while (done < count) {
        const ssize_t part = transfer(Native(handle), bytes + done, count - done);
        if (part == 0)
            break;
        if (part > 0)
            done += static_cast<UINT>(part);
        else if (errno != EINTR)
            return TransferError(handle);
    }
    // Nothing to do still asks for a file that is open.
    return count == 0 && fcntl(Native(handle), F_GETFD) == -1 ? ErrorFromErrno(errno) : NO_ERROR;
}

DWORD Open(const char* path, UINT flags, FileHandle& handle, std::string& fullPath) {
    static constexpr int kAccess[] = {O_RDONLY, O_WRONLY, O_RDWR, O_RDONLY};
    int mode = kAccess[flags & 3] | O_CLOEXEC;
    if (flags & CFile::modeCreate)
        mode |= flags & CFile::modeNoTruncate ? O_CREAT : O_CREAT | O_TRUNC;

    std::string resolved = flags & CFile::modeCreate ? ResolveNewPath(path) : ResolvePath(path);
    if (resolved.empty())
        return MissingError(path);
    std::error_code ignored;
    std::string absolute = std::filesystem::absolute(resolved, ignored).string();
    const int file = open(resolved.c_str(), mode, 0666);
    if (file == -1)
        return errno == ENOENT ? MissingError(path) : ErrorFromErrno(errno);
    struct stat status {};
    if (fstat(file, &status) == 0 && S_ISDIR(status.st_mode)) {
        close(file);
        return ERROR_ACCESS_DENIED;
    }
    handle = file;
    fullPath = std::move(absolute.empty() ? resolved : absolute);
    return NO_ERROR;
}

DWORD Remove(const char* path) {
    // Exact names only, but for the separators: removing asks for no other spelling than the caller's.
    if (unlink(path) == 0 || (errno == ENOENT && unlink(WithSlashes(path).c_str()) == 0))
        return NO_ERROR;
    return errno == ENOENT ? MissingError(path) : ErrorFromErrno(errno);
}

DWORD Rename(const char* from, const char* to, bool replace) {
    const std::string source = access(from, F_OK) == 0 ? from : WithSlashes(from);
    std::string target = ResolveNewPath(to);
    if (target.empty())
        return ERROR_PATH_NOT_FOUND;
    if (IsSameEntry(source, target)) {
        // A file is not in its own way: it takes the new spelling.
        target = NewNamePath(to);
        replace = true;
    }
    int result = renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), replace ? 0 : RENAME_NOREPLACE);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
        // A file system that cannot refuse by itself: look first, which another program could slip past.
        if (!replace && access(target.c_str(), F_OK) == 0)
            return ERROR_ALREADY_EXISTS;
        result = rename(source.c_str(), target.c_str());
    }
    if (result == 0)
        return NO_ERROR;
    return errno == ENOENT ? MissingError(from) : ErrorFromErrno(errno);
}

} // namespace

DWORD OpenFileHandle(const char* path, UINT flags, FileHandle& handle, std::string& fullPath) {
    return OrFail(ERROR_NOT_ENOUGH_MEMORY, [&] { return Open(path, flags, handle, fullPath); });
}

DWORD CloseFileHandle(FileHandle handle) {
    // An interrupted close has closed: asking again could close another thread's file.
    return close(Native(handle)) == 0 || errno == EINTR ? NO_ERROR : ErrorFromErrno(errno);
}

DWORD ReadFileHandle(FileHandle handle, void* buffer, UINT bytes, UINT& done) {
    return TransferAll(handle, static_cast<char*>(buffer), bytes, done, read);
}

DWORD WriteFileHandle(FileHandle handle, const void* buffer, UINT bytes, UINT& done) {
    return TransferAll(handle, static_cast<const char*>(buffer), bytes, done, write);
}

DWORD ReadFileHandleAt(FileHandle handle, ULONGLONG place, void* buffer, UINT bytes, UINT& done) {
    return TransferAll(handle, static_cast<char*>(buffer), bytes, done, [&](int file, char* at, size_t count) {
        return pread(file, at, count, static_cast<off_t>(place + done));
    });
}

DWORD WriteFileHandleAt(FileHandle handle, ULONGLONG place, const void* buffer, UINT bytes, UINT& done) {
    return TransferAll(handle, static_cast<const char*>(buffer), bytes, done,
                       [&](int file, const char* at, size_t count) {
                           return pwrite(file, at, count, static_cast<off_t>(place + done));
                       });
}

DWORD SeekFileHandle(FileHandle handle, LONGLONG offset, SeekFrom from, ULONGLONG& position) {
    static constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    const off_t result = lseek(Native(handle), offset, kWhence[static_cast<int>(from)]);
    if (result == -1)
        return errno == EINVAL || errno == EOVERFLOW ? ERROR_NEGATIVE_SEEK : ErrorFromErrno(errno);
    position = static_cast<ULONGLONG>(result);
    return NO_ERROR;
}

DWORD FileHandleLength(FileHandle handle, ULONGLONG& length) {
    struct stat status {};
    if (fstat(Native(handle), &status) != 0)
        return ErrorFromErrno(errno);
    length = static_cast<ULONGLONG>(status.st_size);
    return NO_ERROR;
}

DWORD CutFileHandle(FileHandle handle) {
    const off_t position = lseek(Native(handle), 0, SEEK_CUR);
    if (position == -1)
        return ErrorFromErrno(errno);
    if (ftruncate(Native(handle), position) == 0)
        return NO_ERROR;
    return errno == EINVAL ? ERROR_ACCESS_DENIED : TransferError(handle); // EINVAL: open for reading only
}

DWORD RemoveFile(const char* path) {
    return OrFail(ERROR_NOT_ENOUGH_MEMORY, [&] { return Remove(path); });
}

DWORD RenameFile(const char* from, const char* to, bool replace) {
    return OrFail(ERROR_NOT_ENOUGH_MEMORY, [&] { return Rename(from, to, replace); });
}

} // namespace torv
