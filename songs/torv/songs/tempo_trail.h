#pragma once

#include "torv/songs/export.h"
#include "torv/songs/song.h"

#include <vector>

namespace torv::songs {

/// A file's tempo changes as a time-keeping track of whole milliseconds can hold them.
///
/// A score's time map rounds every tempo change down to a whole millisecond, so that the rounding of a thousand changes
/// adds up to a drift that can be heard. Here each change's tempo is raised by as little as it takes for the next
/// change to fall on the millisecond nearest its true time: then no change is off by more than half a millisecond,
/// however many there are.
TORV_SONGS_API std::vector<Tempo> WithoutDrift(const std::vector<Tempo>& tempos);

/// True milliseconds from the file's start to a tick.
TORV_SONGS_API double MillisecondsAt(const std::vector<Tempo>& tempos, uint32_t tick);

} // namespace torv::songs
