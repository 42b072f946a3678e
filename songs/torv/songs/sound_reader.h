#pragma once

#include "torv/songs/sound_source.h"

#include <cstdint>
#include <string>

namespace torv::songs {

/// A sound file that is read: fewer frames than are asked for come only at its end.
class TORV_SONGS_API SoundReader : public SoundSource {
public:
    uint64_t Frames() const { return m_frames; }       ///< that there are
    const std::string& Kind() const { return m_kind; } ///< "WAV (Microsoft)"
    bool IsStreamed() const { return m_isStreamed; }   ///< its header did not tell where it ends

protected:
    uint64_t m_frames = 0;
    std::string m_kind;
    bool m_isStreamed = false;
};

} // namespace torv::songs
