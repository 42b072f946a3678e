#include "torv/synthesis/rt_synthesis.h"

#include "torv/audio/gain.h"

#include <algorithm>
#include <new>

namespace {

constexpr int kMostTracks = 1024;
constexpr DWORD kRingMargin = 2; ///< the ring is twice as large as its blocks need

} // namespace

void CRtSynthesis::RTS_SetSynthesisParam(int mode, int tracks, DWORD startDelayMs, DWORD rate, DWORD prerollMs,
                                         int chase) {
    m_nSynthesisMode = mode;
    m_nTrackCount = std::clamp(tracks, 0, kMostTracks);
    m_dwStartDelay = startDelayMs;
    SetRate(rate);
    m_dwPreroll = prerollMs;
    m_nChase = chase;
}

void CRtSynthesis::RTS_SetPlayParam(DWORD regionStart, DWORD regionEnd, DWORD position, int loop) {
    m_dwRegionStart = regionStart;
    m_dwRegionEnd = regionEnd;
    m_dwCurrentPosition = position;
    m_dwSongPosition = position;
    m_nRegionLoop = loop;
}

int CRtSynthesis::RTS_SetQuillMidiBuffer(int track, CQuillMidiBuffer* stream) {
    if (track < 0 || track >= m_nTrackCount)
        return 0;
    const auto count = static_cast<std::size_t>(m_nTrackCount);
    if (m_streams.size() < count)
        m_streams.resize(count);
    m_streams[static_cast<std::size_t>(track)] = stream;
    return 1;
}

CQuillMidiBuffer* CRtSynthesis::RTS_GetQuillMidiBuffer(int track) const {
    const auto index = static_cast<std::size_t>(track);
    return track >= 0 && track < m_nTrackCount && index < m_streams.size() ? m_streams[index] : nullptr;
}

torv::SynthTrack* CRtSynthesis::FindTrack(int track) const {
    const auto index = static_cast<std::size_t>(track);
    return track >= 0 && track < m_nTrackCount && m_pTracks && index < m_pTracks->size() ? &(*m_pTracks)[index]
                                                                                         : nullptr;
}

int CRtSynthesis::RTS_GetRveHandle(int track) const {
    const torv::SynthTrack* found = FindTrack(track);
    return found ? found->engine.Handle() : torv::kNoEngine;
}

tagRtsInfo* CRtSynthesis::RTS_GetOutBuffer(int track) const {
    torv::SynthTrack* found = FindTrack(track);
    return found ? &found->info : nullptr;
}

bool CRtSynthesis::MakeTracks() {
    const auto count = static_cast<std::size_t>(m_nTrackCount);
    const DWORD frameSize = RTS_GetFrameSize();
    auto tracks = std::make_shared<std::vector<torv::SynthTrack>>();
    tracks->reserve(count);
    while (tracks->size() < count) {
        torv::EngineInstance engine(m_pLibrary, m_dwRate, m_strOption);
        if (!engine)
            return false;
        tracks->emplace_back(std::move(engine));
    }
    m_dwRingCapacity = frameSize * torv::kRingBlocks;
    const std::size_t ringBytes = std::size_t{m_WaveFormat.nBlockAlign} * m_dwRingCapacity * kRingMargin;
    for (torv::SynthTrack& track : *tracks) {
        track.ring.reset(new (std::nothrow) BYTE[ringBytes]());
        if (!track.ring)
            return false;
        track.info = {0, 0, torv::kRingBlocks, 0, 0, track.ring.get()};
    }
    m_pTracks = std::move(tracks);
    return true;
}

int CRtSynthesis::RTS_CreateRVE() {
    if (m_nTrackCount <= 0)
        return 0;
    ApplyOutputChannels();
    m_pTracks.reset(); // the instances made before make room first
    if (!MakeTracks()) {
        m_streams.clear();
        return 0;
    }
    m_ring.read = 0;
    m_ring.write = 0;
    m_ring.count = torv::kRingBlocks;
    m_ring.partial = 0;
    RTS_GetEndPosition();
    return 1;
}

void CRtSynthesis::RTS_DeleteRVE() {
    if (!m_pTracks)
        return;
    m_pTracks.reset();
    m_streams.clear();
}

DWORD CRtSynthesis::RTS_GetEndPosition() {
    DWORD end = 0;
    for (int track = 0; track < m_nTrackCount; ++track)
        if (const CQuillMidiBuffer* stream = RTS_GetQuillMidiBuffer(track))
            end = std::max(end, stream->GetLastTime());
    m_dwEndPosition = end;
    return end;
}

void CRtSynthesis::StartAtRegion() {
    m_dwCurrentPosition = m_dwRegionStart.Get();
    m_dwSongPosition = m_dwRegionStart.Get();
}

void CRtSynthesis::PlacePosition(DWORD position) {
    m_dwCurrentPosition = position;
    m_dwSongPosition = position;
    if (m_dwRegionStart == m_dwRegionEnd || position >= m_dwRegionEnd)
        StartAtRegion();
}

void CRtSynthesis::RTS_ChangePlayRegion(DWORD start, DWORD end, DWORD position) {
    m_dwRegionStart = start;
    m_dwRegionEnd = end;
    PlacePosition(position);
}

void CRtSynthesis::RTS_ChangeLoop(int loop, DWORD position) {
    m_nRegionLoop = loop;
    PlacePosition(position);
}

void CRtSynthesis::RTS_ChangeSongPosition(DWORD position) {
    m_dwCurrentPosition = position;
    m_dwSongPosition = position;
    PostMessageToMsgDestination(m_nMessage, m_wPositionCode, RTS_MsToSample(position, m_dwRate));
    m_nPositionChanged = 1;
    // Unlike the other changes, a position before an empty region stays where it was asked for.
    if (position >= m_dwRegionEnd)
        StartAtRegion();
}

void CRtSynthesis::RTS_SetTrackVolume(int track, double volume) {
    if (torv::SynthTrack* found = FindTrack(track)) {
        found->volumeL = torv::ValidVolume(volume);
        found->volumeR = torv::ValidVolume(volume);
        found->UpdateGains();
    }
}

void CRtSynthesis::RTS_SetTrackPanpot(int track, double pan) {
    if (torv::SynthTrack* found = FindTrack(track)) {
        found->pan = ValidOutputPan(pan);
        found->UpdateGains();
    }
}

void CRtSynthesis::RTS_SetTrackMute(int track, int mute) {
    if (torv::SynthTrack* found = FindTrack(track))
        found->mute = mute;
}

void CRtSynthesis::RTS_SetMasterPlayParam() {
    m_dMixMasterGainL = m_dMasterGainL.Get();
    m_dMixMasterGainR = m_dMasterGainR.Get();
    m_dMixMasterPan = m_dMasterPan.Get();
    m_nMixMasterMute = m_nMasterMute.Get();
}
