#include "torv/synthesis/synth_track.h"

#include "torv/audio/gain.h"

void torv::SynthTrack::UpdateGains() {
    const auto gain = GainsAt(volumeL, volumeR, pan);
    gainL = gain.left;
    gainR = gain.right;
}
