#pragma once

#include "torv/platform/platform.h"

/// The denominator is 2 to the power of its exponent; 4/4 at first.
struct tagTimeSignature {
    BYTE numerator = 4;           ///< how many beats a measure has
    BYTE denominatorExponent = 2; ///< 2: quarters
};
static_assert(sizeof(tagTimeSignature) == 2);

namespace torv {

/// Every tick conversion counts this many ticks to a quarter note, whatever a song's stored time division says.
inline constexpr DWORD kTicksPerQuarter = 480;
/// Microseconds to a quarter note wherever no tempo event applies: 120 beats a minute.
inline constexpr DWORD kDefaultTempo = 500000;

} // namespace torv
