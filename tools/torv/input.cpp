#include "input.h"

#include "errors.h"
#include "standard_streams.h"

#include <torv/songs/input_file.h>

#include <algorithm>
#include <iostream>
#include <sstream>
#include <vector>

bool IsStandardInput(const std::string& path) { return path == "-"; }

std::string NameOfInput(const std::string& path) { return IsStandardInput(path) ? "standard input" : path; }

std::unique_ptr<std::istream> OpenInputStream(const std::string& path) {
    if (!IsStandardInput(path))
        return torv::songs::OpenInputStream(path);
    static bool isTaken = false;
    if (isTaken)
        throw WrongUse{"standard input can be read only once: name \"-\" once"};
    isTaken = true;
    MakeStandardInputBinary();
    return std::make_unique<std::istream>(std::cin.rdbuf());
}

std::unique_ptr<std::istream> OpenInput(const std::string& path) {
    if (!IsStandardInput(path))
        return torv::songs::OpenInputFile(path);
    constexpr size_t kBeginning = 4096; // bytes
    const std::unique_ptr<std::istream> input = OpenInputStream(path);
    std::vector<unsigned char> beginning;
    torv::songs::AppendBytes(*input, kBeginning, beginning);
    if (std::count(beginning.begin(), beginning.end(), 0) == kBeginning)
        throw InputError{NameOfInput(path) + ": begins with zeros alone, which neither a song nor a sound does"};
    auto content = std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    content->write(reinterpret_cast<const char*>(beginning.data()), static_cast<std::streamsize>(beginning.size()));
    *content << input->rdbuf();
    content->clear(); // nothing came
    return content;
}
