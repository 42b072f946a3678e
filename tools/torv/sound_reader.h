#pragma once

#include "sound_source.h"

#include <cstdint>
#include <memory>
#include <string>

/// A sound file that is read: fewer frames than are asked for come only at its end.
class SoundReader : public SoundSource {
public:
    uint64_t Frames() const { return m_frames; }
    const std::string& Kind() const { return m_kind; } ///< "WAV (Microsoft)"
    /// Its header did not tell where it ends.
    bool IsStreamed() const { return m_isStreamed; }

protected:
    uint64_t m_frames = 0;
    std::string m_kind;
    bool m_isStreamed = false;
};

/// Opens a wave of whole numbers or floats, or what else the system's sound file library reads; "-" is standard input.
/// Throws InputError and SongError for what cannot be read.
std::unique_ptr<SoundReader> OpenSound(const std::string& path);
