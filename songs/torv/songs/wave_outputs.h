#pragma once

#include "torv/songs/export.h"

#include <string>
#include <vector>

namespace torv::songs {

/// The names of the wave outputs, in the system's order, as it writes them; the first is used when none is asked for.
TORV_SONGS_API std::vector<std::string> WaveOutputNames();

} // namespace torv::songs
