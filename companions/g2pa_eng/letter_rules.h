/// Letters to sounds by rules, without a lexicon.
#pragma once

#include "phones.h"

#include <string_view>

namespace g2pa_eng {

/// The phones of a word of the letters a to z, by spelling alone; no stress is marked.
Phones SpellOut(std::string_view letters);

/// a e i o u y, and never the NUL.
bool IsVowelLetter(char letter);

} // namespace g2pa_eng
