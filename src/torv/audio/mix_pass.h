#pragma once

#include "torv/audio/mix_block.h"
#include "torv/platform/platform.h"

namespace torv {

/// What one play or mix down carries from buffer to buffer.
struct MixPass {
    WAVEFORMATEX format{};
    DWORD frames = 0;     ///< of a buffer
    bool isMono = false;  ///< one value a frame, whatever the format
    bool mayLoop = false; ///< while the output's loop flag is set
    int masterTrack = 0;  ///< the slot whose pointer is the position
    DWORD position = 0;   ///< of the master track, as last seen
    DWORD starts[2] = {}; ///< where the master track was when each of two buffers was queued
    int next = 0;         ///< of the two
    MixPeak peak;
    bool hasFailed = false; ///< a file could not be read, and counted as ended
};

} // namespace torv
