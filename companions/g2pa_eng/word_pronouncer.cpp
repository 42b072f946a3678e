#include "dictionary.h"

#include "torv/abi/g2pa.h"

#include <algorithm>
#include <string>

namespace g2pa_eng {
namespace {

bool IsOneOf(const Phones& phones, std::initializer_list<Sound> sounds) {
    return !phones.empty() && std::find(sounds.begin(), sounds.end(), phones.back().sound) != sounds.end();
}

bool EndsVoiceless(const Phones& phones) {
    return IsOneOf(phones, {Sound::ch, Sound::f, Sound::k, Sound::p, Sound::s, Sound::sh, Sound::t, Sound::th});
}

/// Shortens every run of one letter to at most `longest`.
std::string ShortenRuns(std::string_view word, size_t longest) {
    std::string result;
    size_t run = 0;
    for (size_t i = 0; i < word.size(); ++i) {
        run = i > 0 && word[i] == word[i - 1] ? run + 1 : 1;
        if (run <= longest)
            result.push_back(word[i]);
    }
    return result;
}

std::string WithoutApostrophes(std::string_view word) {
    std::string letters(word);
    std::erase(letters, '\'');
    return letters;
}

Phones PronounceLetters(const Dictionary& dictionary, const std::string& letters) {
    if (letters.empty())
        return {};
    if (auto known = FindSongWord(letters))
        return *known;
    std::string spelled = ShortenRuns(letters, 2);
    if (spelled != letters || spelled.ends_with("hh")) { // drawn out, as in "sooo" and "ahh"
        for (const size_t longest : {2, 1})
            if (auto known = FindSongWord(ShortenRuns(letters, longest)))
                return *known;
    }
    return dictionary.Pronounce(spelled);
}

/// Watches what a dictionary is asked for.
class WatchedDictionary : public Dictionary {
public:
    explicit WatchedDictionary(const Dictionary& dictionary) : m_dictionary(dictionary) {}
    Phones Pronounce(std::string_view letters) const override {
        m_found = m_dictionary.Has(letters) ? G2PA_WORD_LEXICON : G2PA_WORD_RULE;
        return m_dictionary.Pronounce(letters);
    }
    bool Has(std::string_view letters) const override { return m_dictionary.Has(letters); }
    int Found() const { return m_found; }

private:
    const Dictionary& m_dictionary;
    mutable int m_found = G2PA_WORD_COMMON; // the song lexicon comes first
};

struct Contraction {
    std::string_view ending;
    std::string_view phones;
};
constexpr Contraction contractions[] = {{"n't", "ax n t"}, {"'ll", "ax l"}, {"'re", "er"}, {"'ve", "v"}, {"'m", "m"}};

} // namespace

void AppendPluralEnding(Phones& phones) {
    if (IsOneOf(phones, {Sound::s, Sound::z, Sound::sh, Sound::zh, Sound::ch, Sound::jh}))
        AppendPhones(phones, "ax z");
    else
        AppendPhones(phones, EndsVoiceless(phones) ? "s" : "z");
}

void AppendPastEnding(Phones& phones) {
    if (IsOneOf(phones, {Sound::t, Sound::d}))
        AppendPhones(phones, "ax d");
    else
        AppendPhones(phones, EndsVoiceless(phones) ? "t" : "d");
}

int FindWord(const Dictionary& dictionary, std::string_view word) {
    const WatchedDictionary watched(dictionary);
    return PronounceWord(watched, word).empty() ? G2PA_WORD_SILENT : watched.Found();
}

Phones PronounceWord(const Dictionary& dictionary, std::string_view word) {
    word = word.substr(0, maxWordLetters);
    if (auto known = FindSongWord(word))
        return *known;
    const auto stem = [&](std::string_view letters) {
        return PronounceLetters(dictionary, WithoutApostrophes(letters));
    };
    if (word.ends_with("in'") && word.size() > 4) { // singin'
        Phones phones = stem(std::string(word.substr(0, word.size() - 1)) + "g");
        if (IsOneOf(phones, {Sound::ng}))
            phones.back().sound = Sound::n;
        return phones;
    }
    while (word.starts_with('\''))
        word.remove_prefix(1);
    while (word.ends_with('\''))
        word.remove_suffix(1);
    std::string elided(word); // "ev'ry", "heav'n": an e left out
    std::replace(elided.begin(), elided.end(), '\'', 'e');
    if (auto known = FindSongWord(elided))
        return *known;
    for (const Contraction& each : contractions) {
        if (word.size() > each.ending.size() && word.ends_with(each.ending)) {
            Phones phones = stem(word.substr(0, word.size() - each.ending.size()));
            AppendPhones(phones, each.phones);
            return phones;
        }
    }
    const bool plural = word.ends_with("'s");
    if (!plural && !word.ends_with("'d"))
        return word.find('\'') == word.npos ? PronounceLetters(dictionary, std::string(word)) : stem(word);
    Phones phones = stem(word.substr(0, word.size() - 2));
    plural ? AppendPluralEnding(phones) : AppendPastEnding(phones);
    return phones;
}

} // namespace g2pa_eng
