#include "output_file.h"

#include "errors.h"
#include "file_identity.h"

#include <utility>

OutputFile::OutputFile(std::string path) : m_path(std::move(path)), m_file(m_path.c_str()) {
    if (!m_file.IsOpen())
        Fail();
}

void OutputFile::Write(const std::string& bytes) {
    if (!m_file.Write(bytes.data(), bytes.size()))
        Fail();
}

void OutputFile::Commit() {
    if (!m_file.Commit())
        Fail();
}

void OutputFile::Fail() const { FailToWrite(m_path, m_file.IsDiskFull(), m_file.Error().message()); }

void OutputFile::Fail(const std::string& path, const CFileException& error) {
    FailToWrite(path, error.m_cause == CFileException::diskFull, {});
}

void FailToWrite(const std::string& path, bool isDiskFull, const std::string& reason) {
    if (isDiskFull)
        throw InputError{path + ": the disk is full; make room and try again"};
    throw InputError{path + ": cannot be written" + (reason.empty() ? "" : " (" + reason + ")") +
                     "; check the folder and whether you may write there"};
}

std::FILE* SummaryStream(const std::string& output) { return IsStandardOutput(output) ? stderr : stdout; }
