#pragma once

#include "torv/platform/afx/object.h"
#include "torv/platform/afx/string.h"
#include "torv/platform/export.h"
#include "torv/platform/system.h"

/// Exceptions are thrown by value and caught by const reference.
class TORV_API CException : public CObject {
public:
    ~CException() override;
    /// Writes a text for the user, cut to `size` bytes with its NUL. FALSE, and an empty text, when there is none.
    virtual BOOL GetErrorMessage(LPSTR text, UINT size, PUINT helpContext = nullptr) const = 0;
};

/// Memory was refused.
class TORV_API CMemoryException : public CException {
public:
    BOOL GetErrorMessage(LPSTR text, UINT size, PUINT helpContext = nullptr) const override;
};

/// What went wrong with a file: a cause that is the same on every system, the system's own number, and the path.
class TORV_API CFileException : public CException {
public:
    /// Causes, the same numbers on every system.
    enum {
        none,             ///< no error
        generic,          ///< any other
        fileNotFound,     ///< no such file
        badPath,          ///< no such folder, or no path
        tooManyOpenFiles, ///< for this process or the system
        accessDenied,     ///< by its permissions, or it is a folder
        invalidFile,      ///< not a file, or closed
        removeCurrentDir, ///< the current folder stays
        directoryFull,    ///< no room for one more name
        badSeek,          ///< to before the beginning
        hardIO,           ///< the device failed
        sharingViolation, ///< another has it open
        lockViolation,    ///< another has locked the part
        diskFull,         ///< no room for the bytes
        endOfFile         ///< nothing is left to read
    };

    /// The path may be null.
    explicit CFileException(int cause = none, LONG osError = -1, LPCSTR fileName = nullptr)
        : m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}

    /// The cause that a Windows error number stands for; `generic` for one that has none.
    static int OsErrorToException(LONG osError);

    BOOL GetErrorMessage(LPSTR text, UINT size, PUINT helpContext = nullptr) const override;

    int m_cause;           ///< one of the causes above
    LONG m_lOsError;       ///< a Windows error number, on POSIX too; -1 when there was none
    CString m_strFileName; ///< may be empty
};
