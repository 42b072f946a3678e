#pragma once

#include "torv/songs/voice_line.h"

namespace torv::songs {

/// Moves what a word's text has in brackets at its end into its phonemes: "night[n aI t]". A hyphen may stand on either
/// side of the bracket, a comma and the like behind it. A text without a letter before the bracket stays as it is.
TORV_SONGS_API void TakePhonemes(Word& word);
/// Of every word of a song, as ReadSong does.
TORV_SONGS_API void TakePhonemes(Song& song);

/// Empties the phonemes of the line's words that have one which the language does not know, and tells each of them in a
/// line, with the nearest ones: those words are looked up as others are.
TORV_SONGS_API std::vector<std::string> DropUnknownPhonemes(VoiceLine& line, int language, const Song& song);

/// A word whose phonemes are given by hand may be followed by notes that go on with its vowel: these get that vowel,
/// and the last of them the consonants behind it.
TORV_SONGS_API void SpreadPhonemes(std::vector<SungNote>& notes, int language);

} // namespace torv::songs
