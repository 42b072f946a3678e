#pragma once

#include "torv/platform/wave_device.h"

#include <vector>

namespace torv {

/// All devices in the order of their numbers, those of the sound library as they are now.
std::vector<std::shared_ptr<WaveOutDevice>> WaveOutDevices();

/// What the system's sound library offers now, its own choice first; nothing, and nothing said, where there is no
/// sound. A device that is still there is the same object as before.
std::vector<std::shared_ptr<WaveOutDevice>> SoundLibraryDevices();

} // namespace torv
