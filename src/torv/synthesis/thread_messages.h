#pragma once

#include "torv/platform/platform.h"

namespace torv {

// What the synthesis thread and the wave-output thread tell each other, and the host tells them.
constexpr UINT kOutputEnded = 1074;     ///< to the synthesis thread: leave
constexpr UINT kSynthesisEnded = 1075;  ///< to the wave-output thread: nothing more will come
constexpr UINT kPositionChanged = 1076; ///< to the wave-output thread: position, region or loop, begin anew from there
constexpr UINT kOutputRestarted = 1082; ///< to the synthesis thread: reset the engines and begin anew

} // namespace torv
