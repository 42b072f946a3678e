#pragma once

#include <torv/platform/afx/exception.h>
#include <torv/platform/replaced_file.h>

#include <cstdint>
#include <cstdio>
#include <string>

/// A file that the command makes: it takes its name when it is whole, and goes when it was not committed. "-" is
/// standard output, which gets it whole. What fails throws InputError, which names the path as the user does.
class OutputFile {
public:
    explicit OutputFile(std::string path);

    /// Where it grows, for writers that open it by name.
    const char* GrowingPath() const { return m_file.Path(); }
    void Write(const std::string& bytes);
    /// The next Write's place, from the file's beginning.
    void Seek(uint64_t position);
    /// For libraries that nothing may be thrown through: false when it cannot be; Commit then tells why.
    bool TryWrite(const void* bytes, size_t count) noexcept { return m_file.Write(bytes, count); }
    bool TrySeek(uint64_t position) noexcept { return m_file.Seek(position); }
    void Commit();

    /// For writers that open it by name.
    [[noreturn]] void Fail(const CFileException& error) const { Fail(m_path, error); }
    [[noreturn]] static void Fail(const std::string& path, const CFileException& error);

private:
    [[noreturn]] void Fail() const;
    void PourOut();

    std::string m_path;
    torv::ReplacedFile m_file;
};

/// Throws the InputError for a file that cannot be written.
[[noreturn]] void FailToWrite(const std::string& path, bool isDiskFull, const std::string& reason);

/// For messages: "-" is standard output.
std::string NameOfOutput(const std::string& path);

/// Where to print what became of an output: standard output, unless that is where the output goes.
std::FILE* SummaryStream(const std::string& output);
