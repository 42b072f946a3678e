#include "dictionary.h"
#include "letter_rules.h"

#include <algorithm>
#include <string>

namespace g2pa_eng {
namespace {

struct Suffix {
    std::string_view letters;
    std::string_view phones; ///< empty: the plural's or the past's ending, by the sound before it
};
constexpr Suffix suffixes[] = {{"less", "l ax s"}, {"ness", "n ax s"}, {"ful", "f ax l"}, {"ing", "ih ng"},
                               {"ly", "l iy"},     {"ed", ""},         {"s", ""}};
constexpr std::string_view weakPrefixes[] = {"be", "de", "re", "en", "ex", "in", "un", "for"};

/// A stem is worth looking for when something is left that can be sung.
bool CanBeStem(std::string_view stem) {
    return stem.size() >= 3 && std::any_of(stem.begin(), stem.end(), IsVowelLetter) && !stem.ends_with("ee");
}

/// The word that a stem was before its suffix changed its spelling: making, running, happily.
std::string RestoreStem(std::string_view stem, std::string_view suffix) {
    std::string word(stem);
    const char last = stem.back();
    const char before = stem[stem.size() - 2];
    if (last == 'i' && suffix != "ing")
        word.back() = 'y';
    if (!IsVowelLetter(suffix[0]) || IsVowelLetter(last))
        return word;
    const bool afterOneVowel = IsVowelLetter(before) && !IsVowelLetter(stem[stem.size() - 3]);
    if (last == before && last != 'l' && last != 's' && last != 'z')
        word.pop_back();
    else if (last == 'c' || last == 'v' || last == 'u' || (afterOneVowel && last != 'w' && last != 'x'))
        word.push_back('e');
    return word;
}

bool IsPlural(std::string_view word) { return !word.ends_with("ss") && !word.ends_with("us") && !word.ends_with("is"); }

void MarkStress(Phones& phones, std::string_view word) {
    std::vector<size_t> vowels;
    for (size_t i = 0; i < phones.size(); ++i)
        if (phones[i].IsVowel())
            vowels.push_back(i);
    if (vowels.size() < 2 || std::any_of(phones.begin(), phones.end(), [](Phone each) { return each.stressed; }))
        return;
    const bool weakStart = phones[vowels[0]].sound == Sound::ax ||
                           std::any_of(std::begin(weakPrefixes), std::end(weakPrefixes), [word](auto prefix) {
                               return word.starts_with(prefix) && word.size() > prefix.size() + 2;
                           });
    size_t stressed = weakStart ? 1 : 0;
    if (word.ends_with("ion") && vowels.size() > 2)
        stressed = vowels.size() - 2; // the syllable before -tion, -sion
    if (phones[vowels[stressed]].sound == Sound::ax)
        stressed = 0;
    phones[vowels[stressed]].stressed = true;
}

class Rules : public Dictionary {
public:
    Phones Pronounce(std::string_view letters) const override {
        Phones phones = PronounceUnmarked(letters);
        MarkStress(phones, letters);
        return phones;
    }
    bool Has(std::string_view) const override { return false; }

private:
    static Phones PronounceUnmarked(std::string_view word) {
        if (auto known = FindSongWord(word))
            return *known;
        for (const Suffix& suffix : suffixes) {
            if (!word.ends_with(suffix.letters) || (suffix.letters == "s" && !IsPlural(word)))
                continue;
            std::string_view stem = word.substr(0, word.size() - suffix.letters.size());
            if (!CanBeStem(stem))
                continue;
            if (suffix.letters == "s" && (stem.ends_with("xe") || stem.ends_with("she") || stem.ends_with("che") ||
                                          stem.ends_with("sse") || stem.ends_with("zze")))
                stem.remove_suffix(1);
            if (suffix.letters == "s" && stem.ends_with("ie") && stem.size() > 3)
                return WithEnding(PronounceUnmarked(std::string(stem.substr(0, stem.size() - 2)) + "y"), suffix);
            return WithEnding(PronounceUnmarked(RestoreStem(stem, suffix.letters)), suffix);
        }
        return SpellOut(word);
    }

    static Phones WithEnding(Phones phones, const Suffix& suffix) {
        if (suffix.letters == "s")
            AppendPluralEnding(phones);
        else if (suffix.letters == "ed")
            AppendPastEnding(phones);
        else
            AppendPhones(phones, suffix.phones);
        return phones;
    }
};

} // namespace

const Dictionary& RuleDictionary() {
    static const Rules rules;
    return rules;
}

} // namespace g2pa_eng
