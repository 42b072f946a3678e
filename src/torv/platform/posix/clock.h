#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

/// Milliseconds of a clock that never steps back; wraps after 49.7 days, so take differences in DWORD.
TORV_API DWORD timeGetTime();
TORV_API void Sleep(DWORD milliseconds);
