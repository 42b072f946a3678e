#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace torv::songs {

/// What a written measure says of the order in which measures are played. Jumps leave at its end, signs are reached at
/// its beginning.
struct MeasureSigns {
    bool repeatForward = false;
    int repeatBackward = 0;   ///< how many times the passage sounds in all; 0: no such sign
    std::vector<int> endings; ///< the passes that this measure is for; empty: for all
    bool endingStops = false; ///< the bracket of its endings ends with it
    std::string segno;        ///< the labels under which jumps find it; empty: none
    std::string coda;
    bool daCapo = false;
    std::string dalSegno;
    std::string toCoda;
    bool fine = false;
};

struct PlayedMeasure {
    size_t index = 0; ///< of the written measure
    int pass = 1;     ///< how often it has been reached, this time included
    int ending = 0;   ///< of a measure under a bracket: which pass of its passage this is; else 0
    int endings = 0;  ///< and how many the brackets name
};

struct MeasureOrder {
    std::vector<PlayedMeasure> measures;
    std::vector<std::string> remarks; ///< of signs that lead nowhere
};

/// The measures as they sound. After a jump repeats are not taken again and the last endings are played, as is usual.
/// Of signs that would never end each is followed once; time is linear in the measures that sound, which are 100,000 at
/// most.
MeasureOrder UnfoldMeasures(const std::vector<MeasureSigns>& written);

} // namespace torv::songs
