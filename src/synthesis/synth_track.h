#pragma once

#include "torv/audio/shared_value.h"
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

/// The block indexes that both worker threads go by; the mark is kNoMark as a signed word when there is none.
struct RingIndexes {
    Shared<SHORT> read = 0;
    Shared<SHORT> write = 0;
    Shared<WORD> count = 0;
    Shared<WORD> partial = 0;
    Shared<SHORT> mark = 0;
};

/// What a track needs to be played: its engine instance, its ring, its place in the mix.
struct SynthTrack {
    explicit SynthTrack(EngineInstance instance) : engine(std::move(instance)) {}

    void UpdateGains();

    EngineInstance engine;
    tagRtsInfo info{};
    std::unique_ptr<BYTE[]> ring;
    Shared<double> gainL = 1.0;
    Shared<double> gainR = 1.0;
    Shared<double> volumeL = 1.0;
    Shared<double> volumeR = 1.0;
    Shared<double> pan = 0.0;
    Shared<int> mute = 0;
};

} // namespace torv
