#include "torv/platform/new_file.h"

#include "torv/platform/replaced_file.h"
#include "torv/platform/system.h"

#if !defined(_WIN32)
#include "torv/platform/posix/last_error.h"
#include "torv/platform/posix/resolve_path.h"
#endif

namespace torv {

CString NewFilePath(const char* path) {
#if defined(_WIN32)
    return path;
#else
    return CString(ResolveNewPath(path ? path : ""));
#endif
}

CFileException NewFileError(const ReplacedFile& file, const char* path) {
#if defined(_WIN32)
    const auto error = static_cast<DWORD>(file.Error().value());
#else
    const DWORD error = ErrorFromErrno(file.Error().value());
#endif
    // A file need not be there to be created, but its folder has to be.
    const auto osError = static_cast<LONG>(error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error);
    return CFileException(CFileException::OsErrorToException(osError), osError, path);
}

} // namespace torv
