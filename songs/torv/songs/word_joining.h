#pragma once

#include "torv/songs/song.h"

#include <functional>

namespace torv::songs {

/// What is known of an English word, given in small letters and apostrophes.
enum class WordKnowledge {
    Unknown, ///< it is no word
    Known,   ///< it is a word
    Common   ///< it is among the commonest ones, and may well stand by itself
};

/// Joins neighbours that make one word, in parts that do not say where words end (Part::wordsAreUndivided): at most
/// five syllables that `know` knows as a word together, so that as few as can be are left that are none; never such as
/// are common words each by itself ("in to"), but for a few that are usually one ("up on"). Lines in Japanese or
/// another language stay as they are. Returns how many words were made. Time is linear in the syllables.
TORV_SONGS_API size_t JoinWords(Song& song, const std::function<WordKnowledge(const std::string& word)>& know);

/// What the loaded English converter and the list of words beside the library know; the list is looked for once.
TORV_SONGS_API WordKnowledge KnowEnglishWord(const std::string& word);

} // namespace torv::songs
