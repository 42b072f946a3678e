#include "output_file.h"

#include "errors.h"
#include "file_identity.h"
#include "standard_streams.h"

#include <filesystem>
#include <fstream>
#include <utility>

namespace {

/// What goes to standard output grows among the temporary files.
std::string PlaceOf(const std::string& path) {
    std::error_code error;
    return path == "-" ? (std::filesystem::temp_directory_path(error) / "torv-output").string() : path;
}

} // namespace

OutputFile::OutputFile(std::string path) : m_path(std::move(path)), m_file(PlaceOf(m_path).c_str()) {
    if (!m_file.IsOpen())
        Fail();
}

void OutputFile::Write(const std::string& bytes) {
    if (!m_file.Write(bytes.data(), bytes.size()))
        Fail();
}

void OutputFile::Seek(uint64_t position) {
    if (!m_file.Seek(position))
        Fail();
}

void OutputFile::PourOut() {
    if (m_file.Error())
        Fail();
    MakeStandardOutputBinary();
    std::ifstream grown(m_file.Path(), std::ios::binary);
    char part[16384];
    while (grown.read(part, sizeof part) || grown.gcount() > 0)
        if (std::fwrite(part, 1, static_cast<size_t>(grown.gcount()), stdout) != static_cast<size_t>(grown.gcount()))
            break; // which is told at the end
    m_file.Discard();
}

void OutputFile::Commit() {
    if (m_path == "-")
        return PourOut();
    if (!m_file.Commit())
        Fail();
}

void OutputFile::Fail() const { FailToWrite(m_path, m_file.IsDiskFull(), m_file.Error().message()); }

void OutputFile::Fail(const std::string& path, const CFileException& error) {
    FailToWrite(path, error.m_cause == CFileException::diskFull, {});
}

void FailToWrite(const std::string& path, bool isDiskFull, const std::string& reason) {
    if (isDiskFull)
        throw InputError{NameOfOutput(path) + ": the disk is full; make room and try again"};
    throw InputError{NameOfOutput(path) + ": cannot be written" + (reason.empty() ? "" : " (" + reason + ")") +
                     "; check the folder and whether you may write there"};
}

std::string NameOfOutput(const std::string& path) { return path == "-" ? "standard output" : path; }

std::FILE* SummaryStream(const std::string& output) { return IsStandardOutput(output) ? stderr : stdout; }
