#pragma once

#include "torv/synthesis/mix_formula.h"
#include "torv/synthesis/synth_track.h"

#include <vector>

namespace torv {

/// The rings of all tracks of a play, 3000 blocks each, in the output's format. One thread writes and another reads.
/// They go by two indexes, of which only the writer moves the one and only the reader the other; all tracks are written
/// in step, and the write index is the last one's. Where a pass of a loop ends the writer sets a mark, which the reader
/// takes away. Nothing here waits or allocates.
class SynthRing {
public:
    enum class Content { None, Data, NotYet };
    /// What is to be read next.
    struct Portion {
        Content content = Content::None;
        DWORD blocks = 0;
        bool endsPass = false; ///< with these blocks; or, when there are none, with those before
    };

    /// Empty rings, one for each instance. Throws std::bad_alloc.
    SynthRing(const WAVEFORMATEX& format, DWORD frameSize, std::vector<EngineInstance> engines);

    const WAVEFORMATEX& Format() const { return m_format; }
    /// Sample frames of a block.
    DWORD FrameSize() const { return m_frameSize; }
    DWORD BlockBytes() const { return m_frameSize * m_format.nBlockAlign; }
    std::vector<SynthTrack>& Tracks() { return m_tracks; }

    /// Nothing is buffered. For the reader that asks the writer to begin anew.
    void Clear();

    // The writer's.

    /// Begins anew, and with a first pass.
    void Restart();
    /// Stores engine samples, each as one value for all of a frame's channels, each channel taking its share of the
    /// frame low byte first. Returns for how many there was room without touching a block that is not read yet.
    DWORD Append(size_t track, const short* samples, DWORD count);
    /// Closes the block being filled; the rest of it is silent. False while there is no room for a block.
    bool Close(size_t track);
    /// A pass ends: what was begun of a block is dropped. With the last track the mark is set; false while the one
    /// before has not been taken.
    bool Mark(size_t track);
    /// Tracks whose engine made a sample more or less than the others' go on together with them.
    void Align();
    /// No whole block has been written in this pass.
    bool IsPassEmpty() const { return m_write == m_passBegin; }
    bool IsBlockBegun() const;

    // The reader's.

    /// Blocks that are written and not yet read.
    DWORD Buffered() const { return Distance(m_write); }
    bool HasMark() const { return m_mark != static_cast<SHORT>(kNoMark); }
    void TakeMark() { m_mark = static_cast<SHORT>(kNoMark); }
    /// Not beyond a mark, and not less than `maxBlocks` while `isMore` is to come.
    Portion Next(DWORD maxBlocks, bool isMore) const;
    /// Mixes so many blocks into `out`, in place of what it held, keeps each track's peak, and steps over them.
    void Read(BYTE* out, DWORD blocks, const MixGains& master);
    /// Adds `bytes` of a track's ring from byte `offset` on to the output, unless it is muted.
    void Mix(const SynthTrack& track, BYTE* out, DWORD bytes, DWORD offset, const MixGains& master) const;

private:
    float PeakOf(const SynthTrack& track, DWORD bytes, DWORD offset) const;
    DWORD RingBytes() const { return BlockBytes() * kRingBlocks; }
    DWORD Distance(SHORT to) const;
    DWORD Room(const tagRtsInfo& info) const;
    void SilenceRest(const tagRtsInfo& info) const;
    void Advance(size_t track, DWORD blocks);

    const WAVEFORMATEX m_format;
    const DWORD m_frameSize;
    std::vector<SynthTrack> m_tracks;
    Shared<SHORT> m_read = 0;
    Shared<SHORT> m_write = 0;
    Shared<SHORT> m_mark = static_cast<SHORT>(kNoMark);
    SHORT m_passBegin = 0; ///< the writer's
};

} // namespace torv
