#pragma once

#include "torv/synthesis/play_state.h"
#include "torv/synthesis/synth_ring.h"

namespace torv {

/// Writes into rings and waits, in short sleeps, while they have no room, whether or not the output has begun: an
/// engine that is done before the device is open would overwrite what nobody has heard. All give up, and answer false,
/// when a stop or a new start is asked for meanwhile.
class RingWriter {
public:
    RingWriter(SynthRing& ring, const PlayState& state) : m_ring(ring), m_state(state) {}

    bool Append(size_t track, const short* samples, DWORD count);
    bool Close(size_t track);
    bool Mark(size_t track);

private:
    SynthRing& m_ring;
    const PlayState& m_state;
};

} // namespace torv
