#pragma once

#include "failure.h"

namespace torv::c {

constexpr double kQuietest = -120; // dB
constexpr double kLoudest = 24;

/// Throws Failure for what no part can be.
inline void CheckLevel(double level) {
    if (!(level >= kQuietest && level <= kLoudest))
        throw Failure{TORV_OUT_OF_RANGE, "a level is -120 to 24 dB"};
}

} // namespace torv::c
