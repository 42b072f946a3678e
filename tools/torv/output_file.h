#pragma once

#include <torv/platform/afx/exception.h>
#include <torv/platform/replaced_file.h>

#include <cstdio>
#include <string>

/// A file that the command makes: it takes its name when it is whole, and goes when it was not committed. What fails
/// throws InputError, which names the path as the user does.
class OutputFile {
public:
    explicit OutputFile(std::string path);

    /// Where it grows, for writers that open it by name.
    const char* GrowingPath() const { return m_file.Path(); }
    void Write(const std::string& bytes);
    void Commit();

    /// For writers that open it by name.
    [[noreturn]] void Fail(const CFileException& error) const { Fail(m_path, error); }
    [[noreturn]] static void Fail(const std::string& path, const CFileException& error);

private:
    [[noreturn]] void Fail() const;

    std::string m_path;
    torv::ReplacedFile m_file;
};

/// Throws the InputError for a file that cannot be written.
[[noreturn]] void FailToWrite(const std::string& path, bool isDiskFull, const std::string& reason);

/// Where to print what became of an output: standard output, unless that is where the output goes.
std::FILE* SummaryStream(const std::string& output);
