#pragma once

#include "output_file.h"
#include "sound_format.h"

#include <cmath>
#include <memory>
#include <string>

/// Makes a sound file of frames. Samples of 16 and 24 bits are rounded to the nearest, and stay at full scale where
/// they pass it; so the same frames make the same samples in every kind of file that keeps them.
class SoundWriter {
public:
    virtual ~SoundWriter() = default;
    SoundWriter() = default;
    SoundWriter(const SoundWriter&) = delete;
    SoundWriter& operator=(const SoundWriter&) = delete;

    /// The next frames, channel beside channel, full scale 1. Throws InputError when they cannot be written.
    virtual void Append(const double* frames, size_t count) = 0;
    /// Completes the file, which can then be committed.
    virtual void Finish() = 0;

    /// Frames with a sample that stayed at full scale.
    size_t CutFrames() const { return m_cutFrames; }

protected:
    size_t m_cutFrames = 0;
};

/// `path` is named in messages. Throws WrongUse when the format does not exist.
std::unique_ptr<SoundWriter> MakeSoundWriter(OutputFile& file, const std::string& path, const SoundFormat& format);

/// A sample as a whole number of so many bits (at most 24), halves away from zero; one that stays at full scale, or is
/// no number and becomes 0, sets `isCut`.
inline int WholeSample(double sample, unsigned bits, bool& isCut) {
    const int full = 1 << (bits - 1);
    const double scaled = sample * full;
    if (scaled >= full - 0.5 || scaled <= -full - 0.5 || std::isnan(scaled)) {
        isCut = true;
        return scaled > 0 ? full - 1 : scaled < 0 ? -full : 0;
    }
    // By hand, as the library's rounding is a call for each sample.
    const int cut = static_cast<int>(scaled);
    const double rest = scaled - cut;
    return cut + (rest >= 0.5) - (rest <= -0.5);
}
