#pragma once

#include <string>
#include <vector>

/// What `torv mix` is asked for.
struct MixOptions {
    std::vector<std::string> inputs; ///< as ParseMixInput takes them
    std::string output;
    bool quiet = false;
};

/// Mixes PCM waves of one rate into a 16-bit stereo wave as long as the longest of them, and prints a summary. Throws
/// InputError; then the output file is as it was.
void Mix(const MixOptions& options);
