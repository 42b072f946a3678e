#pragma once

#include "torv/songs/xml_document.h"

namespace torv::songs::musicxml {

/// What a metronome mark says.
struct Metronome {
    double quartersPerMinute = 0; ///< 0: it names none
    double speed = 0;             ///< "quarter = eighth": how many times as fast as before; 0: it does not say so
    double swing = 0;             ///< of two notes that are written alike the share that the first has; 0: no swing
    double swingUnit = 0;         ///< quarters of each as it is written
};

/// Of "old = new" the left side is what lasted so long before, and the right one lasts so long now.
Metronome ReadMetronome(XmlElement mark);

} // namespace torv::songs::musicxml
