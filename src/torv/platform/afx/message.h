#pragma once

#include "torv/platform/afx/string.h"
#include "torv/platform/export.h"
#include "torv/platform/system.h"

/// A message box with the application's name; the answer (IDOK, IDYES...). Goes to torv::SetMessageBoxHandler's
/// handler. Its owner is the calling thread's active window, so that a worker thread's box has none.
TORV_API int AfxMessageBox(LPCSTR text, UINT type = MB_OK, UINT helpId = 0);

/// The string resource `id` with "%1" and "%2" replaced by the arguments; a null argument is empty, and every other
/// percent sign stays as it is. The result is empty when there is no such resource.
/// @{
TORV_API void AfxFormatString1(CString& result, UINT id, LPCSTR first);
TORV_API void AfxFormatString2(CString& result, UINT id, LPCSTR first, LPCSTR second);
/// @}
