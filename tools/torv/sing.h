#pragma once

#include "song_score.h"
#include "sound_format.h"

/// What `torv sing` is asked for.
struct SingOptions {
    SongOptions song;                 ///< but for its input
    std::vector<std::string> inputs;  ///< one at least
    std::string output;               ///< a sound file; of several songs the folder for theirs; empty: none
    std::string practice;             ///< a folder; empty: none
    std::vector<std::string> reports; ///< files, each written as its ending says
    std::string from;                 ///< bar or time; empty: the beginning
    std::string to;                   ///< empty: the end
    std::optional<double> leadIn;     ///< seconds; none: as long as is sung before the first beat
    unsigned rate = 44100;
    SoundOptions sound;         ///< of every file
    double level = 0;           ///< dB
    std::optional<double> pan;  ///< of a single part, -1 left .. 1 right; without one its wave is mono
    std::optional<double> band; ///< dB against the voices; none: they sing alone
    std::string soundFont;      ///< of the band; empty: the system's
    bool list = false;          ///< only tell what would be sung
};

/// Sings song files into wave files and prints a summary of each. With one song throws InputError and SongError, and no
/// output is left behind; of several those that cannot be sung are told. Returns how many those are. Throws WrongUse.
size_t Sing(const SingOptions& options);
