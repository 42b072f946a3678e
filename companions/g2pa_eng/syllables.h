/// A word's phones as syllables, shared out over the parts of its spelling.
#pragma once

#include "phones.h"

#include <optional>
#include <string_view>
#include <vector>

namespace g2pa_eng {

struct Syllable {
    Phones onset;
    std::optional<Phone> nucleus; ///< none in a word without a vowel, as in "hm"
    Phones coda;
};

/// What each part of a word sings; as many entries as there are parts.
using SyllablesOfParts = std::vector<std::vector<Syllable>>;

/// Divides `phones` over `parts`, the word's spelling as it was divided (at least one part). With as many vowels as
/// parts each part has one. Of more vowels the parts richest in vowel letters have several; of fewer, neighbouring
/// parts share a vowel: each sings it, the first with the consonants before, the last with those after it.
/// Between vowels the consonants divide where the spelling does, else the longest beginning that English allows goes
/// to the later one.
SyllablesOfParts DivideWord(const Phones& phones, const std::vector<std::string_view>& parts);

} // namespace g2pa_eng
