#pragma once

#include "handles.h"
#include "records.h"
#include "texts.h"

#include <vector>

namespace torv::c {

class SoundObject final : public Object {
public:
    static constexpr Kind kKind = Kind::Sound;

    SoundObject(uint32_t framesPerSecond, uint32_t channelCount) : rate(framesPerSecond), channels(channelCount) {}
    uint64_t Frames() const { return samples.size() / channels; }
    float Peak() const;

    const uint32_t rate;
    const uint32_t channels;
    std::vector<float> samples; ///< interleaved
};

/// The sound of a wave file; throws Failure and SongError, whose texts name it.
std::unique_ptr<SoundObject> ReadWave(const char* given);

/// Writes a 16-bit wave file; throws Failure.
torv_saved SaveWave(const SoundObject& sound, const char* path, bool lower);

} // namespace torv::c
