// The files that are played, and where each is heard.
#include "torv/audio/wave_out.h"

#include <algorithm>

namespace {

/// The first of the slots that are played for which it holds; -1 when there is none.
template <class Tracks, class Condition>
int FindSlot(const Tracks& tracks, Condition condition) {
    const auto end = tracks.begin() + torv::kMixerTracks;
    const auto found = std::find_if(tracks.begin(), end, condition);
    return found == end ? -1 : static_cast<int>(found - tracks.begin());
}

bool IsTaken(CWaveFile* file) { return file != nullptr; }

bool IsSlot(int slot) { return slot >= 0 && slot <= torv::kMixerTracks; }

} // namespace

int CWaveOut::FirstTrack() const { return FindSlot(m_tracks, IsTaken); }

int CWaveOut::RegisterTrack(CWaveFile* file, int slot) {
    if (slot < 0)
        slot = FindSlot(m_tracks, [](CWaveFile* track) { return !track; });
    if (!file || !IsSlot(slot))
        return -1;
    SetTrack(slot, file);
    return slot;
}

void CWaveOut::UnregisterTrack(int slot) {
    if (IsSlot(slot))
        SetTrack(slot, nullptr);
}

void CWaveOut::UnregisterTrackAll() {
    for (int slot = 0; slot <= torv::kMixerTracks; ++slot)
        SetTrack(slot, nullptr);
}

CWaveFile* CWaveOut::GetTrack(int slot) const {
    return IsSlot(slot) ? m_tracks[static_cast<size_t>(slot)].Get() : nullptr;
}

int CWaveOut::GetRegisteredTrackCount() const {
    return static_cast<int>(std::count_if(m_tracks.begin(), m_tracks.begin() + torv::kMixerTracks, IsTaken));
}

int CWaveOut::SeekTracks(LONG position, int whence) {
    int result = whence; // hosts know the 0 of an absolute seek
    for (int slot = 0; slot < torv::kMixerTracks; ++slot)
        if (CWaveFile* const file = GetTrack(slot))
            result &= file->SeekPlayPointer(position, whence);
    return result;
}

void CWaveOut::SetOutputDeviseType(int type) {
    m_nDeviceType = type;
    m_nDeviceOutput = type != torv::kSilentDevice;
}

void CWaveOut::SetRouting(int slot, int route) {
    if (slot < 0 || slot >= torv::kMixerTracks)
        return;
    m_routing[static_cast<size_t>(slot)] = route;
    if (m_nDeviceOutput)
        CheckRewireOut();
}

int CWaveOut::CheckRewireOut() {
    m_nDeviceOutput = 0;
    if (m_nDeviceType != torv::kSilentDevice)
        for (int slot = 0; slot < torv::kMixerTracks; ++slot)
            if (GetTrack(slot) && m_routing[static_cast<size_t>(slot)] == torv::kDeviceRoute)
                m_nDeviceOutput = 1;
    return m_nDeviceOutput;
}
