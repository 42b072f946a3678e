/// Syllables as the engine's English symbols.
#pragma once

#include "converter.h"
#include "syllables.h"

namespace g2pa_eng {

/// Appends a syllable's symbols: voiceless plosives are aspirated where a word or a stressed syllable begins, h between
/// sounds is voiced, l at a syllable's end is dark, and r there colours its vowel.
void AppendSymbols(g2pa::Symbols& symbols, const Syllable& syllable, bool beginsWord);

bool IsVowelSymbol(std::string_view symbol);

} // namespace g2pa_eng
