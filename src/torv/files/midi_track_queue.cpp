#include "torv/files/midi_track_queue.h"

#include "torv/files/shared_field.h"

#include <algorithm>
#include <functional>

namespace torv {

void MidiTrackQueue::Prepare(DWORD tracks) {
    m_places.reserve(tracks);
    m_places.clear();
    m_stale = true;
}

DWORD MidiTrackQueue::Take(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick, tagMidiTrack*& chosen) {
    chosen = nullptr;
    DWORD result = kMidiOk;
    // Asked before it is told: a plain look costs less than an exchange, which every event would pay for.
    if (m_stale && m_stale.exchange(false))
        result = Rebuild(tracks, count, lastTick);
    else if (m_taken)
        result = Advance(tracks, lastTick);
    m_taken = false;
    if (result != kMidiOk) {
        m_stale = true; // until the malformed track is muted, every reading finds it again
        return result;
    }
    if (m_places.empty())
        return kMidiOk;
    m_now = m_places.front().first;
    m_taken = true;
    chosen = tracks[m_places.front().second];
    return kMidiOk;
}

DWORD MidiTrackQueue::Rebuild(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick) {
    m_places.clear();
    m_now = 0;
    for (DWORD i = 0; i < count; ++i) {
        Place place;
        bool hasOne = false;
        if (FindPlace(tracks, i, lastTick, place, hasOne) != kMidiOk)
            return kMidiError;
        if (hasOne)
            m_places.push_back(place);
    }
    std::make_heap(m_places.begin(), m_places.end(), std::greater<>());
    return kMidiOk;
}

/// The track on top takes the place of its next event.
DWORD MidiTrackQueue::Advance(tagMidiTrack* const* tracks, DWORD lastTick) {
    Place& top = m_places.front();
    bool hasOne = false;
    if (FindPlace(tracks, top.second, lastTick, top, hasOne) != kMidiOk)
        return kMidiError;
    if (!hasOne) {
        top = m_places.back();
        m_places.pop_back();
    }
    SinkTop();
    return kMidiOk;
}

/// One way down, instead of one for taking the track out and another for putting it back.
void MidiTrackQueue::SinkTop() {
    const size_t count = m_places.size();
    if (count < 2)
        return;
    Place* const places = m_places.data();
    const Place moved = places[0];
    size_t hole = 0;
    for (size_t child = 1; child < count; child = 2 * hole + 1) {
        if (child + 1 < count && places[child + 1] < places[child])
            ++child;
        if (!(places[child] < moved))
            break;
        places[hole] = places[child];
        hole = child;
    }
    places[hole] = moved;
}

/// Of a track with an event pending; one that is muted or has ended has none.
DWORD MidiTrackQueue::FindPlace(tagMidiTrack* const* tracks, DWORD index, DWORD lastTick, Place& place,
                                bool& hasOne) const {
    tagMidiTrack* track = tracks[index];
    if (!track || ReadShared(track->mute))
        return kMidiOk;
    // The end flag comes up with the end event still pending, which is to be delivered.
    if (track->pending.status == 0) {
        const DWORD parsed = mtGetNextEvent(track);
        if (parsed != kMidiOk)
            return parsed == kMidiError ? kMidiError : kMidiOk;
    }
    place = {m_now + (track->tick - lastTick), index};
    hasOne = true;
    return kMidiOk;
}

} // namespace torv
