#pragma once

#include "torv/platform/afx/object.h"
#include "torv/platform/afx/string.h"
#include "torv/platform/export.h"
#include "torv/platform/system.h"

/// A file search. FindFile starts it; each FindNextFile makes one match current (the first one included) and tells
/// whether there is another.
class TORV_API CFileFind : public CObject {
public:
    CFileFind() = default;
    CFileFind(const CFileFind&) = delete;
    CFileFind& operator=(const CFileFind&) = delete;
    ~CFileFind() override;

    /// Whether anything matches the pattern (null: everything in the current folder). Ends an earlier search.
    BOOL FindFile(LPCSTR pattern = nullptr, DWORD unused = 0);
    /// FALSE for the last match too, and when there is no search.
    BOOL FindNextFile();
    /// Ends the search; harmless without one.
    void Close();

    /// These speak of the current match; empty or FALSE before the first FindNextFile.
    CString GetFileName() const;
    /// Whether it is a folder.
    BOOL IsDirectory() const { return m_hasCurrent && (m_current.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY); }

private:
    HANDLE m_search = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAA m_current{};
    WIN32_FIND_DATAA m_next{};
    bool m_hasCurrent = false;
    bool m_hasNext = false;
};
