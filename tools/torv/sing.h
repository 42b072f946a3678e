#pragma once

#include "song_score.h"

/// What `torv sing` is asked for.
struct SingOptions {
    SongOptions song;
    std::string output;
    std::string report; ///< empty: none
    unsigned rate = 44100;
    double volume = 1.0;       ///< linear
    std::optional<double> pan; ///< -1 left .. 1 right; without one the wave is mono
};

/// Sings a MIDI file into a wave file and prints a summary. Throws InputError; then no output file is left behind.
void Sing(const SingOptions& options);
