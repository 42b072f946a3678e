#pragma once

#include "torv/songs/curves.h"
#include "torv/songs/song_clock.h"

#include <vector>

namespace torv::songs {

/// Bends the pitch of notes that slide into the next one, so that they are on their way for all of their length, and
/// tells of every note whether it was bent: it has no transition of its own then. Short notes are left, which a slow
/// transition carries over, and steps wider than a bend.
std::vector<bool> BendSlides(const std::vector<SungNote>& notes, const SongClock& clock, Curves& curves);

} // namespace torv::songs
