#include "torv/synthesis/rt_synthesis.h"

#include "torv/audio/gain.h"
#include "torv/synthesis/thread_messages.h"

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
    const std::lock_guard lock(m_mutex);
    const auto count = static_cast<std::size_t>(m_nTrackCount);
    if (m_streams.size() < count)
        m_streams.resize(count);
    m_streams[static_cast<std::size_t>(track)] = stream;
    return 1;
}

CQuillMidiBuffer* CRtSynthesis::RTS_GetQuillMidiBuffer(int track) const {
    const std::lock_guard lock(m_mutex);
    const auto index = static_cast<std::size_t>(track);
    return track >= 0 && track < m_nTrackCount && index < m_streams.size() ? m_streams[index] : nullptr;
}

std::shared_ptr<torv::TrackSet> CRtSynthesis::Tracks() const {
    const std::lock_guard lock(m_mutex);
    return m_pTracks;
}

std::shared_ptr<torv::SynthTrack> CRtSynthesis::FindTrack(int track) const {
    auto set = Tracks();
    const auto index = static_cast<std::size_t>(track);
    if (track < 0 || track >= m_nTrackCount || !set || index >= set->tracks.size())
        return nullptr;
    return {set, &set->tracks[index]};
}

int CRtSynthesis::RTS_GetRveHandle(int track) const {
    const auto found = FindTrack(track);
    return found ? found->engine.Handle() : torv::kNoEngine;
}

tagRtsInfo* CRtSynthesis::RTS_GetOutBuffer(int track) const {
    const auto found = FindTrack(track);
    return found ? &found->info : nullptr;
}

bool CRtSynthesis::MakeTracks() {
    const auto count = static_cast<std::size_t>(m_nTrackCount);
    auto set = std::make_shared<torv::TrackSet>();
    set->format = m_WaveFormat;
    set->frameSize = RTS_GetFrameSize();
    set->tracks.reserve(count);
    while (set->tracks.size() < count) {
        torv::EngineInstance engine(m_pLibrary, m_dwRate, m_strOption);
        if (!engine)
            return false;
        set->tracks.emplace_back(std::move(engine));
    }
    m_dwRingCapacity = set->frameSize * torv::kRingBlocks;
    for (torv::SynthTrack& track : set->tracks) {
        track.ring.reset(new (std::nothrow) BYTE[std::size_t{set->RingBytes()} * kRingMargin]());
        if (!track.ring)
            return false;
        track.info = {0, 0, torv::kRingBlocks, 0, torv::kNoMark, track.ring.get()};
    }
    const std::lock_guard lock(m_mutex);
    m_pTracks = std::move(set);
    return true;
}

int CRtSynthesis::RTS_CreateRVE() {
    if (m_nTrackCount <= 0)
        return 0;
    EndWorkers();
    ApplyOutputChannels();
    ForgetTracks(); // the instances made before make room first
    if (!MakeTracks()) {
        const std::lock_guard lock(m_mutex);
        m_streams.clear();
        return 0;
    }
    m_ring.count = torv::kRingBlocks;
    m_ring.Clear();
    RTS_GetEndPosition();
    return 1;
}

/// The instances are deleted by whoever holds them last, without the lock.
bool CRtSynthesis::ForgetTracks() {
    std::shared_ptr<torv::TrackSet> set;
    const std::lock_guard lock(m_mutex);
    m_pTracks.swap(set);
    return set != nullptr;
}

void CRtSynthesis::RTS_DeleteRVE() {
    if (!ForgetTracks())
        return;
    const std::lock_guard lock(m_mutex);
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

DWORD CRtSynthesis::OpenRegionEnd() const {
    return m_dwRegionStart == m_dwRegionEnd ? torv::kOpenRegionEnd : m_dwRegionEnd.Get();
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

/// While the threads are stopped, wherever that is, the change only stores: what they may hold meanwhile, the heap's
/// lock for one, must not be waited for.
template <class Change>
void CRtSynthesis::ChangeWhileStopped(Change change, bool isOutputFirst) {
    const Workers workers = TheWorkers();
    const auto& first = isOutputFirst ? workers.output : workers.synthesis;
    const auto& second = isOutputFirst ? workers.synthesis : workers.output;
    if (workers.synthesis)
        workers.synthesis->Suspend();
    if (workers.output)
        workers.output->Suspend();
    change();
    if (first)
        first->Resume();
    if (second)
        second->Resume();
    if (!workers.output)
        AskForRestart();
    else
        workers.output->Post(torv::kPositionChanged);
}

void CRtSynthesis::RTS_ChangePlayRegion(DWORD start, DWORD end, DWORD position) {
    ChangeWhileStopped(
        [&] {
            m_dwRegionStart = start;
            m_dwRegionEnd = end;
            PlacePosition(position);
        },
        false);
}

void CRtSynthesis::RTS_ChangeLoop(int loop, DWORD position) {
    ChangeWhileStopped(
        [&] {
            m_nRegionLoop = loop;
            PlacePosition(position);
        },
        true);
}

void CRtSynthesis::RTS_ChangeSongPosition(DWORD position) {
    PostMessageToMsgDestination(m_nMessage, m_wPositionCode, RTS_MsToSample(position, m_dwRate));
    ChangeWhileStopped(
        [&] {
            m_dwCurrentPosition = position;
            m_dwSongPosition = position;
            m_nPositionChanged = 1;
            // Unlike the other changes, a position before an empty region stays where it was asked for.
            if (position >= m_dwRegionEnd)
                StartAtRegion();
        },
        false);
}

void CRtSynthesis::RTS_SetTrackVolume(int track, double volume) {
    if (const auto found = FindTrack(track)) {
        found->volumeL = torv::ValidVolume(volume);
        found->volumeR = torv::ValidVolume(volume);
        found->UpdateGains();
    }
}

void CRtSynthesis::RTS_SetTrackPanpot(int track, double pan) {
    if (const auto found = FindTrack(track)) {
        found->pan = ValidOutputPan(pan);
        found->UpdateGains();
    }
}

void CRtSynthesis::RTS_SetTrackMute(int track, int mute) {
    if (const auto found = FindTrack(track))
        found->mute = mute;
}

void CRtSynthesis::RTS_SetMasterPlayParam() {
    m_dMixMasterGainL = m_dMasterGainL.Get();
    m_dMixMasterGainR = m_dMasterGainR.Get();
    m_dMixMasterPan = m_dMasterPan.Get();
    m_nMixMasterMute = m_nMasterMute.Get();
}
