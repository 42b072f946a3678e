#include "torv/platform/posix/last_error.h"

#include <cerrno>

namespace {

thread_local DWORD t_error = NO_ERROR;

} // namespace

DWORD GetLastError() { return t_error; }
void SetLastError(DWORD error) { t_error = error; }

namespace torv {

DWORD ErrorFromErrno(int error) {
    switch (error) {
    case 0:
        return NO_ERROR;
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
    case ELOOP:
        return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EISDIR:
        return ERROR_ACCESS_DENIED;
    case EROFS:
        return ERROR_WRITE_PROTECT;
    case EBADF:
        return ERROR_INVALID_HANDLE;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EXDEV:
        return ERROR_NOT_SAME_DEVICE;
    case ESPIPE:
        return ERROR_SEEK;
    case ETXTBSY:
    case EBUSY:
        return ERROR_SHARING_VIOLATION;
    case EAGAIN:
        return ERROR_LOCK_VIOLATION;
    case EEXIST:
        return ERROR_ALREADY_EXISTS;
    case ENOTEMPTY:
        return ERROR_DIR_NOT_EMPTY;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return ERROR_DISK_FULL;
    case EIO:
        return ERROR_IO_DEVICE;
    default:
        return ERROR_GEN_FAILURE;
    }
}

} // namespace torv
