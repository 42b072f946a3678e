#pragma once

#include "torv/platform/afx/exception.h"
#include "torv/platform/afx/string.h"

/// What ReplacedFile, which knows the system only, is to the library's own files: names and errors as CFile has them.
namespace torv {

class ReplacedFile;

/// The path that CFile creates a file of this name at: separators and letters' case are the system's. Empty when there
/// is no such folder. Throws std::bad_alloc.
CString NewFilePath(const char* path);

/// Why a file of this name could not be begun, written or put in its place.
CFileException NewFileError(const ReplacedFile& file, const char* path);

} // namespace torv
