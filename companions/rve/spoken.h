#pragma once

#include "phonemes.h"
#include "voice_bank.h"

namespace rve {

/// How a recorded person, who speaks American English, says a symbol of the engine's alphabet: one phone or two.
struct Spoken {
    const char* symbol;
    const char* phones[2];
    bool palatal; ///< a glide follows unless the next vowel is "i" already
};

/// Null for a symbol that no recorded person has.
const Spoken* SpokenAs(const Phoneme& phoneme);

bool IsVowelPhone(std::string_view name);
bool IsStopPhone(std::string_view name);
bool IsVoicelessStopPhone(std::string_view name);
/// Phones whose colour changes on their way.
bool IsDiphthongPhone(std::string_view name);

} // namespace rve
