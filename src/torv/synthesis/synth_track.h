#pragma once

#include "torv/audio/shared_value.h"
#include "torv/synthesis/chase.h"
#include "torv/synthesis/engine_library.h"

#include <memory>
#include <vector>

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
/// As a region's end, in milliseconds: the song's, wherever that is.
constexpr DWORD kOpenRegionEnd = 0x7FFFFFFF;

/// The block indexes that both worker threads go by. The synthesis thread alone moves the write index, the wave-output
/// thread alone the read index; a mark is set by the former and taken away by the latter.
struct RingIndexes {
    void Clear();
    void TakeMark() { mark = static_cast<SHORT>(kNoMark); }
    bool HasMark() const { return mark != static_cast<SHORT>(kNoMark); }
    /// Blocks that are written and not yet read.
    DWORD Buffered() const { return Distance(write); }
    /// Blocks from the read index to the mark.
    DWORD BeforeMark() const { return Distance(mark); }
    /// One more block would make it look empty.
    bool IsFull() const;

    Shared<SHORT> read = 0;
    Shared<SHORT> write = 0;
    Shared<WORD> count = 0;
    Shared<WORD> partial = 0;
    Shared<SHORT> mark = 0; ///< kNoMark as a signed word when there is none

private:
    DWORD Distance(SHORT to) const;
};

/// What a track needs to be played: its engine instance, its ring, its place in the mix.
struct SynthTrack {
    explicit SynthTrack(EngineInstance instance) : engine(std::move(instance)) {}

    void UpdateGains();

    EngineInstance engine;
    tagRtsInfo info{};
    std::unique_ptr<BYTE[]> ring;
    ChaseTable chased;
    Shared<double> gainL = 1.0;
    Shared<double> gainR = 1.0;
    Shared<double> volumeL = 1.0;
    Shared<double> volumeR = 1.0;
    Shared<double> pan = 0.0;
    Shared<int> mute = 0;
};

/// All tracks of a play, and the shape that their rings were made in.
struct TrackSet {
    /// Bytes of a block, and of a ring's 3000.
    DWORD BlockBytes() const { return frameSize * format.nBlockAlign; }
    DWORD RingBytes() const { return BlockBytes() * kRingBlocks; }

    std::vector<SynthTrack> tracks;
    WAVEFORMATEX format{};
    DWORD frameSize = 0; ///< sample frames of a block
};

} // namespace torv
