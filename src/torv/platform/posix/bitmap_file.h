#pragma once

#include "torv/platform/posix/bitmap.h"

#include <span>
#include <vector>

namespace torv {

/// Pixels as a DIB section has them: rows from the bottom up, each padded to four bytes.
struct Pixels {
    LONG width = 0;
    LONG height = 0;
    LONG widthBytes = 0;
    WORD bitsPixel = 0;
    std::vector<BYTE> bits;
};

/// Both read an uncompressed Windows bitmap and return 0 or a Windows error number. Nothing that the bytes say is
/// trusted: ERROR_INVALID_DATA unless the kind is known, no side is beyond 16384, and all pixels are really there.
DWORD ReadBitmap(std::span<const BYTE> file, Pixels& pixels);
DWORD ReadBitmapFile(const char* path, Pixels& pixels);

} // namespace torv
