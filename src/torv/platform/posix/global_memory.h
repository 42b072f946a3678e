#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

constexpr UINT GMEM_FIXED = 0x00;
constexpr UINT GMEM_MOVEABLE = 0x02;
constexpr UINT GMEM_ZEROINIT = 0x40;
constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;

/// Memory handles. A fixed block's handle is its address; a moveable block's handle is not, and only a lock tells its
/// address. Any thread may call; each call takes constant time, and a handle that names nothing is refused.

/// Null when the memory cannot be had. A moveable block of 0 bytes has a handle but no address.
TORV_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);
/// The block's address, or null for a handle that names nothing. Each lock of a moveable block wants an unlock.
TORV_API LPVOID GlobalLock(HGLOBAL memory);
/// Non-zero while a moveable block stays locked, and always for a fixed block. Zero with the last error NO_ERROR when
/// this was the last lock, with ERROR_NOT_LOCKED when there was none.
TORV_API BOOL GlobalUnlock(HGLOBAL memory);
/// Null on success (null itself is freed with success), else the handle.
TORV_API HGLOBAL GlobalFree(HGLOBAL memory);
