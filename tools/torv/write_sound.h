#pragma once

#include "sound_format.h"

#include <torv/songs/sound_source.h>

#include <cstdint>
#include <string>

struct WrittenSound {
    uint64_t frames = 0;
    double seconds = 0;
    double peak = 0;      ///< of the source as it came, full scale 1
    double decibels = 0;  ///< by which it was made louder, or softer when negative
    size_t cutFrames = 0; ///< that stay at full scale
};

/// What is done where a sound would pass full scale.
enum class Overload { IsCut, IsLowered };

/// Writes all of a source into a file, which then is whole, or as it was. Throws InputError and WrongUse.
WrittenSound WriteSound(torv::songs::SoundSource& source, const std::string& path, const SoundOptions& options,
                        Overload overload);
