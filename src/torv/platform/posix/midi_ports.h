#pragma once

#include "torv/platform/midi_device.h"

#include <vector>

namespace torv {

/// What the system's MIDI library offers now; nothing, and nothing said, where there is no MIDI system. A port that is
/// still there is the same object as before.
std::vector<std::shared_ptr<MidiOutDevice>> SystemMidiPorts();

/// All devices in the order of their numbers, the ports as they are now.
std::vector<std::shared_ptr<MidiOutDevice>> MidiOutDevices();

} // namespace torv
