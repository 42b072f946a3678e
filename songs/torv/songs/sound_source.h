#pragma once

#include "torv/songs/export.h"

#include <cstddef>

namespace torv::songs {

/// Sound that comes frame by frame, and again from the beginning as often as it is wanted.
class TORV_SONGS_API SoundSource {
public:
    virtual ~SoundSource() = default;
    SoundSource() = default;
    SoundSource(const SoundSource&) = delete;
    SoundSource& operator=(const SoundSource&) = delete;

    unsigned Rate() const { return m_rate; }         ///< Hz
    unsigned Channels() const { return m_channels; } ///< samples a frame

    /// The next frames, channel beside channel, full scale 1: at most `count`, none at the end. Throws SongError for
    /// what breaks off.
    virtual size_t Read(double* frames, size_t count) = 0;
    /// To the first frame.
    virtual void Rewind() = 0;

protected:
    unsigned m_rate = 0;
    unsigned m_channels = 0;
};

} // namespace torv::songs
