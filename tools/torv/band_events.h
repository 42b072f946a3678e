#pragma once

#include "band.h"

#include <cstdint>

/// Something that the band does at a frame of its sound.
struct BandEvent {
    enum class Kind { NoteOff, Controller, Bend, NoteOn }; ///< in the order that holds at one frame
    int64_t frame;
    Kind kind;
    int channel;  ///< the part's place in the plan
    int number;   ///< key or controller
    double value; ///< velocity, controller's value, or semitones
};

/// All that the plan's parts do, by frame; what lies before the plan's start has a negative one. Marks of loudness set
/// the velocities of notes that the file gives none.
std::vector<BandEvent> BandEventsOf(const torv::songs::Song& song, const BandPlan& plan);
