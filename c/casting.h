#pragma once

#include "score_object.h"

namespace torv::c {

/// Who sings what of a song: the plans that its score is built from, and what is to be told of them.
struct Cast {
    std::vector<size_t> parts; ///< of the song, by plan
    std::vector<songs::PartPlan> plans;
    std::vector<std::string> remarks;
};

/// Throws Failure and SongError. The databases are locked.
Cast CastSong(const SongObject& song, const torv_score_options& options, songs::Databases& databases);

/// The id of an icon; throws Failure with the nearest names.
DWORD FindIcon(const songs::Databases& databases, const songs::IconKind& kind, const std::string& name);

} // namespace torv::c
