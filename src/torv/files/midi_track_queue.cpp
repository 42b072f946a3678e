#include "torv/files/midi_track_queue.h"

#include "torv/files/shared_field.h"

namespace torv {

void MidiTrackQueue::Prepare(DWORD tracks) {
    m_nodes.reserve(tracks);
    m_nodes.clear();
    m_stale = true;
}

DWORD MidiTrackQueue::Take(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick, tagMidiTrack*& chosen) {
    chosen = nullptr;
    DWORD result = kMidiOk;
    // Asked before it is told: a plain look costs less than an exchange, which every event would pay for.
    if (m_now >= kLatest || (m_stale && m_stale.exchange(false))) {
        result = Rebuild(tracks, count, lastTick);
    } else if (m_taken) {
        const DWORD index = TrackOf(m_nodes[0]);
        Place place;
        result = FindPlace(tracks, index, lastTick, place);
        if (result == kMidiOk)
            Climb(index, place);
    }
    m_taken = false;
    if (result != kMidiOk) {
        m_stale = true; // until the malformed track is muted, every reading finds it again
        return result;
    }
    if (m_nodes.empty() || m_nodes[0] == kNoPlace)
        return kMidiOk;
    m_now = m_nodes[0] >> kTrackBits;
    m_taken = true;
    chosen = tracks[TrackOf(m_nodes[0])];
    return kMidiOk;
}

DWORD MidiTrackQueue::Rebuild(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick) {
    m_nodes.assign(count, 0); // before all others, so that each track's way is made as if it came in later
    m_now = 0;
    for (DWORD i = 0; i < count; ++i) {
        Place place;
        if (FindPlace(tracks, i, lastTick, place) != kMidiOk)
            return kMidiError;
        Climb(i, place);
    }
    return kMidiOk;
}

/// The track's place up to where it loses; the first of all to the top.
void MidiTrackQueue::Climb(DWORD index, Place place) {
    Place* const nodes = m_nodes.data();
    for (size_t node = (m_nodes.size() + index) / 2; node > 0; node /= 2) {
        // Who wins nobody can foresee, so that there must be no branch.
        const Place change = (place ^ nodes[node]) & (Place{0} - Place{nodes[node] < place});
        nodes[node] ^= change;
        place ^= change;
    }
    nodes[0] = place;
}

/// Of a track with an event pending.
DWORD MidiTrackQueue::FindPlace(tagMidiTrack* const* tracks, DWORD index, DWORD lastTick, Place& place) const {
    place = kNoPlace;
    tagMidiTrack* track = tracks[index];
    if (!track || ReadShared(track->mute))
        return kMidiOk;
    // The end flag comes up with the end event still pending, which is to be delivered.
    if (track->pending.status == 0) {
        const DWORD parsed = mtGetNextEvent(track);
        if (parsed != kMidiOk)
            return parsed == kMidiError ? kMidiError : kMidiOk;
    }
    place = (m_now + (track->tick - lastTick)) << kTrackBits | index;
    return kMidiOk;
}

} // namespace torv
