#include "torv/synthesis/synth_ring.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace torv {
namespace {

constexpr size_t kRingMargin = 2; ///< the ring is twice as large as its blocks need

} // namespace

SynthRing::SynthRing(const WAVEFORMATEX& format, DWORD frameSize, std::vector<EngineInstance> engines)
    : m_format(format), m_frameSize(frameSize) {
    m_tracks.reserve(engines.size());
    for (EngineInstance& engine : engines) {
        SynthTrack& track = m_tracks.emplace_back(std::move(engine));
        track.ring = std::make_unique<BYTE[]>(RingBytes() * kRingMargin);
        track.info.samples = track.ring.get();
    }
    Restart();
}

void SynthRing::Clear() {
    m_read = 0;
    m_write = 0;
    TakeMark();
}

void SynthRing::Restart() {
    for (SynthTrack& track : m_tracks)
        track.info = {0, 0, kRingBlocks, 0, kNoMark, track.info.samples};
    m_passBegin = 0;
    Clear();
}

DWORD SynthRing::Distance(SHORT to) const {
    const int distance = to - m_read;
    return static_cast<DWORD>(distance < 0 ? distance + kRingBlocks : distance);
}

/// Frames. One block always stays free: equal indexes are an empty ring.
DWORD SynthRing::Room(const tagRtsInfo& info) const {
    const auto blocks = (static_cast<DWORD>(m_read) + kRingBlocks - 1 - info.writeBlock) % kRingBlocks;
    const bool isFull = blocks == 0 || Buffered() + 1 == kRingBlocks;
    return isFull ? 0 : blocks * m_frameSize - info.blockFill;
}

void SynthRing::Advance(size_t track, DWORD blocks) {
    tagRtsInfo& info = m_tracks[track].info;
    info.writeBlock = static_cast<WORD>((info.writeBlock + blocks) % kRingBlocks);
    if (track + 1 == m_tracks.size())
        m_write = static_cast<SHORT>((static_cast<DWORD>(m_write) + blocks) % kRingBlocks);
}

DWORD SynthRing::Append(size_t track, const short* samples, DWORD count) {
    tagRtsInfo& info = m_tracks[track].info;
    const DWORD align = m_format.nBlockAlign;
    const DWORD taken = std::min(count, Room(info));
    BYTE* const end = info.samples + RingBytes();
    BYTE* at = info.samples + info.writeBlock * BlockBytes() + info.blockFill * align;
    for (DWORD i = 0; i < taken; ++i) {
        const auto value = static_cast<DWORD>(static_cast<LONG>(samples[i])); // beyond its sixteen bits is its sign
        StoreFrame(at, m_format.nChannels, align, {value, value});
        at = at + align < end ? at + align : info.samples;
    }
    const DWORD fill = info.blockFill + taken;
    info.blockFill = static_cast<WORD>(fill % m_frameSize);
    Advance(track, fill / m_frameSize);
    return taken;
}

/// What is left of the block holds the ring's lap before.
void SynthRing::SilenceRest(const tagRtsInfo& info) const {
    const DWORD filled = info.blockFill * m_format.nBlockAlign;
    std::memset(info.samples + info.writeBlock * BlockBytes() + filled, 0, BlockBytes() - filled);
}

bool SynthRing::Close(size_t track) {
    tagRtsInfo& info = m_tracks[track].info;
    if (Room(info) == 0)
        return false;
    SilenceRest(info);
    info.blockFill = 0;
    Advance(track, 1);
    return true;
}

bool SynthRing::Mark(size_t track) {
    tagRtsInfo& info = m_tracks[track].info;
    info.blockFill = 0;
    info.markedBlock = info.writeBlock;
    if (track + 1 != m_tracks.size())
        return true;
    if (HasMark())
        return false;
    m_mark = m_write.Get();
    m_passBegin = m_write;
    return true;
}

void SynthRing::Align() {
    for (SynthTrack& track : m_tracks)
        track.info.writeBlock = static_cast<WORD>(m_write);
}

bool SynthRing::IsBlockBegun() const {
    return std::any_of(m_tracks.begin(), m_tracks.end(), [](const SynthTrack& track) { return track.info.blockFill; });
}

SynthRing::Portion SynthRing::Next(DWORD maxBlocks, bool isMore) const {
    // The mark is asked for first: what is written before it is there when it is.
    const bool hasMark = HasMark();
    const DWORD available = Distance(hasMark ? m_mark : m_write);
    if (available == 0 || (!hasMark && isMore && available < maxBlocks))
        return {isMore ? Content::NotYet : Content::None, 0, hasMark};
    const DWORD blocks = std::min(available, maxBlocks);
    return {Content::Data, blocks, hasMark && blocks == available};
}

void SynthRing::Read(BYTE* out, DWORD blocks, const MixGains& master) {
    const auto read = static_cast<DWORD>(m_read);
    std::fill_n(out, blocks * BlockBytes(), BYTE{0}); // no blocks may stand nowhere
    for (SynthTrack& track : m_tracks) {
        Mix(track, out, blocks * BlockBytes(), read * BlockBytes(), master);
        track.peak = PeakOf(track, blocks * BlockBytes(), read * BlockBytes());
    }
    m_read = static_cast<SHORT>((read + blocks) % kRingBlocks);
}

float SynthRing::PeakOf(const SynthTrack& track, DWORD bytes, DWORD offset) const {
    const float fullScale = m_format.wBitsPerSample == 24 ? 256.0F : 1.0F; // as ScaleValue has it
    float peak = 0;
    for (DWORD at = 0; at < bytes && !track.mute; at += m_format.nBlockAlign) {
        const FrameValues values =
            LoadFrame(track.info.samples + (offset + at) % RingBytes(), m_format.nChannels, m_format.nBlockAlign);
        peak = std::max({peak, std::fabs(ScaleValue(values.left, m_format.wBitsPerSample, track.gainL)),
                         std::fabs(ScaleValue(values.right, m_format.wBitsPerSample, track.gainR))});
    }
    return peak / fullScale;
}

void SynthRing::Mix(const SynthTrack& track, BYTE* out, DWORD bytes, DWORD offset, const MixGains& master) const {
    const DWORD align = m_format.nBlockAlign;
    // A place between two frames is none: the ring ends with a whole one.
    if (track.mute || offset % align != 0)
        return;
    MixGains gains = master;
    gains.trackL = track.gainL;
    gains.trackR = track.gainR;
    DWORD at = offset % RingBytes();
    for (DWORD left = bytes - bytes % align; left > 0;) {
        const DWORD run = std::min(left, RingBytes() - at);
        MixFrames(out, track.info.samples + at, run / align, m_format, gains);
        out += run;
        left -= run;
        at = 0;
    }
}

} // namespace torv
