#pragma once

#include "torv/songs/export.h"

#include <stdexcept>

namespace torv::songs {

/// What cannot be done with a song: one line for the user (what, where, what to do), without a line end.
class TORV_SONGS_API SongError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The user has named what there is none of: a voice, an expression, an encoding. The line tells what there is.
class TORV_SONGS_API NameError : public SongError {
public:
    using SongError::SongError;
};

} // namespace torv::songs
