#pragma once

#include "torv/songs/xml_document.h"

namespace torv::songs::musicxml {

/// What a metronome mark says.
struct Metronome {
    double quartersPerMinute = 0; ///< 0: it names none
    double speed = 0;             ///< "quarter = eighth": how many times as fast as before; 0: it does not say so
    bool isSwing = false;         ///< how notes are played that are written otherwise, not a tempo
};

/// Of "old = new" the left side is what lasted so long before, and the right one lasts so long now.
Metronome ReadMetronome(XmlElement mark);

} // namespace torv::songs::musicxml
