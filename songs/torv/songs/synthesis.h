#pragma once

#include "torv/songs/score_builder.h"

#include <functional>

namespace torv::songs {

/// A stream and the empty mono wave that it is sung into.
struct SingJob {
    CQuillMidiBuffer* stream; ///< the caller's
    CWaveFile* wave;          ///< the caller's; at the rate to be sung at
};

/// Has the engine sing every stream, as many at a time as there are processors: the same samples as one after another.
/// `progress`, if any, is told how much of all is done, from several threads but one at a time. Throws SongError when
/// the engine cannot be had or gives up, and CFileException when a wave cannot be written; the waves are then of no
/// use.
TORV_SONGS_API void SingStreams(const std::vector<SingJob>& jobs, DWORD rate,
                                const std::function<void(double done, double total)>& progress = {});

} // namespace torv::songs
