/// Where a word's sounds come from.
#pragma once

#include "phones.h"

#include <memory>
#include <optional>
#include <string_view>

namespace g2pa_eng {

/// Pronounces words that the song lexicon does not know.
class Dictionary {
public:
    virtual ~Dictionary() = default;
    /// `letters` are a to z, at least one. The same letters give the same phones, on any thread.
    virtual Phones Pronounce(std::string_view letters) const = 0;
    /// Whether they stand in a lexicon, rather than being read by rules.
    virtual bool Has(std::string_view letters) const = 0;
};

/// The pronunciation library's lexicon and letter-to-sound rules. Its look-ups take turns under one lock.
const Dictionary& LibraryDictionary();
/// Our own letter-to-sound rules, where that library is not to be had.
const Dictionary& RuleDictionary();

/// The commonest words of songs, contractions and sung syllables among them: letters a to z and apostrophes.
std::optional<Phones> FindSongWord(std::string_view word);

/// How a word is sung: the song lexicon, then contractions, stretched letters ("sooo") and the dictionary. `word` is
/// letters a to z and apostrophes; of a longer one the first `maxWordLetters` count. Without letters: empty.
Phones PronounceWord(const Dictionary& dictionary, std::string_view word);
constexpr size_t maxWordLetters = 64;

/// A value of G2PA_WORD_...: where the sounds of PronounceWord come from.
int FindWord(const Dictionary& dictionary, std::string_view word);

/// The plural or possessive s, and the d of the past, as they sound after `phones`.
void AppendPluralEnding(Phones& phones);
void AppendPastEnding(Phones& phones);

} // namespace g2pa_eng
