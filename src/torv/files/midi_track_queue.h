#pragma once

#include "torv/files/midi_track.h"

#include <atomic>
#include <utility>
#include <vector>

namespace torv {

/// The tracks of one sequence by the time of their pending events, so that an event costs a step in a heap however many
/// tracks there are. What a host does to a track by itself (muting, seeking, reading) makes the order stale; it is then
/// built anew with the next event. Nothing is allocated after `Prepare`.
class MidiTrackQueue {
public:
    /// Forgets all places. Throws std::bad_alloc, with nothing changed.
    void Prepare(DWORD tracks);
    /// Set by whoever changes a track, from any thread.
    std::atomic<bool>& Stale() { return m_stale; }

    /// Parses what has to be parsed and takes out the track whose pending event is next: by the distance from the last
    /// tick, the earlier track first. Null when all have ended. The caller uses the pending event up and moves the last
    /// tick to it. Returns kMidiOk, or kMidiError when a track is malformed.
    DWORD Take(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick, tagMidiTrack*& chosen);

private:
    using Place = std::pair<ULONGLONG, DWORD>; // time, track

    DWORD FindPlace(tagMidiTrack* const* tracks, DWORD index, DWORD lastTick, Place& place, bool& hasOne) const;
    DWORD Advance(tagMidiTrack* const* tracks, DWORD lastTick);
    void SinkTop();
    DWORD Rebuild(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick);

    std::vector<Place> m_places; // a heap, the next one on top; the track taken last stays there until it has moved on
    /// Where the last tick stands among the times. Ticks wrap, times do not: a track that was muted for a while may
    /// stand before the last tick; its distance is then huge, so it comes last.
    ULONGLONG m_now = 0;
    bool m_taken = false; // the top one waits to have its next event parsed
    std::atomic<bool> m_stale = true;
};

} // namespace torv
