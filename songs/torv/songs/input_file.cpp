#include "torv/songs/input_file.h"

#include "torv/songs/song_error.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace torv::songs {

std::unique_ptr<std::istream> OpenInputFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw SongError{path + ": is a folder; name a file"};
    auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
    if (!*file)
        throw SongError{path + ": cannot be opened; check the name and whether you may read it"};
    if (std::filesystem::is_regular_file(path, ignored))
        return file;
    auto content = std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    *content << file->rdbuf();
    content->clear(); // nothing came
    return content;
}

std::vector<unsigned char> ReadInputFile(const std::string& path, size_t most) {
    constexpr size_t kFirst = 4096;
    const std::unique_ptr<std::istream> file = OpenInputFile(path);
    std::vector<unsigned char> bytes;
    for (size_t size = 0; *file && size < most;) {
        const size_t next = std::min(std::max(2 * size, kFirst), most);
        bytes.resize(next);
        file->read(reinterpret_cast<char*>(bytes.data() + size), static_cast<std::streamsize>(next - size));
        size += static_cast<size_t>(file->gcount());
        bytes.resize(size);
    }
    return bytes;
}

} // namespace torv::songs
