#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// The system's half of ReplacedFile, under posix/ and windows/. Each call answers 0 or the system's error number.
namespace torv::replaced_file {

using Handle = std::intptr_t;
constexpr Handle kNone = -1;
/// What is answered when there is no memory: ENOMEM or ERROR_NOT_ENOUGH_MEMORY.
extern const int kNoMemory;

struct Target {
    std::string path;        ///< absolute, links followed
    std::string folder;      ///< where the new file grows, with a separator at its end
    bool isStraight = false; ///< no regular file: it is written into, not replaced
};

/// Refuses a folder and a file that may not be written.
int FindTarget(const char* path, Target& target);
unsigned long ProcessNumber() noexcept;
bool IsTaken(int error) noexcept;
bool IsDiskFull(int error) noexcept;

/// Makes an empty file that nobody else has, with the mode of the file that it is to replace.
int CreateNew(const char* name, const Target& target) noexcept;
int Open(const char* name, Handle& handle) noexcept;
int Write(Handle handle, const char* bytes, std::size_t count) noexcept;
int Seek(Handle handle, std::uint64_t position) noexcept;
int Close(Handle handle) noexcept;

/// On the disk, and then in the target's place.
int Replace(const char* name, const char* target) noexcept;
/// Copied into the target, which is no regular file.
int Pour(const char* name, const char* target) noexcept;
/// Safe in a signal handler.
void Remove(const char* name) noexcept;

} // namespace torv::replaced_file
