#pragma once

#include "torv/songs/export.h"

#include <stdexcept>

namespace torv::songs {

/// What cannot be done with a song: one line for the user (what, where, what to do), without a line end.
class TORV_SONGS_API SongError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace torv::songs
