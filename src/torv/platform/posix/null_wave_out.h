#pragma once

#include "torv/platform/wave_device.h"

namespace torv {

/// Plays nothing, but takes its time: a block lasts as long as its frames do, by deadlines on the monotonic clock that
/// do not move when a wake-up comes late.
class NullWaveOut : public WaveOutDevice {
public:
    const char* Name() const override { return "Null Output"; }
    bool Plays(const WAVEFORMATEX&) const override { return true; }
    std::unique_ptr<WaveOutStream> Open(const WAVEFORMATEX& format, WaveOutListener& listener) override;
};

} // namespace torv
