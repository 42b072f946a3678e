#pragma once

#include "torv/songs/export.h"
#include "torv/songs/song.h"

#include <vector>

namespace torv::songs {

/// When the ticks of a song are, in seconds from its start.
class TORV_SONGS_API SongClock {
public:
    /// Keeps what it needs of the tempos, which are sorted.
    explicit SongClock(const std::vector<Tempo>& tempos);
    /// Logarithmic in the number of tempos.
    double SecondsAt(uint32_t tick) const;
    /// The nearest tick of a time, kLastTick at most; 0 for one before the song.
    uint32_t TickAt(double seconds) const;

private:
    struct Change {
        uint32_t tick;
        double seconds;
        double secondsPerTick;
    };
    std::vector<Change> m_changes; ///< the first at tick 0
};

} // namespace torv::songs
