#pragma once

#include "torv/files/midi_track.h"

#include <atomic>
#include <vector>

namespace torv {

/// The tracks of one sequence by the time of their pending events, so that an event costs a step for each doubling of
/// their number. What a host does to a track by itself (muting, seeking, reading) makes the order stale; it is then
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
    /// Time and number of a track in one word, so that the next of two is the smaller one.
    using Place = ULONGLONG;
    static constexpr Place kNoPlace = ~Place{0}; ///< of a track that is muted or has ended
    static constexpr int kTrackBits = 16;
    static constexpr ULONGLONG kLatest = ULONGLONG{1} << 46; ///< of times; no distance from there leaves their bits

    static DWORD TrackOf(Place place) { return static_cast<DWORD>(place & ((1U << kTrackBits) - 1)); }
    DWORD FindPlace(tagMidiTrack* const* tracks, DWORD index, DWORD lastTick, Place& place) const;
    DWORD Rebuild(tagMidiTrack* const* tracks, DWORD count, DWORD lastTick);
    void Climb(DWORD index, Place place);

    /// A tournament: the places of the tracks meet in pairs, the later one stays at the pair's node and the earlier one
    /// goes on, until the first one of all is at 0. The way up depends on the track alone, so that the processor knows
    /// it before it knows who wins.
    std::vector<Place> m_nodes;
    /// Where the last tick stands among the times. Ticks wrap, times do not: a track that was muted for a while may
    /// stand before the last tick; its distance is then huge, so it comes last.
    ULONGLONG m_now = 0;
    bool m_taken = false; // the first one waits to have its next event parsed
    std::atomic<bool> m_stale = true;
};

} // namespace torv
