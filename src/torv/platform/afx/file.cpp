#include "torv/platform/afx/file.h"

#include "torv/platform/file_handle.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/path.h"

#include <utility>

namespace {

CFileException ExceptionOf(DWORD error, LPCSTR path) {
    const LONG osError = static_cast<LONG>(error);
    CFileException exception(CFileException::OsErrorToException(osError), osError);
    torv::OrFail(0, [&] { // the cause is worth more than the name
        exception.m_strFileName = path;
        return 1;
    });
    return exception;
}

} // namespace

CFile::CFile(LPCSTR path, UINT flags) {
    CFileException error;
    if (!CFile::Open(path, flags, &error))
        throw error;
}

CFile::~CFile() { CFile::Abort(); }

void CFile::Check(DWORD error) const {
    if (error)
        throw ExceptionOf(error, m_strFileName);
}

BOOL CFile::Open(LPCSTR path, UINT flags, CFileException* error) {
    CFile::Abort();
    std::string fullPath;
    const DWORD result = torv::OpenFileHandle(path ? path : "", flags, m_hFile, fullPath);
    if (result) {
        m_hFile = hFileNull;
        if (error)
            *error = ExceptionOf(result, path);
        return FALSE;
    }
    m_strFileName = CString(std::move(fullPath));
    return TRUE;
}

void CFile::Close() {
    if (m_hFile == hFileNull)
        return;
    const DWORD error = torv::CloseFileHandle(std::exchange(m_hFile, hFileNull));
    const CString path = std::exchange(m_strFileName, CString());
    if (error)
        throw ExceptionOf(error, path);
}

void CFile::Abort() {
    if (m_hFile != hFileNull)
        torv::CloseFileHandle(std::exchange(m_hFile, hFileNull));
    m_strFileName.Empty();
}

UINT CFile::Read(void* buffer, UINT bytes) {
    UINT done = 0;
    Check(torv::ReadFileHandle(m_hFile, buffer, bytes, done));
    return done;
}

void CFile::Write(const void* buffer, UINT bytes) {
    UINT done = 0;
    Check(torv::WriteFileHandle(m_hFile, buffer, bytes, done));
    if (done != bytes)
        Check(ERROR_DISK_FULL);
}

UINT CFile::ReadAt(ULONGLONG place, void* buffer, UINT bytes) const {
    UINT done = 0;
    Check(torv::ReadFileHandleAt(m_hFile, place, buffer, bytes, done));
    return done;
}

void CFile::WriteAt(ULONGLONG place, const void* buffer, UINT bytes) {
    UINT done = 0;
    Check(torv::WriteFileHandleAt(m_hFile, place, buffer, bytes, done));
    if (done != bytes)
        Check(ERROR_DISK_FULL);
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from) {
    ULONGLONG position = 0;
    if (from > end)
        throw CFileException(CFileException::badSeek, static_cast<LONG>(ERROR_INVALID_PARAMETER), m_strFileName);
    Check(torv::SeekFileHandle(m_hFile, offset, static_cast<torv::SeekFrom>(from), position));
    return position;
}

ULONGLONG CFile::GetPosition() const {
    ULONGLONG position = 0;
    Check(torv::SeekFileHandle(m_hFile, 0, torv::SeekFrom::Current, position));
    return position;
}

ULONGLONG CFile::GetLength() const {
    ULONGLONG length = 0;
    Check(torv::FileHandleLength(m_hFile, length));
    return length;
}

void CFile::SetLength(ULONGLONG length) {
    // Not the virtual Seek: a derived class may give positions a meaning of its own.
    CFile::Seek(static_cast<LONGLONG>(length), begin);
    Check(torv::CutFileHandle(m_hFile));
}

void CFile::Flush() {
    if (m_hFile == hFileNull)
        Check(ERROR_INVALID_HANDLE);
}

CString CFile::GetFilePath() const { return m_strFileName; }
CString CFile::GetFileName() const { return torv::FileNamePart(m_strFileName); }

void CFile::Remove(LPCSTR path) {
    if (const DWORD error = torv::RemoveFile(path ? path : ""))
        throw ExceptionOf(error, path);
}

void CFile::Rename(LPCSTR from, LPCSTR to) {
    if (const DWORD error = torv::RenameFile(from ? from : "", to ? to : "", false))
        throw ExceptionOf(error, from);
}
