#pragma once

#include "torv/platform/export.h"
#include "torv/platform/system.h"

namespace torv {

/// a x b / c with a 64-bit product, rounded to nearest, halves away from zero. -1 for a zero divisor and for a result
/// whose magnitude exceeds 0x7FFFFFFF: the system's own answers, in one implementation for both systems.
TORV_API int MulDiv(int a, int b, int c);

/// Toward zero; beyond the type's range its nearest end; 0 for NaN.
TORV_API LONG TruncateToLong(double value);
/// See TruncateToLong.
TORV_API long long TruncateToInt64(double value);

} // namespace torv
