#include "torv/platform/afx/file_find.h"

#include "torv/platform/or_fail.h"

CFileFind::~CFileFind() { Close(); }

BOOL CFileFind::FindFile(LPCSTR pattern, [[maybe_unused]] DWORD unused) {
    Close();
    pattern = pattern ? pattern : "*.*";
    return torv::OrFail(FALSE, [&] {
        m_search = ::FindFirstFileA(pattern, &m_next);
        m_hasNext = m_search != INVALID_HANDLE_VALUE;
        return m_hasNext;
    });
}

BOOL CFileFind::FindNextFile() {
    if (!m_hasNext)
        return FALSE;
    m_current = m_next;
    m_hasCurrent = true;
    m_hasNext = ::FindNextFileA(m_search, &m_next);
    return m_hasNext;
}

void CFileFind::Close() {
    if (m_search != INVALID_HANDLE_VALUE)
        ::FindClose(m_search);
    m_search = INVALID_HANDLE_VALUE;
    m_hasCurrent = m_hasNext = false;
}

CString CFileFind::GetFileName() const { return m_hasCurrent ? m_current.cFileName : ""; }
