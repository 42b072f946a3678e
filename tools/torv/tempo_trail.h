#pragma once

#include "midi_song.h"

#include <vector>

/// A file's tempo changes as a time-keeping track of whole milliseconds can hold them.
///
/// A score's time map rounds every tempo change down to a whole millisecond, so that the rounding of a thousand changes
/// adds up to a drift that can be heard. Here each change's tempo is raised by as little as it takes for the next
/// change to fall on the millisecond nearest its true time: then no change is off by more than half a millisecond,
/// however many there are.
std::vector<MidiTempo> WithoutDrift(const std::vector<MidiTempo>& tempos);

/// True milliseconds from the file's start to a tick.
double MillisecondsAt(const std::vector<MidiTempo>& tempos, uint32_t tick);
