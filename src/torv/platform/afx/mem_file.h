#pragma once

#include "torv/platform/afx/file.h"
#include "torv/platform/export.h"

#include <string>

/// A file that lives in memory: reads, writes and seeks as an open file does, and touches no disk.
class TORV_API CMemFile : public CFile {
public:
    CMemFile() = default;
    /// As Attach.
    CMemFile(const void* bytes, UINT count) { Attach(bytes, count); }

    /// Takes a copy of the bytes as the file's content, with the position at its beginning.
    void Attach(const void* bytes, UINT count);
    /// The whole content, valid until the next write.
    const std::string& GetBytes() const { return m_bytes; }

    /// A path opens nothing here: FALSE, and `error` says accessDenied.
    BOOL Open(LPCSTR path, UINT flags, CFileException* error = nullptr) override;
    /// Empties the file.
    void Close() override;
    void Abort() override { Close(); }
    UINT Read(void* buffer, UINT bytes) override;
    void Write(const void* buffer, UINT bytes) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    /// See CFile.
    ULONGLONG GetPosition() const override { return m_position; }
    ULONGLONG GetLength() const override { return m_bytes.size(); }
    void SetLength(ULONGLONG length) override;
    void Flush() override {}

private:
    std::string m_bytes;
    ULONGLONG m_position = 0;
};
