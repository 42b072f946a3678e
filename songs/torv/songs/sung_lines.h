#pragma once

#include "torv/songs/export.h"
#include "torv/songs/performance.h"

#include <string>
#include <vector>

namespace torv::songs {

/// A word, or in Japanese a syllable.
struct SungWord {
    double start = 0;         ///< seconds of the wave
    std::string text;         ///< UTF-8
    bool blankBefore = false; ///< in its line
};

/// What is sung in one breath, or as much of it as one reads at a glance.
struct SungLine {                ///< seconds of the wave
    double start = 0;            ///< seconds of the wave
    double end = 0;              ///< seconds of the wave
    std::vector<SungWord> words; ///< in their order
};

/// A part's words as lines: a rest, the end of a phrase or a line's length ends one.
TORV_SONGS_API std::vector<SungLine> SungLinesOf(const PerformedPart& part);
/// The words with blanks between them, UTF-8.
TORV_SONGS_API std::string TextOf(const SungLine& line);

} // namespace torv::songs
