#include "torv/platform/replaced_file_system.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace torv::replaced_file {
namespace {

constexpr int kMostLinks = 40;

int Native(Handle handle) { return static_cast<int>(handle); }

/// Which of this process's open files a path below /proc names (as /dev/stdout does), or -1.
int DescriptorOf(const std::string& path) {
    const std::string folder = "/proc/" + std::to_string(getpid()) + "/fd/";
    if (path.compare(0, folder.size(), folder) != 0)
        return -1;
    return std::atoi(path.c_str() + folder.size());
}

/// The path with every link of its folder followed.
int InRealFolder(const std::string& path, std::string& result) {
    const std::size_t name = path.rfind('/') + 1; // npos + 1 is the beginning
    const std::unique_ptr<char, decltype(&std::free)> folder(
        realpath(name == 0 ? "." : path.substr(0, name).c_str(), nullptr), std::free);
    if (!folder)
        return errno;
    result = folder.get();
    if (result != "/")
        result += '/';
    result += path.substr(name);
    return 0;
}

/// Follows the links that the last component is, also to what does not exist yet, but not those of /proc: what they
/// point to is open already.
int FollowLinks(const char* path, std::string& target) {
    std::string next = path;
    for (int links = 0; links < kMostLinks; ++links) {
        if (const int error = InRealFolder(next, target))
            return error;
        char link[PATH_MAX];
        const ssize_t length = target.compare(0, 6, "/proc/") == 0 ? -1 : readlink(target.c_str(), link, sizeof(link));
        if (length < 0)
            return 0;
        next.assign(link, static_cast<std::size_t>(length));
        if (next[0] != '/')
            next.insert(0, target, 0, target.rfind('/') + 1);
    }
    return ELOOP;
}

std::string TemporaryFolder() {
    const char* const named = std::getenv("TMPDIR");
    return std::string(named && *named ? named : "/tmp") + '/';
}

int Flush(const char* name) {
    const int file = open(name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file == -1)
        return errno;
    const int error = fsync(file) == 0 ? 0 : errno;
    close(file);
    return error;
}

} // namespace

int FindTarget(const char* path, Target& target) {
    if (!*path)
        return ENOENT;
    if (const int error = FollowLinks(path, target.path))
        return error;
    target.folder = target.path.substr(0, target.path.rfind('/') + 1);
    struct stat status {};
    if (stat(target.path.c_str(), &status) != 0)
        return errno == ENOENT && target.folder != target.path ? 0 : errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    target.isStraight = !S_ISREG(status.st_mode) || DescriptorOf(target.path) >= 0;
    if (target.isStraight)
        target.folder = TemporaryFolder();
    return access(target.path.c_str(), W_OK) == 0 ? 0 : errno;
}

const int kNoMemory = ENOMEM;

unsigned long ProcessNumber() noexcept { return static_cast<unsigned long>(getpid()); }
bool IsTaken(int error) noexcept { return error == EEXIST; }
bool IsDiskFull(int error) noexcept { return error == ENOSPC || error == EDQUOT || error == EFBIG; }

int CreateNew(const char* name, const Target& target) noexcept {
    struct stat old {};
    const bool isNew = stat(target.path.c_str(), &old) != 0;
    const int file = open(name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, isNew ? 0666 : 0600);
    if (file == -1)
        return errno;
    int error = 0;
    if (!isNew && !target.isStraight) {
        // Only who may give files away can keep another's his; the rights come afterwards, since giving takes some.
        [[maybe_unused]] const int given = fchown(file, old.st_uid, old.st_gid);
        if (fchmod(file, old.st_mode & 0777) != 0)
            error = errno;
    }
    close(file);
    if (error)
        unlink(name);
    return error;
}

int Open(const char* name, Handle& handle) noexcept {
    handle = open(name, O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    return handle == kNone ? errno : 0;
}

int Write(Handle handle, const char* bytes, std::size_t count) noexcept {
    while (count > 0) {
        const ssize_t done = write(Native(handle), bytes, count);
        if (done < 0 && errno != EINTR)
            return errno;
        if (done == 0)
            return ENOSPC;
        if (done > 0) {
            bytes += done;
            count -= static_cast<std::size_t>(done);
        }
    }
    return 0;
}

int Seek(Handle handle, std::uint64_t position) noexcept {
    return lseek(Native(handle), static_cast<off_t>(position), SEEK_SET) == -1 ? errno : 0;
}

int Close(Handle handle) noexcept {
    // An interrupted close has closed.
    return close(Native(handle)) == 0 || errno == EINTR ? 0 : errno;
}

int Replace(const char* name, const char* target) noexcept {
    if (const int error = Flush(name))
        return error;
    if (rename(name, target) != 0)
        return errno;
    // The new name too is on the disk then; where a folder cannot be flushed it is in place all the same.
    char folder[PATH_MAX];
    const std::size_t length = static_cast<std::size_t>(std::strrchr(target, '/') + 1 - target);
    if (length < sizeof(folder)) {
        std::memcpy(folder, target, length);
        folder[length] = '\0';
        Flush(folder);
    }
    return 0;
}

int Pour(const char* name, const char* target) noexcept {
    const int source = open(name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (source == -1)
        return errno;
    unlink(name); // however this ends, nothing is left
    // A file that is open here goes on where it stands, behind what was written into it before.
    const int descriptor = DescriptorOf(target);
    const int file =
        descriptor >= 0 ? fcntl(descriptor, F_DUPFD_CLOEXEC, 0) : open(target, O_WRONLY | O_NOCTTY | O_CLOEXEC);
    int error = file == -1 ? errno : 0;
    char part[16384];
    for (ssize_t count = 1; !error && count > 0;) {
        count = read(source, part, sizeof(part));
        if (count < 0 && errno == EINTR)
            count = 1; // again
        else if (count < 0)
            error = errno;
        else
            error = Write(file, part, static_cast<std::size_t>(count));
    }
    close(source);
    if (file != -1 && close(file) != 0 && !error)
        error = errno;
    return error;
}

void Remove(const char* name) noexcept { unlink(name); }

} // namespace torv::replaced_file
