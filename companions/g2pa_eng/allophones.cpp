#include "allophones.h"

#include <algorithm>
#include <iterator>

namespace g2pa_eng {
namespace {

struct Forms {
    std::string_view plain;
    std::string_view special; ///< of a vowel: coloured by r; of a consonant: aspirated, voiced or dark
};

constexpr Forms forms[] = {
    // in the order of Sound
    {"Q", "Q@"},  {"{", "e@"},  {"V", "@r"}, {"O:", "O@"}, {"aU", ""},   {"@", "@r"}, {"aI", ""},  {"e", "e@"},
    {"@r", "@r"}, {"eI", "e@"}, {"I", "I@"}, {"i:", "I@"}, {"@U", "O@"}, {"OI", ""},  {"U", "U@"}, {"u:", "U@"},
    {"b", ""},    {"tS", ""},   {"d", ""},   {"D", ""},    {"f", ""},    {"g", ""},   {"h", "hv"}, {"dZ", ""},
    {"k", "kh"},  {"l", "l0"},  {"m", ""},   {"n", ""},    {"N", ""},    {"p", "ph"}, {"r", ""},   {"s", ""},
    {"S", ""},    {"t", "th"},  {"T", ""},   {"v", ""},    {"w", ""},    {"j", ""},   {"z", ""},   {"Z", ""},
};
static_assert(std::size(forms) == static_cast<size_t>(Sound::zh) + 1);

constexpr std::string_view vowelSymbols[] = {"@",  "V",  "e",  "I",  "i:", "{",  "O:", "Q",  "U",  "u:", "@r",
                                             "eI", "aI", "OI", "@U", "aU", "I@", "e@", "U@", "O@", "Q@"};

const Forms& FormsOf(Sound sound) { return forms[static_cast<size_t>(sound)]; }

bool IsVoicelessPlosive(Sound sound) { return sound == Sound::p || sound == Sound::t || sound == Sound::k; }

} // namespace

void AppendSymbols(g2pa::Symbols& symbols, const Syllable& syllable, bool beginsWord) {
    for (size_t i = 0; i < syllable.onset.size(); ++i) {
        const Sound sound = syllable.onset[i].sound;
        const bool stressed = syllable.nucleus && syllable.nucleus->stressed;
        const bool aspirated = i == 0 && IsVoicelessPlosive(sound) && (beginsWord || stressed);
        const bool voiced = sound == Sound::hh && !beginsWord;
        symbols.push_back(aspirated || voiced ? FormsOf(sound).special : FormsOf(sound).plain);
    }
    auto coda = syllable.coda.begin();
    if (syllable.nucleus) {
        const Forms& vowel = FormsOf(syllable.nucleus->sound);
        const bool beforeR = coda != syllable.coda.end() && coda->sound == Sound::r;
        if (beforeR)
            ++coda;
        symbols.push_back(beforeR && !vowel.special.empty() ? vowel.special : vowel.plain);
        if (beforeR && vowel.special.empty())
            symbols.push_back("@r"); // as in "wire": no diphthong holds the r
    }
    for (; coda != syllable.coda.end(); ++coda)
        symbols.push_back(coda->sound == Sound::l ? FormsOf(Sound::l).special : FormsOf(coda->sound).plain);
}

bool IsVowelSymbol(std::string_view symbol) {
    return std::find(std::begin(vowelSymbols), std::end(vowelSymbols), symbol) != std::end(vowelSymbols);
}

} // namespace g2pa_eng
