#include "torv/synthesis/synth_track.h"

#include "torv/audio/gain.h"

namespace torv {

void SynthTrack::SetVolume(double value) {
    m_volume = ValidVolume(value);
    UpdateGains();
}

void SynthTrack::SetPan(double value) {
    m_pan = ValidPan(value);
    UpdateGains();
}

void SynthTrack::UpdateGains() {
    const auto gain = GainsAt(m_volume, m_volume, m_pan);
    gainL = gain.left;
    gainR = gain.right;
}

} // namespace torv
