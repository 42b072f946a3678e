// The rings, block by block and frame by frame, and what is told before a play from the middle.
#include "torv/synthesis/ring_writer.h"
#include "torv/synthesis/rt_synthesis.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr int kNoMore = 0;
constexpr int kData = 1;
constexpr int kNotYet = 2;

} // namespace

int CRtSynthesis::RTS_AppendSample(int track, const short* samples, int count, int silent) {
    const auto found = FindTrack(track);
    const bool isPlayable = found && found.ring->Format().nChannels >= 1 && found.ring->Format().nChannels <= 2;
    if (!isPlayable || count <= 0 || (!silent && !samples))
        return 0;
    torv::RingWriter writer(*found.ring, m_state);
    if (!silent)
        return writer.Append(found.index, samples, static_cast<DWORD>(count));
    return count != 1 || writer.Close(found.index);
}

void CRtSynthesis::RTS_UpdaatWriteIndex(int track) {
    if (const auto found = FindTrack(track))
        torv::RingWriter(*found.ring, m_state).Close(found.index);
}

void CRtSynthesis::RTS_MarkWriteIndex(int track) {
    if (const auto found = FindTrack(track))
        torv::RingWriter(*found.ring, m_state).Mark(found.index);
}

int CRtSynthesis::RTS_IsBlkOk(DWORD blocks) const {
    const auto ring = Ring();
    return (ring ? ring->Buffered() : 0) >= blocks;
}

void CRtSynthesis::RTS_ReadSample(const BYTE* at, DWORD& left, DWORD& right) const {
    const torv::FrameValues values = torv::LoadFrame(at, m_WaveFormat.nChannels, m_WaveFormat.nBlockAlign);
    left = values.left;
    right = values.right;
}

void CRtSynthesis::RTS_AddVolume(double gainL, double gainR, DWORD left, DWORD right, float& outL, float& outR) const {
    outL = torv::ScaleValue(left, m_WaveFormat.wBitsPerSample, gainL);
    outR = torv::ScaleValue(right, m_WaveFormat.wBitsPerSample, gainR);
}

char* CRtSynthesis::RTS_MixOut(char* out, float left, float right) const {
    return reinterpret_cast<char*>(
        torv::AddOutputFrame(reinterpret_cast<BYTE*>(out), m_WaveFormat, left, right, m_master));
}

torv::MixGains CRtSynthesis::CurrentMaster() const {
    const double sounding = m_nMasterMute ? 0.0 : 1.0;
    return {1.0, 1.0, sounding * m_dMasterGainL, sounding * m_dMasterGainR};
}

void CRtSynthesis::RTS_SetMasterPlayParam() { m_master = CurrentMaster(); }

double CRtSynthesis::RTS_GetTrackPeak(int track) const {
    const auto found = FindTrack(track);
    return found ? found->peak.Get() : 0.0;
}

void CRtSynthesis::RTS_WaveDataTrackMix(int track, BYTE* out, DWORD bytes, DWORD offset) {
    const auto found = FindTrack(track);
    if (!found || !out)
        return;
    RTS_SetMasterPlayParam();
    found.ring->Mix(*found, out, bytes, offset, m_master);
}

/// With room for so many blocks; it grows only when more are asked for than ever before. Null when memory is short.
BYTE* CRtSynthesis::Stage(int which, DWORD bytes) {
    StagingBuffer& staging = m_staging.buffers[which == 2];
    if (staging.size < bytes) {
        staging.bytes.reset(new (std::nothrow) BYTE[bytes]);
        staging.size = staging.bytes ? bytes : 0;
    }
    return staging.bytes.get();
}

int CRtSynthesis::RTS_GetWaveOutData_2(DWORD& bytes, BYTE*& buffer, DWORD maxBlocks, int which, DWORD& blocks,
                                       int& endFlag) {
    bytes = 0;
    blocks = 0;
    endFlag = 0;
    const auto ring = Ring();
    if (!ring)
        return kNoMore;
    const DWORD most = std::min<DWORD>(maxBlocks, torv::kRingBlocks);
    const auto portion = ring->Next(most, !m_state.HasSynthesisStopped());
    endFlag = portion.endsPass;
    if (portion.content != torv::SynthRing::Content::Data)
        return portion.content == torv::SynthRing::Content::NotYet ? kNotYet : kNoMore;
    buffer = Stage(which, most * ring->BlockBytes());
    if (!buffer)
        return kNoMore;
    RTS_SetMasterPlayParam();
    ring->Read(buffer, portion.blocks, m_master);
    blocks = portion.blocks;
    bytes = blocks * ring->BlockBytes();
    return kData;
}

int CRtSynthesis::RTS_GetWaveOutSilentData(DWORD& bytes, BYTE*& buffer, DWORD maxBlocks, int which, DWORD& blocks) {
    const auto ring = Ring();
    const DWORD most = std::min<DWORD>(maxBlocks, torv::kRingBlocks);
    buffer = ring ? Stage(which, most * ring->BlockBytes()) : nullptr;
    blocks = buffer ? most : 0;
    bytes = buffer ? most * ring->BlockBytes() : 0;
    if (buffer)
        std::memset(buffer, 0, bytes);
    return buffer ? kData : kNoMore;
}

int CRtSynthesis::RTS_ChaseEvent(int track, DWORD position) {
    const auto found = FindTrack(track);
    CQuillMidiBuffer* const stream = RTS_GetQuillMidiBuffer(track);
    if (!found || !stream)
        return 0;
    try {
        torv::ChaseEvents(*stream, position, m_preroll, found->chased);
    } catch (const std::bad_alloc&) {
        found->chased.Clear();
    }
    return static_cast<int>(found->chased.Events().size());
}

const std::vector<RVEEvent>* CRtSynthesis::RTS_GetChaseEvents(int track) const {
    const auto found = FindTrack(track);
    return found ? &found->chased.Events() : nullptr;
}

int CRtSynthesis::RTS_ChaseEventExist(int track, const BYTE* group, DWORD length) const {
    const auto found = FindTrack(track);
    return found && group && length >= 3 && found->chased.Has(group, length);
}

DWORD CRtSynthesis::RTS_GetEventLength(const BYTE* bytes, DWORD length) {
    return bytes ? torv::GroupLength(bytes, length) : 0;
}

int CRtSynthesis::RTS_MoveTo(int track, DWORD time) {
    CQuillMidiBuffer* const stream = RTS_GetQuillMidiBuffer(track);
    return stream ? torv::MoveToTime(*stream, time) : 0;
}
