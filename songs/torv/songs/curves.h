#pragma once

#include "torv/songs/databases.h"
#include "torv/songs/voice_line.h"

namespace torv::songs {

/// From its tick on the value holds.
struct CurvePoint {
    uint32_t tick; ///< of the song
    int value;     ///< in the unit of its curve
};

/// What changes while a part is sung, as a score's track holds it.
struct Curves {
    std::vector<CurvePoint> dynamics; ///< 0..127, 72 as usual, by tick; empty: nothing in the part says how loud
    std::vector<CurvePoint> bends;    ///< -8192..8191 of the range, by tick; empty: none
    int bendRange = 2;                ///< semitones, 1..24
};

/// How loud a part is by its dynamic marks and hairpins, its notes' velocities and its channel's volume and expression,
/// and how its pitch is bent.
///
/// A unit of dynamics is 0.2 dB in the reference engine, and one of velocity is as much, of which the engine makes 0.08
/// itself. Velocity 80 is the usual one; beside dynamic marks the part's median. A mark is what the databases' icon of
/// its name says; a hairpin leads in a line to the mark at its end, without one to the next step. Volume is heard
/// against 100 and expression against 127, 40 dB a decade: amplitude goes with the square of the controller, as General
/// MIDI asks for.
TORV_SONGS_API Curves MakeCurves(const Part& part, const VoiceLine& line, const Databases& databases);

} // namespace torv::songs
