// What a play is made of: settings, streams, instances and their rings.
#include "torv/platform/or_zero.h"
#include "torv/synthesis/rt_synthesis.h"

#include <algorithm>

namespace {

constexpr int kMostTracks = 1024;

} // namespace

void CRtSynthesis::RTS_SetSynthesisParam(int mode, int tracks, DWORD startDelayMs, DWORD rate, DWORD prerollMs,
                                         int chase) {
    m_nSynthesisMode = mode;
    m_nTrackCount = std::clamp(tracks, 0, kMostTracks);
    m_dwStartDelay = startDelayMs;
    SetRate(rate);
    m_preroll = {prerollMs, chase != 0};
}

void CRtSynthesis::RTS_SetPlayParam(DWORD regionStart, DWORD regionEnd, DWORD position, int loop) {
    m_state.Place(regionStart, regionEnd, position, loop);
}

int CRtSynthesis::RTS_SetQuillMidiBuffer(int track, CQuillMidiBuffer* stream) {
    if (track < 0 || track >= m_nTrackCount)
        return 0;
    const std::lock_guard lock(m_mutex);
    return torv::OrZero([&] {
        m_streams.resize(std::max(m_streams.size(), static_cast<std::size_t>(m_nTrackCount)));
        m_streams[static_cast<std::size_t>(track)] = stream;
        return 1;
    });
}

CQuillMidiBuffer* CRtSynthesis::RTS_GetQuillMidiBuffer(int track) const {
    const std::lock_guard lock(m_mutex);
    const auto index = static_cast<std::size_t>(track);
    return track >= 0 && track < m_nTrackCount && index < m_streams.size() ? m_streams[index] : nullptr;
}

std::shared_ptr<torv::SynthRing> CRtSynthesis::Ring() const {
    const std::lock_guard lock(m_mutex);
    return m_pRing;
}

/// One for each of so many tracks.
std::vector<CQuillMidiBuffer*> CRtSynthesis::Streams(std::size_t count) const {
    const std::lock_guard lock(m_mutex);
    auto streams = m_streams;
    streams.resize(count);
    return streams;
}

CRtSynthesis::FoundTrack CRtSynthesis::FindTrack(int track) const {
    FoundTrack found{Ring(), static_cast<std::size_t>(track)};
    if (track < 0 || track >= m_nTrackCount || !found.ring || found.index >= found.ring->Tracks().size())
        found.ring.reset();
    return found;
}

int CRtSynthesis::RTS_GetRveHandle(int track) const {
    const auto found = FindTrack(track);
    return found ? found->engine.Handle() : torv::kNoEngine;
}

tagRtsInfo* CRtSynthesis::RTS_GetOutBuffer(int track) const {
    const auto found = FindTrack(track);
    return found ? &found->info : nullptr;
}

/// Null when an instance or memory is refused.
std::shared_ptr<torv::SynthRing> CRtSynthesis::MakeRing() const {
    return torv::OrZero([&]() -> std::shared_ptr<torv::SynthRing> {
        std::vector<torv::EngineInstance> engines;
        engines.reserve(static_cast<std::size_t>(m_nTrackCount));
        for (int track = 0; track < m_nTrackCount; ++track)
            if (!engines.emplace_back(m_pLibrary, m_dwRate, m_strOption))
                return nullptr;
        return std::make_shared<torv::SynthRing>(m_WaveFormat, RTS_GetFrameSize(), std::move(engines));
    });
}

int CRtSynthesis::RTS_CreateRVE() {
    if (m_nTrackCount <= 0)
        return 0;
    EndWorkers();
    SetOutputRate(m_dwRate);
    ApplyOutputChannels();
    ForgetRing(); // the instances made before make room first
    auto ring = MakeRing();
    const bool isMade = ring != nullptr;
    {
        const std::lock_guard lock(m_mutex);
        m_pRing = std::move(ring);
        if (!isMade)
            m_streams.clear();
    }
    if (isMade)
        RTS_GetEndPosition();
    return isMade;
}

/// The instances are deleted by whoever holds them last, without the lock.
bool CRtSynthesis::ForgetRing() {
    std::shared_ptr<torv::SynthRing> ring;
    const std::lock_guard lock(m_mutex);
    m_pRing.swap(ring);
    return ring != nullptr;
}

void CRtSynthesis::RTS_DeleteRVE() {
    if (!ForgetRing())
        return;
    const std::lock_guard lock(m_mutex);
    m_streams.clear();
}

DWORD CRtSynthesis::RTS_GetEndPosition() {
    DWORD end = 0;
    for (int track = 0; track < m_nTrackCount; ++track)
        if (const CQuillMidiBuffer* stream = RTS_GetQuillMidiBuffer(track))
            end = std::max(end, stream->GetLastTime());
    m_state.SetSongEnd(end);
    return end;
}

void CRtSynthesis::RTS_SetTrackVolume(int track, double volume) {
    if (const auto found = FindTrack(track))
        found->SetVolume(volume);
}

void CRtSynthesis::RTS_SetTrackPanpot(int track, double pan) {
    if (const auto found = FindTrack(track))
        found->SetPan(ValidOutputPan(pan));
}

void CRtSynthesis::RTS_SetTrackMute(int track, int mute) {
    if (const auto found = FindTrack(track))
        found->mute = mute;
}
