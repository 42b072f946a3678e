#include "torv/platform/afx/mem_file.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr ULONGLONG kMaxLength = 0x7FFFFFFF; // what a 32-bit process could hold at the very most

} // namespace

void CMemFile::Attach(const void* bytes, UINT count) {
    m_bytes.assign(bytes ? static_cast<const char*>(bytes) : "", bytes ? count : 0);
    m_position = 0;
}

BOOL CMemFile::Open(LPCSTR path, [[maybe_unused]] UINT flags, CFileException* error) {
    if (error)
        *error = CFileException(CFileException::accessDenied, -1, path);
    return FALSE;
}

void CMemFile::Close() { Attach(nullptr, 0); }

UINT CMemFile::Read(void* buffer, UINT bytes) {
    if (m_position >= m_bytes.size())
        return 0;
    const auto done = static_cast<UINT>(std::min<ULONGLONG>(bytes, m_bytes.size() - m_position));
    if (done)
        std::memcpy(buffer, m_bytes.data() + m_position, done);
    m_position += done;
    return done;
}

void CMemFile::Write(const void* buffer, UINT bytes) {
    if (bytes == 0)
        return;
    if (m_position + bytes > kMaxLength)
        throw CFileException(CFileException::diskFull);
    if (m_position + bytes > m_bytes.size())
        m_bytes.resize(static_cast<std::size_t>(m_position + bytes));
    std::memcpy(m_bytes.data() + m_position, buffer, bytes);
    m_position += bytes;
}

ULONGLONG CMemFile::Seek(LONGLONG offset, UINT from) {
    if (from > end)
        throw CFileException(CFileException::badSeek);
    const ULONGLONG base = from == begin ? 0 : from == current ? m_position : m_bytes.size();
    // Both stay far from the 64-bit range's ends: base is at most kMaxLength.
    if (offset < -static_cast<LONGLONG>(base) || offset > static_cast<LONGLONG>(kMaxLength - base))
        throw CFileException(CFileException::badSeek);
    m_position = base + static_cast<ULONGLONG>(offset);
    return m_position;
}

void CMemFile::SetLength(ULONGLONG length) {
    if (length > kMaxLength)
        throw CFileException(CFileException::diskFull);
    m_bytes.resize(static_cast<std::size_t>(length));
    m_position = length;
}
