#pragma once

#include "torv/audio/shared_value.h"
#include "torv/synthesis/chase.h"
#include "torv/synthesis/engine_library.h"

#include <memory>

/// One track's ring of blocks, each one engine frame in the output format.
struct tagRtsInfo {
    WORD reserved;
    WORD writeBlock;  ///< being filled
    WORD blockCount;  ///< always 3000
    WORD blockFill;   ///< sample frames in it
    WORD markedBlock; ///< torv::kNoMark when none
    BYTE* samples;    ///< owned by the track's instance set
};
static_assert(sizeof(void*) != 4 || (offsetof(tagRtsInfo, samples) == 12 && sizeof(tagRtsInfo) == 16));

namespace torv {

constexpr WORD kRingBlocks = 3000;
constexpr WORD kNoMark = 0x8000;

/// What a track needs to be played: its engine instance, its ring, its place in the mix. Volume, pan and mute are the
/// host's and take effect with the next block that is mixed.
struct SynthTrack {
    explicit SynthTrack(EngineInstance instance) : engine(std::move(instance)) {}

    void SetVolume(double value);
    void SetPan(double value);

    EngineInstance engine;
    tagRtsInfo info{};
    std::unique_ptr<BYTE[]> ring;
    ChaseTable chased;
    Shared<double> gainL = 1.0;
    Shared<double> gainR = 1.0;
    Shared<int> mute = 0;
    Shared<float> peak = 0; ///< of what was read last, with the track's gains; full scale is 1.0

private:
    void UpdateGains();

    double m_volume = 1.0;
    double m_pan = 0.0;
};

} // namespace torv
