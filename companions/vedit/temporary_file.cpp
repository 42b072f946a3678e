#include "temporary_file.h"

#include "failure.h"

#include "torv/platform/replaced_file.h"

#include <array>
#include <cstdio>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cstdlib>
#include <unistd.h>
#endif

namespace vedit {

namespace {

constexpr size_t kLargest = 65536;

#if defined(_WIN32)

std::string NewFile() {
    std::array<char, MAX_PATH + 1> folder{}, path{};
    Require(GetTempPathA(static_cast<DWORD>(folder.size()), folder.data()) != 0, VEDIT_FILE_ERROR);
    Require(GetTempFileNameA(folder.data(), "sng", 0, path.data()) != 0, VEDIT_FILE_ERROR);
    return path.data();
}

#else

std::string NewFile() {
    const char* const named = std::getenv("TMPDIR");
    std::string path = std::string(named && *named ? named : "/tmp") + "/singer-XXXXXX.txt";
    const int file = mkstemps(path.data(), 4);
    Require(file >= 0, VEDIT_FILE_ERROR);
    close(file);
    return path;
}

#endif

} // namespace

TemporaryFile::TemporaryFile(const std::string& content) : m_path(NewFile()) {
    torv::ReplacedFile file(m_path.c_str());
    if (file.Write(content.data(), content.size()) && file.Commit())
        return;
    std::remove(m_path.c_str());
    Fail(VEDIT_FILE_ERROR);
}

TemporaryFile::~TemporaryFile() { std::remove(m_path.c_str()); }

std::string TemporaryFile::Content() const {
    std::FILE* const file = std::fopen(m_path.c_str(), "rb");
    Require(file, VEDIT_BAD_INPUT);
    std::string content(kLargest, '\0');
    content.resize(std::fread(content.data(), 1, content.size(), file));
    std::fclose(file);
    Require(content.size() < kLargest, VEDIT_BAD_INPUT);
    return content;
}

} // namespace vedit
