#pragma once

#include "sound_format.h"

#include <string>
#include <vector>

/// What `torv mix` is asked for.
struct MixOptions {
    std::vector<std::string> inputs; ///< as ParseMixInput takes them
    std::string output;
    SoundOptions sound;
    bool quiet = false;
};

/// Mixes sound files of one rate into a stereo file as long as the longest of them, and prints a summary. Throws
/// InputError; then the output file is as it was.
void Mix(const MixOptions& options);
