#include "torv/synthesis/rt_synthesis.h"

#include "torv/synthesis/mix_formula.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kNoMore = 0;
constexpr int kData = 1;
constexpr int kNotYet = 2;

} // namespace

void CRtSynthesis::RTS_ReadSample(const BYTE* at, DWORD& left, DWORD& right) const {
    const torv::FrameValues values = torv::LoadFrame(at, m_WaveFormat.nChannels, m_WaveFormat.nBlockAlign);
    left = values.left;
    right = values.right;
}

void CRtSynthesis::RTS_AddVolume(double gainL, double gainR, DWORD left, DWORD right, float& outL, float& outR) const {
    outL = torv::ScaleValue(left, m_WaveFormat.wBitsPerSample, gainL);
    outR = torv::ScaleValue(right, m_WaveFormat.wBitsPerSample, gainR);
}

torv::MixGains CRtSynthesis::MasterGains() const {
    const double sounding = m_nMixMasterMute ? 0.0 : 1.0;
    return {1.0, 1.0, sounding * m_dMixMasterGainL, sounding * m_dMixMasterGainR};
}

char* CRtSynthesis::RTS_MixOut(char* out, float left, float right) const {
    return reinterpret_cast<char*>(
        torv::AddOutputFrame(reinterpret_cast<BYTE*>(out), m_WaveFormat, left, right, MasterGains()));
}

void CRtSynthesis::MixTrack(const torv::TrackSet& set, const torv::SynthTrack& track, BYTE* out, DWORD bytes,
                            DWORD offset) {
    if (track.mute || !track.info.samples)
        return;
    RTS_SetMasterPlayParam();
    torv::MixGains gains = MasterGains();
    gains.trackL = track.gainL;
    gains.trackR = track.gainR;
    const DWORD align = set.format.nBlockAlign;
    DWORD at = offset % set.RingBytes();
    for (DWORD left = bytes - bytes % align; left > 0;) {
        const DWORD run = std::min(left, set.RingBytes() - at);
        torv::MixFrames(out, track.info.samples + at, run / align, set.format, gains);
        out += run;
        left -= run;
        at = 0;
    }
}

void CRtSynthesis::RTS_WaveDataTrackMix(int track, BYTE* out, DWORD bytes, DWORD offset) {
    const auto found = FindTrack(track);
    const auto set = Tracks();
    // A place between two frames is none: the ring ends with a whole one.
    if (found && set && out && offset % set->format.nBlockAlign == 0)
        MixTrack(*set, *found, out, bytes, offset);
}

/// Zeroed, with room for so many bytes; it grows only when a larger one is asked for than ever before. Null when memory
/// is short.
BYTE* CRtSynthesis::Stage(int which, DWORD bytes) {
    StagingBuffer& staging = m_staging.buffers[which == 2];
    if (staging.size < bytes) {
        staging.bytes.reset(new (std::nothrow) BYTE[bytes]);
        staging.size = staging.bytes ? bytes : 0;
    }
    if (staging.bytes)
        std::memset(staging.bytes.get(), 0, bytes);
    return staging.bytes.get();
}

int CRtSynthesis::MixBlocks(const torv::TrackSet& set, DWORD maxBlocks, int which, BYTE*& buffer, DWORD& blocks,
                            int& endFlag) {
    const bool isMore = !HasSynthesisStopped();
    // The mark is asked for first: what is written before it is there when it is.
    const bool hasMark = m_ring.HasMark();
    const DWORD available = hasMark ? m_ring.BeforeMark() : m_ring.Buffered();
    if (available == 0 || (!hasMark && isMore && available < maxBlocks))
        return isMore ? kNotYet : kNoMore;
    const DWORD taken = std::min(available, maxBlocks);
    buffer = Stage(which, maxBlocks * set.BlockBytes());
    if (!buffer)
        return kNoMore;
    const auto read = static_cast<DWORD>(m_ring.read.Get());
    for (const torv::SynthTrack& track : set.tracks)
        MixTrack(set, track, buffer, taken * set.BlockBytes(), read * set.BlockBytes());
    m_ring.read = static_cast<SHORT>((read + taken) % torv::kRingBlocks);
    blocks = taken;
    endFlag = hasMark && taken == available;
    return kData;
}

int CRtSynthesis::RTS_GetWaveOutData_2(DWORD& bytes, BYTE*& buffer, DWORD maxBlocks, int which, DWORD& blocks,
                                       int& endFlag) {
    const auto set = Tracks();
    bytes = 0;
    blocks = 0;
    endFlag = 0;
    if (!set)
        return kNoMore;
    const int result = MixBlocks(*set, maxBlocks, which, buffer, blocks, endFlag);
    bytes = blocks * set->BlockBytes();
    return result;
}

int CRtSynthesis::RTS_GetWaveOutSilentData(DWORD& bytes, BYTE*& buffer, DWORD maxBlocks, int which, DWORD& blocks) {
    const auto set = Tracks();
    buffer = set ? Stage(which, maxBlocks * set->BlockBytes()) : nullptr;
    blocks = buffer ? maxBlocks : 0;
    bytes = buffer ? maxBlocks * set->BlockBytes() : 0;
    return buffer ? kData : kNoMore;
}
