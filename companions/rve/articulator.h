#pragma once

#include "timeline.h"

#include <array>

namespace rve {

/// A voice: whose tract, and how it sounds.
struct Voice {
    Tract tract;
    float formantScale;
    float breath; ///< level of breath in the tone
    float tiltHz; ///< above this the source falls more steeply
};

/// The engine's programs; numbers beyond them fold back.
const Voice& VoiceOf(int program);

/// What the sound aims at, at one moment.
struct Target {
    std::array<float, kFormants> hz{};
    std::array<float, kFormants> bandwidth{};
    float upperHz = 4500;           ///< the first resonance above the formants
    float upperApart = 1000;        ///< and how far apart those are
    float nasality = 0;             ///< 0..1
    float voicing = 0;              ///< 0..1
    float muffling = 0;             ///< 1: nothing but the lowest harmonics get out
    float aspiration = 0;           ///< breath through the tract
    float noise = 0;                ///< hiss past it, as an amplitude beside a vowel's
    float formantMilliseconds = 14; ///< how fast the formants follow
    float noiseHz = 4000;
    float noiseBandwidth = 2000;
};

/// What a segment's sounds aim at, at a time within it. `vowel` is what a sound without a place of its own takes on:
/// the vowel it stands before, or the last one sung. `next` is the segment that follows in the same breath, or null.
Target AimAt(const Segment& segment, Time now, const Voice& voice, const Phoneme* vowel, const Segment* next);

/// The vowel, or what stands for it, that a segment is sung on; null when it has no phonemes.
const Phoneme* NucleusOf(const Segment& segment);

} // namespace rve
