#pragma once

#include "torv/songs/export.h"
#include "torv/songs/score_builder.h"

#include <memory>

namespace torv::songs {

/// A part of the score as the voice engine hears it, its lead included.
TORV_SONGS_API std::unique_ptr<CQuillMidiBuffer> MakeEngineStream(const Score& score, const ScorePart& part,
                                                                  DWORD presend);

/// When a tick of the file is heard, in milliseconds of the engine's stream.
TORV_SONGS_API DWORD StreamTimeOfTick(const Score& score, DWORD tick);

} // namespace torv::songs
