#pragma once

#include <string>

/// One wave of a mix.
struct MixInput {
    std::string path;
    double level = 0; ///< dB
    double pan = 0;   ///< -1 left .. 1 right
};

/// FILE, FILE:DB or FILE:DB:PAN. A name may hold colons of its own: what names a file that exists is the name, the
/// whole argument before all. Throws InputError when level or pan are no numbers or out of range.
MixInput ParseMixInput(const std::string& argument);
