#include "own_files.h"

#include "failure.h"
#include "folders.h"

#include "torv/platform/replaced_file.h"

#include <array>
#include <cstdio>
#include <memory>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/stat.h>
#endif

namespace dbm {

namespace {

constexpr size_t kLargest = size_t{16} << 20;

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

#if defined(_WIN32)

bool MakeFolder(const std::string& path) { return CreateDirectoryA(path.c_str(), nullptr) != 0; }

#else

bool MakeFolder(const std::string& path) { return mkdir(path.c_str(), 0777) == 0; }

#endif

void MakeFolders(const std::string& path) {
    if (Exists(path))
        return;
    const std::string parent = FolderOf(path);
    if (parent != path && parent != "." && !parent.empty())
        MakeFolders(parent);
    MakeFolder(path); // what fails here fails again when the file is made
}

} // namespace

#if defined(_WIN32)

bool Exists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

bool Rename(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

#else

bool Exists(const std::string& path) {
    struct stat state {};
    return lstat(path.c_str(), &state) == 0;
}

bool Rename(const std::string& from, const std::string& to) { return std::rename(from.c_str(), to.c_str()) == 0; }

#endif

std::optional<std::string> ReadFile(const std::string& path) {
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return std::nullopt;
    std::string content;
    std::array<char, 4096> part{};
    while (const size_t count = std::fread(part.data(), 1, part.size(), file.get())) {
        content.append(part.data(), count);
        if (content.size() > kLargest)
            return std::nullopt;
    }
    return std::ferror(file.get()) ? std::nullopt : std::make_optional(std::move(content));
}

void WriteFile(const std::string& path, const std::string& content) {
    MakeFolders(FolderOf(path));
    torv::ReplacedFile file(path.c_str());
    Require(file.Write(content.data(), content.size()) && file.Commit(), DBM_FILE_ERROR);
}

void Remove(const std::string& path) { std::remove(path.c_str()); }

} // namespace dbm
