#pragma once

#include "torv/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>

namespace torv {

/// A file that takes another's place when it is whole. Until then it grows under a name of its own in the target's
/// folder, and a reader of the target finds the old content; afterwards it finds the new, never half of it.
///
/// The mode of a file that is replaced is kept; one that may not be written is refused. Where the path is a symbolic
/// link, what it points to is replaced and the link stays. What is no regular file (a device, a pipe, /dev/stdout) has
/// no name to take: the content goes straight into it with Commit, having grown in the folder for temporary files.
///
/// Paths are the system's own. Nothing is thrown; two objects may have one target at the same time, and the last Commit
/// stays. It needs nothing else of this library, so that what does not link the library can hold it too.
class TORV_API ReplacedFile {
public:
    /// Begins the file. When it cannot, IsOpen() is false and Error() tells why.
    explicit ReplacedFile(const char* path) noexcept;
    /// What was not committed goes.
    ~ReplacedFile();
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;

    /// Whether it can be written and committed.
    bool IsOpen() const noexcept { return m_name != nullptr; }
    /// Where the file grows, for writers that open it by name: a regular file, empty at first. They make none when it
    /// is not there, since it has been removed then, and have closed it before Commit. Null when nothing is open.
    const char* Path() const noexcept { return m_name; }

    /// Appends, or writes where Seek went. Once a write has failed, Commit answers false.
    bool Write(const void* bytes, std::size_t count) noexcept;
    /// The next Write's place, from the file's beginning.
    bool Seek(std::uint64_t position) noexcept;

    /// Flushes the file to the disk and puts it in the target's place. False, with the target as it was and nothing
    /// left behind, when that or a write before it failed. Nothing is open afterwards.
    bool Commit() noexcept;
    /// Gives the file up; harmless when nothing is open.
    void Discard() noexcept;

    /// The first failure, with the system's own number; none before it.
    std::error_code Error() const noexcept { return {m_error, std::system_category()}; }
    /// Whether that failure was for want of room.
    bool IsDiskFull() const noexcept;

    /// Removes every file that is under way in this process, up to 256 of them; each later Commit answers false. Safe
    /// in a signal handler: for a program that is about to end there. Each library that holds this class has its own.
    static void RemoveAllUnfinished() noexcept;

private:
    bool Begin(const char* path);
    bool Fail(int error) noexcept;
    bool Open() noexcept;
    int Close() noexcept;
    void Forget() noexcept;

    std::string m_target; ///< absolute, links followed
    bool m_isStraight = false;
    int m_error = 0;
    std::intptr_t m_handle = -1; ///< open only from the first Write or Seek on: other systems lock what is open
    char* m_name = nullptr;
    int m_slot = -1;
};

} // namespace torv
