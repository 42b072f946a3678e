#pragma once

#include "torv/songs/song_clock.h"
#include "torv/songs/voice_line.h"

#include <vector>

namespace torv::songs {

/// A breath that is heard before a note. In ticks.
struct Breath {
    uint32_t ahead = 0;  ///< from its beginning to the note's
    uint32_t length = 0; ///< 0: none is taken
};

/// The breath before each note: before the first one, which has `lead` ticks before the song, and where there is time
/// for one.
std::vector<Breath> BreathsBefore(const std::vector<SungNote>& notes, uint32_t lead, const SongClock& clock);

} // namespace torv::songs
