#include "torv/synthesis/synth_track.h"

#include "torv/audio/gain.h"

namespace torv {

void RingIndexes::Clear() {
    read = 0;
    write = 0;
    partial = 0;
    TakeMark();
}

DWORD RingIndexes::Distance(SHORT to) const {
    const int distance = to - read;
    return static_cast<DWORD>(distance < 0 ? distance + count : distance);
}

bool RingIndexes::IsFull() const { return count != 0 && Buffered() + 1 == count; }

void SynthTrack::UpdateGains() {
    const auto gain = GainsAt(volumeL, volumeR, pan);
    gainL = gain.left;
    gainR = gain.right;
}

} // namespace torv
