#include "input.h"

#include "errors.h"
#include "standard_streams.h"

#include <torv/songs/input_file.h>
#include <torv/songs/read_song.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <system_error>
#include <vector>

bool IsStandardInput(const std::string& path) { return path == "-"; }

std::string NameOfInput(const std::string& path) { return IsStandardInput(path) ? "standard input" : path; }

std::unique_ptr<std::istream> OpenSequentialInput(const std::string& path) {
    if (!IsStandardInput(path))
        return torv::songs::OpenInputStream(path);
    static bool isTaken = false;
    if (isTaken)
        throw WrongUse{"standard input can be read only once: name \"-\" once"};
    isTaken = true;
    MakeStandardInputBinary();
    return std::make_unique<std::istream>(std::cin.rdbuf());
}

namespace {

/// What comes through a pipe, to seek in. Of a song no more is taken than any song has.
std::unique_ptr<std::istream> Collected(std::istream& input, const std::string& name) {
    constexpr size_t kBeginning = 4096; // bytes
    constexpr size_t kBlock = 1U << 20;
    std::vector<unsigned char> bytes;
    torv::songs::AppendBytes(input, kBeginning, bytes);
    if (std::count(bytes.begin(), bytes.end(), 0) == kBeginning)
        throw InputError{name + ": begins with zeros alone, which neither a song nor a sound does"};
    const bool isSong = torv::songs::FormatOf(bytes) != torv::songs::SongFormat::Unknown;
    auto content = std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    for (size_t taken = 0; !bytes.empty() && !(isSong && taken > torv::songs::kLargestSongFile);) {
        content->write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        taken += bytes.size();
        bytes.clear();
        torv::songs::AppendBytes(input, kBlock, bytes);
    }
    return content;
}

} // namespace

std::unique_ptr<std::istream> OpenInput(const std::string& path) {
    std::error_code ignored;
    if (!IsStandardInput(path) && std::filesystem::is_regular_file(path, ignored))
        return torv::songs::OpenInputStream(path);
    return Collected(*OpenSequentialInput(path), NameOfInput(path));
}
