#pragma once

#include "phonemes.h"
#include "voice_bank.h"

namespace rve {

/// A program that a recorded person sings.
struct RecordedPerson {
    int program;
    const char* bank; ///< the name of its file, without ".bank"
    Tract tract;      ///< whose vowels are aimed at where the person's own language has none
    float size; ///< factor of the recording's frequencies in its own language: below 1 the larynx is lower than when
                ///< speaking
    float sharpness; ///< factor of the peaks and valleys of its own language's vowels, in decibels
};

/// Finds the banks, in the folder "rve" beside this library, and maps them, once in a process; one line on the error
/// output for each that cannot be used.
void LoadBanks();
/// The person who sings a program, with its bank, which is open; null when none does, or its bank is missing.
const RecordedPerson* PersonOf(int program, const VoiceBank*& bank);

} // namespace rve
