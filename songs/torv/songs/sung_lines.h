#pragma once

#include "torv/songs/export.h"
#include "torv/songs/performance.h"

#include <string>
#include <vector>

namespace torv::songs {

/// A word, or in Japanese a syllable.
struct SungWord {
    double start = 0; ///< seconds of the wave
    std::string text;
    bool blankBefore = false; ///< in its line
};

/// What is sung in one breath, or as much of it as one reads at a glance.
struct SungLine {
    double start = 0;
    double end = 0;
    std::vector<SungWord> words;
};

/// A part's words as lines: a rest, the end of a phrase or a line's length ends one.
TORV_SONGS_API std::vector<SungLine> SungLinesOf(const PerformedPart& part);
TORV_SONGS_API std::string TextOf(const SungLine& line);

} // namespace torv::songs
