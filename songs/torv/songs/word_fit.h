#pragma once

#include "torv/songs/lyric_line.h"

#include <vector>

namespace torv::songs {

/// A line of words that a file gives beside its notes.
struct WordLine {
    std::vector<Syllable> syllables; ///< by verse, then tick
    int track = 0;                   ///< the file's that holds it, as in Part::track; 0: that of several parts
    bool isUndivided = false;        ///< see LyricLine
};

/// Gives every line to the part whose notes begin where its syllables stand: the one that fits best, whatever else is
/// there; of those that fit alike the one of the line's own track, then the one with the fewest notes. A part takes one
/// line, and what fits it far better than any free one as further verses; percussion takes none. The parts' notes are
/// sorted. What is left out is told in the song's remarks.
TORV_SONGS_API void FitWords(Song& song, const std::vector<WordLine>& lines);

/// Puts a line's syllables under a part's notes, of several that begin together under the highest. Each goes to the
/// note that begins nearest to it, within a thirty-second; another one to the note that sounds then or, where that one
/// has words already, to the next note within a quarter that has none. Returns how many fall on no note.
TORV_SONGS_API size_t PlaceWords(const std::vector<Syllable>& syllables, Part& part);

/// Gives a part without words those of the part that it moves with, as the lower voices of a hymn do: voices only, by
/// their instrument, their range and their one note at a time. Each is told in the song's remarks.
TORV_SONGS_API void ShareWords(Song& song);

} // namespace torv::songs
