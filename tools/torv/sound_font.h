#pragma once

#include <string>

/// The system's General MIDI sound font, as packages put it below the folders for shared data: the one that the system
/// calls its default before others. Throws InputError, which says what to install, when there is none.
std::string FindSoundFont();
