#include "torv/platform/afx/exception.h"

#include "torv/platform/or_fail.h"

#include <algorithm>
#include <cstring>

namespace {

BOOL CopyText(LPCSTR source, LPSTR text, UINT size) {
    if (!text || size == 0)
        return FALSE;
    const std::size_t length = std::min<std::size_t>(std::strlen(source), size - 1);
    std::memcpy(text, source, length);
    text[length] = '\0';
    return length != 0;
}

/// By cause; "%1" stands for the file's path.
constexpr LPCSTR kTexts[] = {
    "",
    "An error occurred on \"%1\".",
    "\"%1\" was not found.",
    "\"%1\" is not a valid path.",
    "\"%1\" could not be opened: too many files are open.",
    "Access to \"%1\" was denied.",
    "The file handle of \"%1\" is not valid.",
    "\"%1\" could not be removed: it is a folder in use or with content.",
    "\"%1\" could not be created: its folder is full.",
    "A seek in \"%1\" failed.",
    "A hardware error occurred on \"%1\".",
    "\"%1\" is in use by another program.",
    "A part of \"%1\" is locked.",
    "The disk is full while writing \"%1\".",
    "The end of \"%1\" was reached.",
};

} // namespace

CException::~CException() = default;

BOOL CMemoryException::GetErrorMessage(LPSTR text, UINT size, PUINT helpContext) const {
    if (helpContext)
        *helpContext = 0;
    return CopyText("There is not enough memory.", text, size);
}

BOOL CFileException::GetErrorMessage(LPSTR text, UINT size, PUINT helpContext) const {
    if (helpContext)
        *helpContext = 0;
    const LPCSTR form = kTexts[m_cause >= none && m_cause <= endOfFile ? m_cause : generic];
    return torv::OrFail(CopyText("", text, size), [&] {
        CString message(form);
        message.Replace("%1", m_strFileName.IsEmpty() ? LPCSTR("an unnamed file") : LPCSTR(m_strFileName));
        return CopyText(message, text, size);
    });
}

int CFileException::OsErrorToException(LONG osError) {
    switch (static_cast<DWORD>(osError)) {
    case NO_ERROR:
        return none;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_NO_MORE_FILES:
        return fileNotFound;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_NOT_SAME_DEVICE:
    case ERROR_INVALID_NAME:
    case ERROR_FILENAME_EXCED_RANGE:
        return badPath;
    case ERROR_TOO_MANY_OPEN_FILES:
        return tooManyOpenFiles;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return accessDenied;
    case ERROR_INVALID_HANDLE:
        return invalidFile;
    case ERROR_DIR_NOT_EMPTY:
        return removeCurrentDir;
    case ERROR_CANNOT_MAKE:
        return directoryFull;
    case ERROR_SEEK:
    case ERROR_NEGATIVE_SEEK:
        return badSeek;
    case ERROR_WRITE_FAULT:
    case ERROR_READ_FAULT:
    case ERROR_IO_DEVICE:
        return hardIO;
    case ERROR_SHARING_VIOLATION:
        return sharingViolation;
    case ERROR_LOCK_VIOLATION:
    case ERROR_NOT_LOCKED:
        return lockViolation;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return diskFull;
    case ERROR_HANDLE_EOF:
        return endOfFile;
    default:
        return generic;
    }
}
