#include "torv/files/midi_track_queue.h"

#include "torv/files/shared_field.h"

#include <algorithm>
#include <functional>

namespace torv {

void MidiTrackQueue::Prepare(DWORD tracks) {
    m_places.clear();
    m_places.reserve(tracks);
    m_stale = true;
}

DWORD MidiTrackQueue::Take(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick, tagMidiTrack*& chosen) {
    chosen = nullptr;
    DWORD result = kMidiOk;
    if (m_stale.exchange(false))
        result = Rebuild(tracks, count, lastTick);
    else if (m_taken != kNoTrack)
        result = Enter(tracks, m_taken, lastTick);
    m_taken = kNoTrack;
    if (result != kMidiOk) {
        m_stale = true; // until the malformed track is muted, every reading finds it again
        return result;
    }
    if (m_places.empty())
        return kMidiOk;
    std::pop_heap(m_places.begin(), m_places.end(), std::greater<>());
    m_now = m_places.back().first;
    m_taken = m_places.back().second;
    m_places.pop_back();
    chosen = tracks[m_taken];
    return kMidiOk;
}

DWORD MidiTrackQueue::Rebuild(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick) {
    m_places.clear();
    m_now = 0;
    for (DWORD i = 0; i < count; ++i)
        if (Enter(tracks, i, lastTick) != kMidiOk)
            return kMidiError;
    return kMidiOk;
}

/// A track with an event pending takes its place; one that is muted or has ended has none.
DWORD MidiTrackQueue::Enter(tagMidiTrack* const* tracks, DWORD index, DWORD lastTick) {
    tagMidiTrack* track = tracks[index];
    if (!track || ReadShared(track->mute))
        return kMidiOk;
    // The end flag comes up with the end event still pending, which is to be delivered.
    if (track->pending.status == 0) {
        const DWORD parsed = mtGetNextEvent(track);
        if (parsed != kMidiOk)
            return parsed == kMidiError ? kMidiError : kMidiOk;
    }
    m_places.emplace_back(m_now + (track->tick - lastTick), index);
    std::push_heap(m_places.begin(), m_places.end(), std::greater<>());
    return kMidiOk;
}

} // namespace torv
