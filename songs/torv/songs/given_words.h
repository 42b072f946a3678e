#pragma once

#include "torv/songs/read_song.h"

namespace torv::songs {

/// A syllable of words that are given beside a song.
struct GivenSyllable {
    Word word;             ///< as a reader would fill it
    bool prolongs = false; ///< the vowel before goes on over one more note
    int line = 0;          ///< of the text, from 1
};

/// Words for one part, or for all that have none of their own here.
struct GivenWords {
    std::string part;                     ///< its name or number; empty: all others
    int line = 0;                         ///< where it is named
    std::vector<GivenSyllable> syllables; ///< in their order
};

/// Reads words as people write them down: line by line, hyphens between the syllables of a word.
/// - "_" alone is a note on which the vowel goes on, and so is each "_" behind a syllable ("glo__-ri-a"); "_" or "~"
///   inside a syllable ties two words to one note; "__" and "--" alone are what LilyPond writes, an extender and a
///   hyphen.
/// - Kana need no blanks and no hyphens.
/// - A line that begins with a number and a point or bracket begins the verse of that number.
/// - A line "[Alto]" begins the words of that part.
/// Texts are in any encoding, see ReadOptions, and at most a megabyte. Throws SongError, which names the line.
TORV_SONGS_API std::vector<GivenWords> ReadWords(Bytes bytes, const std::string& source,
                                                 const ReadOptions& options = {});
/// The same for a file.
TORV_SONGS_API std::vector<GivenWords> ReadWordsFile(const std::string& path, const ReadOptions& options = {});

/// Puts these words under a song's notes, in place of what stands there. A part's syllables go where it had syllables
/// before; in a part without words on each note that no slur leads to; and where the words say themselves on which
/// notes a vowel goes on, on each of the others. Words for no part in particular are for every part with words; where
/// there is none, for those with the indexes `chosen`, else for the one whose notes are nearest in number, and those
/// that move with it. Too many and too few syllables are told in the song's remarks. Throws SongError for a part that
/// is not there.
TORV_SONGS_API void SetWords(Song& song, const std::vector<GivenWords>& words, const std::string& source,
                             const std::vector<size_t>& chosen = {});

} // namespace torv::songs
