#include "input.h"

#include "errors.h"
#include "standard_streams.h"

#include <torv/songs/input_file.h>

#include <iostream>
#include <sstream>

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
    auto content = std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    *content << OpenInputStream(path)->rdbuf();
    content->clear(); // nothing came
    return content;
}
