#pragma once

#include "song_score.h"

/// What `torv encode` is asked for.
struct EncodeOptions {
    SongOptions song;
    std::string output;
};

/// Writes a song as a standard MIDI file in the engine's dialect and prints a summary. Throws InputError; then the
/// output file is as it was.
void Encode(const EncodeOptions& options);
