#pragma once

#include "torv/songs/lyric_line.h"

#include <vector>

namespace torv::songs {

/// A line of words that a file gives beside its notes.
struct WordLine {
    std::vector<Syllable> syllables; ///< by tick
    int track = 0;                   ///< the file's that holds it, as in Part::track
};

/// Gives every line to the part whose notes begin where its syllables stand: the one that fits best, whatever else is
/// there; of those that fit alike the one of the line's own track, then the one with the fewest notes. A part takes one
/// line, percussion none. The parts' notes are sorted. What is left out is told in the song's remarks.
TORV_SONGS_API void FitWords(Song& song, const std::vector<WordLine>& lines);

/// Puts a line's syllables under a part's notes: each goes to the note that begins next to it, or else to the one that
/// sounds at its time, of several at once to the highest. Returns how many fall on no note.
TORV_SONGS_API size_t PlaceWords(const std::vector<Syllable>& syllables, Part& part);

} // namespace torv::songs
