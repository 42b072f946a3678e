#include "torv/songs/input_file.h"

#include "torv/songs/song_error.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace torv::songs {

std::unique_ptr<std::istream> OpenInputStream(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw SongError{path + ": is a folder; name a file"};
    auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
    if (!*file)
        throw SongError{path + ": cannot be opened; check the name and whether you may read it"};
    return file;
}

std::unique_ptr<std::istream> OpenInputFile(const std::string& path) {
    std::unique_ptr<std::istream> file = OpenInputStream(path);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored))
        return file;
    auto content = std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    *content << file->rdbuf();
    content->clear(); // nothing came
    return content;
}

void AppendBytes(std::istream& stream, size_t most, std::vector<unsigned char>& bytes) {
    constexpr size_t kFirst = 4096;
    while (stream && bytes.size() < most) {
        const size_t before = bytes.size();
        bytes.resize(std::min(std::max(2 * before, kFirst), most));
        stream.read(reinterpret_cast<char*>(bytes.data() + before),
                    static_cast<std::streamsize>(bytes.size() - before));
        bytes.resize(before + static_cast<size_t>(stream.gcount()));
    }
}

std::vector<unsigned char> ReadInputFile(const std::string& path, size_t most) {
    std::vector<unsigned char> bytes;
    AppendBytes(*OpenInputStream(path), most, bytes);
    return bytes;
}

} // namespace torv::songs
