#pragma once

#include "torv/encoding/quill_midi_buffer.h"
#include "torv/synthesis/engine_library.h"

#include <vector>

namespace torv {

/// Milliseconds to samples: truncated, in double precision and in this order.
inline LONGLONG MsToSample(DWORD milliseconds, DWORD rate) { return TruncateToInt64((milliseconds * 0.001) * rate); }

/// Where a step's end in the engine's time base lies at the output rate.
inline LONGLONG AtOutputRate(LONGLONG clock, DWORD rate) { return clock * rate / kEngineTimeBase; }

/// Cuts an engine stream into steps: the event records that fall into each 256 samples of the engine's time base. The
/// same walk offline and in real time, so that both hand the same records to the engine. One thread at a time; once
/// its list has grown nothing is allocated. Neither owns the stream nor moves it but forward.
class StepFeeder {
public:
    StepFeeder();

    /// Goes on from the stream's current position with the step that begins at `clock` (a multiple of 256). A null
    /// stream has ended.
    void Begin(CQuillMidiBuffer* stream, LONGLONG clock);
    /// Puts records in front of the coming step's own.
    void Add(const RVEEvent* events, std::size_t count);
    /// The records of the coming step; then the clock stands at its end. An entry in the past, or with a negative time,
    /// comes at the step's beginning. Good until the next call.
    const std::vector<RVEEvent>& NextStep();
    /// What the engine made of the step: nothing, or nothing but zeros, is silence.
    void StepProduced(const short* samples, DWORD count);

    /// First sample of the coming step.
    LONGLONG Clock() const { return m_clock; }
    /// The last entry has been handed over.
    bool EntriesEnded() const { return m_ended; }
    /// Entries, the stream's last time and the sound after it have passed: the step there was silent, or one more would
    /// pass a whole second.
    bool Finished() const;

private:
    void FetchEntry();
    void AddEntry(DWORD delta);

    CQuillMidiBuffer* m_stream = nullptr;
    LONGLONG m_clock = 0;
    LONGLONG m_lastSample = 0;
    bool m_ended = true;
    bool m_silent = true;
    bool m_handedOver = true; ///< the events belong to a step that is over
    tagQuillMidiEntry m_entry{};
    LONGLONG m_entrySample = 0;
    std::vector<RVEEvent> m_events;
};

} // namespace torv
