/// How each kana and each romaji spelling sounds: data only. A sound is the text of its symbols with blanks between
/// them, at most one vowel, which is the last.
#pragma once

#include <string_view>

namespace g2pa_jpn {

/// Sound of one katakana (U'ァ' to U'ヶ'); empty for the nasal, the geminate mark and everything else.
std::string_view SoundOfKana(char32_t kana);
/// Sound of a kana with a small kana after it; empty when the two do not join.
std::string_view SoundOfPair(char32_t kana, char32_t small);
/// Sound of a consonant spelling ("", "k", "ky", ...) before one of the letters a i u e o; empty when there is none.
std::string_view SoundOfRomaji(std::u32string_view consonant, char32_t vowel);

/// How a consonant shapes the syllabic nasal or the geminate mark before it.
struct ConsonantContext {
    std::string_view symbol;
    std::string_view nasal;   ///< the nasal before it
    std::string_view closure; ///< what a geminate mark becomes before it; empty when nothing closes
};
/// The row of a sound's first symbol; the last row (a vowel, a glide, or the end of the song) when it has none.
const ConsonantContext& ContextBefore(std::string_view sound);

bool IsVowelSymbol(std::string_view symbol);

} // namespace g2pa_jpn
