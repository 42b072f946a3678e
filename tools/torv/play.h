#pragma once

#include "song_score.h"

/// What `torv play` is asked for.
struct PlayOptions {
    SongOptions song;
    std::string device; ///< empty: the first one
    std::string from;   ///< bar or time; empty: the beginning
    std::string to;     ///< empty: the end
    unsigned rate = 44100;
    double level = 0.0; ///< dB
    bool loop = false;
};

/// Sings all chosen parts of a song through a wave output as they are synthesized, each at its place and together no
/// louder than one; on a terminal it shows how far it is and obeys keys.
/// Throws InputError.
void Play(const PlayOptions& options);
