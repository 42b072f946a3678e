#include "file_identity.h"

#include "errors.h"

#include <cstdint>
#include <optional>
#include <tuple>

namespace {

/// What all paths to one file have in common. A file that is not there yet is its folder and a name in it.
using FileIdentity = std::tuple<uint64_t, uint64_t, std::string>;

std::optional<FileIdentity> IdentityOf(const std::string& path);

} // namespace

#if defined(_WIN32)
#include "torv/platform/system.h"

#include <algorithm>
#include <vector>

namespace {

std::optional<FileIdentity> IdentityOfExisting(const std::string& path, const std::string& name) {
    const HANDLE file = CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return std::nullopt;
    BY_HANDLE_FILE_INFORMATION about{};
    const bool isDisk = GetFileType(file) == FILE_TYPE_DISK && GetFileInformationByHandle(file, &about);
    CloseHandle(file);
    if (!isDisk)
        return std::nullopt;
    return FileIdentity{about.dwVolumeSerialNumber,
                        static_cast<uint64_t>(about.nFileIndexHigh) << 32 | about.nFileIndexLow, name};
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
    if (auto existing = IdentityOfExisting(path, {}))
        return existing;
    char full[4096];
    char* name = nullptr;
    const DWORD length = GetFullPathNameA(path.c_str(), sizeof full, full, &name);
    if (length == 0 || length >= sizeof full || !name)
        return std::nullopt;
    CharUpperA(name); // names differ by more than the case of their letters
    return IdentityOfExisting(std::string(full, name), name);
}

} // namespace

bool IsStandardOutput(const std::string& path) { return path == "-"; } // it has no other name here

#else
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace {

constexpr int kMostLinks = 40;

std::optional<FileIdentity> IdentityOf(const std::string& path) {
    namespace fs = std::filesystem;
    struct stat about {};
    if (stat(path.c_str(), &about) == 0)
        return S_ISREG(about.st_mode) ? std::optional(FileIdentity{about.st_dev, about.st_ino, {}}) : std::nullopt;
    std::error_code error;
    fs::path target = path;
    for (int links = 0; links < kMostLinks && fs::is_symlink(target, error); ++links)
        target = target.parent_path() / fs::read_symlink(target, error);
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (stat(folder.c_str(), &about) != 0)
        return std::nullopt;
    return FileIdentity{about.st_dev, about.st_ino, target.filename().string()};
}

} // namespace

bool IsStandardOutput(const std::string& path) {
    struct stat output {};
    struct stat named {};
    return path == "-" || (fstat(STDOUT_FILENO, &output) == 0 && stat(path.c_str(), &named) == 0 &&
                           output.st_dev == named.st_dev && output.st_ino == named.st_ino);
}
#endif

void RefuseOverwriting(const std::vector<std::string>& inputs,
                       const std::vector<std::pair<const char*, std::string>>& outputs) {
    struct Named {
        std::string what;
        std::optional<FileIdentity> identity;
    };
    std::vector<Named> named;
    named.reserve(inputs.size() + outputs.size());
    for (const std::string& input : inputs)
        named.push_back({"the input " + input, input == "-" ? std::nullopt : IdentityOf(input)});
    for (const auto& [option, path] : outputs) {
        const std::optional<FileIdentity> identity = path == "-" ? std::nullopt : IdentityOf(path);
        for (const Named& other : named)
            if (identity && identity == other.identity)
                throw WrongUse{std::string(option) + " " + path + ": is " + other.what +
                               ", which it would be written over; choose another name"};
        named.push_back({std::string("what ") + option + " names", identity});
    }
}
