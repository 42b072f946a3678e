#pragma once

#include "torv/songs/musicxml_measures.h"

namespace torv::songs::musicxml {

/// A written measure where it sounds.
struct PlacedMeasure {
    size_t index = 0; ///< of the written one
    int pass = 1;     ///< how often it has sounded, this time included; of an ending which pass of its passage it is
    int passes = 1;   ///< how often it sounds in all; of an ending how often its passage does
    uint32_t tick = 0;
    bool isAfterJump = false; ///< another measure is written before it than sounds there
};

/// The parts of a written part's voices along the measures as they sound: ties are joined, grace notes have their time,
/// slurs and hairpins their ends. The line of words that a repeat's pass has is the first verse. Each has its staff's
/// clef and dynamics; `staves` is where each comes from. `lostGraces` counts grace notes without a note to stand
/// before.
struct Voices {
    std::vector<Part> parts;
    std::vector<VoiceId> ids; ///< of each part
    size_t lostGraces = 0;
};
Voices SingPart(const WrittenPart& part, const std::vector<PlacedMeasure>& measures);

} // namespace torv::songs::musicxml
