#pragma once

#include "torv/songs/song.h"

namespace torv::songs {

/// Holds the notes and rests under a fermata half as long again, all parts together, by the tempo: from where the note
/// begins, of one that is longer than a half note from its last half note on, to its end.
TORV_SONGS_API void HoldFermatas(Song& song);

} // namespace torv::songs
