#include "input_file.h"

#include "midi_song.h"

#include <filesystem>
#include <fstream>
#include <iterator>

std::vector<unsigned char> ReadInputFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw InputError{path + ": is a folder; name a file"};
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw InputError{path + ": cannot be opened; check the name and whether you may read it"};
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
