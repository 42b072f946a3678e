#pragma once

#include "torv/songs/score_builder.h"

namespace torv::songs {

/// One syllable as it is sung.
struct SpelledSyllable {
    std::string text;                  ///< empty where the vowel before goes on
    std::vector<std::string> phonemes; ///< as the engine knows them
    bool byHand = false;               ///< the song's words give them
};

/// A word as it is sung.
struct SpelledWord {
    /// Where its sounds come from. `Converter`: from one that does not tell. `Nothing`: there is no sound in it, and
    /// the language's usual vowel stands there.
    enum class Source { Lexicon, Rule, ByHand, Converter, Nothing };

    uint32_t tick = 0;                      ///< of the song
    std::vector<SpelledSyllable> syllables; ///< one or more
    Source source = Source::Converter;      ///< of the syllables that have no phonemes by hand
};

/// The words of a part of a score that has its phonemes, while the databases are open. Texts are UTF-8.
TORV_SONGS_API std::vector<SpelledWord> SpellWords(const Score& score, const ScorePart& part, const PartPlan& plan);

/// "lexicon", "rule", "by hand", "converter", "no sound".
TORV_SONGS_API const char* NameOf(SpelledWord::Source source);

} // namespace torv::songs
