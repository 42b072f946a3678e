#pragma once

#include "torv/songs/export.h"

#include <cstdint>
#include <vector>

namespace torv::songs {

constexpr double kCurveStep = 0.02; ///< seconds between two points of a sound's curves

/// What one hears of a sound, one point every kCurveStep seconds from its start.
struct SoundCurves {
    std::vector<float> pitch; ///< in keys, 60 is middle C, with cents as the fraction; NaN where no pitch is heard
    std::vector<float> level; ///< RMS in dB of full scale, kSilence or more
};
constexpr float kSilence = -90; ///< dB; what is less counts as this

/// Where a pitch is to be looked for.
struct ExpectedKey {
    double start; ///< seconds
    double end;   ///< seconds
    int key;      ///< MIDI key
};

/// Measures the sound of one voice: its level, and its pitch around the keys that it is expected to sing then, which
/// are sorted. Nothing is taken from the keys themselves: they only say which octave is meant.
TORV_SONGS_API SoundCurves MeasureSound(const std::vector<int16_t>& samples, unsigned rate,
                                        const std::vector<ExpectedKey>& keys);

} // namespace torv::songs
