#include "torv/synthesis/rt_synthesis.h"

#include "torv/audio/sample.h"

#include <cstring>

namespace {

constexpr DWORD kFullRingWait = 50; // milliseconds
constexpr DWORD kMarkWait = 1;

/// One sample for all channels of a frame; bytes beyond its sixteen bits are its sign.
void StoreEngineSample(BYTE* frame, int channels, DWORD align, short sample) {
    const auto value = static_cast<DWORD>(static_cast<LONG>(sample));
    torv::StoreFrame(frame, channels, align, {value, value});
}

bool IsPlayable(const WAVEFORMATEX& format) { return format.nChannels == 1 || format.nChannels == 2; }

WORD NextBlock(int block, WORD count) { return static_cast<WORD>(block + 1 >= count ? 0 : block + 1); }

} // namespace

/// Whether or not the output has begun: an engine that is done before the device is open would overwrite what nobody
/// has heard.
bool CRtSynthesis::AwaitRoom() {
    while (m_ring.IsFull()) {
        if (m_nStopRequest || IsRestartDue())
            return false;
        Sleep(kFullRingWait);
    }
    return true;
}

/// All tracks go forward in step; the reader goes by the last one.
void CRtSynthesis::NextWriteBlock(torv::TrackSet& set, size_t track) {
    tagRtsInfo& info = set.tracks[track].info;
    info.writeBlock = NextBlock(info.writeBlock, info.blockCount);
    if (track + 1 == set.tracks.size())
        m_ring.write = static_cast<SHORT>(NextBlock(m_ring.write, m_ring.count));
}

int CRtSynthesis::AppendSamples(torv::TrackSet& set, size_t track, const short* samples, DWORD count) {
    if (count == 0 || !IsPlayable(set.format) || !AwaitRoom())
        return 0;
    tagRtsInfo& info = set.tracks[track].info;
    const DWORD align = set.format.nBlockAlign;
    const DWORD end = set.RingBytes();
    DWORD at = info.writeBlock * set.BlockBytes() + info.blockFill * align;
    for (DWORD i = 0; i < count; ++i) {
        StoreEngineSample(info.samples + at, set.format.nChannels, align, samples[i]);
        at = at + align < end ? at + align : 0;
    }
    DWORD fill = info.blockFill + count;
    for (; fill >= set.frameSize; fill -= set.frameSize)
        NextWriteBlock(set, track);
    info.blockFill = static_cast<WORD>(fill);
    return 1;
}

/// What is left of the block holds the ring's lap before.
void CRtSynthesis::SilenceRest(torv::TrackSet& set, size_t track) {
    const tagRtsInfo& info = set.tracks[track].info;
    const DWORD filled = info.blockFill * set.format.nBlockAlign;
    std::memset(info.samples + info.writeBlock * set.BlockBytes() + filled, 0, set.BlockBytes() - filled);
}

void CRtSynthesis::CloseBlock(torv::TrackSet& set, size_t track) {
    SilenceRest(set, track);
    set.tracks[track].info.blockFill = 0;
    NextWriteBlock(set, track);
    if (track + 1 == set.tracks.size())
        m_ring.partial = 0;
}

void CRtSynthesis::MarkBlock(torv::TrackSet& set, size_t track) {
    tagRtsInfo& info = set.tracks[track].info;
    SilenceRest(set, track);
    info.blockFill = 0;
    info.markedBlock = info.writeBlock;
    if (track + 1 != set.tracks.size())
        return;
    while (m_ring.HasMark()) {
        if (m_nStopRequest || IsRestartDue())
            return;
        Sleep(kMarkWait);
    }
    m_ring.mark = m_ring.write.Get();
}

int CRtSynthesis::RTS_AppendSample(int track, const short* samples, int count, int silent) {
    const auto set = Tracks();
    if (!FindTrack(track) || count <= 0)
        return 0;
    const auto index = static_cast<size_t>(track);
    if (!silent)
        return samples ? AppendSamples(*set, index, samples, static_cast<DWORD>(count)) : 0;
    if (count != 1)
        return 1;
    if (!AwaitRoom())
        return 0;
    CloseBlock(*set, index);
    return 1;
}

void CRtSynthesis::RTS_UpdaatWriteIndex(int track) {
    if (FindTrack(track))
        CloseBlock(*Tracks(), static_cast<size_t>(track));
}

void CRtSynthesis::RTS_MarkWriteIndex(int track) {
    if (FindTrack(track))
        MarkBlock(*Tracks(), static_cast<size_t>(track));
}

int CRtSynthesis::RTS_IsBlkOk(DWORD blocks) const { return m_ring.Buffered() >= blocks; }
