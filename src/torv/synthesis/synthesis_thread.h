#pragma once

#include "torv/synthesis/ring_writer.h"
#include "torv/synthesis/step_feeder.h"

#include <memory>
#include <vector>

namespace torv {

/// What the synthesis thread does: steps every track's engine through the track's stream, from a position to the end of
/// the song or the region, again and again in a loop, and anew from wherever it is sent. What it makes goes into the
/// tracks' rings.
///
/// A pass is one way through. It begins as far before the position as the engines must be told of a note ahead; what
/// they make meanwhile is not heard, so that a ring begins with the position itself and a pass of a loop is as long as
/// its region. It begins, and is heard from, at a whole step.
class SynthesisThread {
public:
    /// A stream for each of the ring's tracks, null for none. Throws std::bad_alloc.
    SynthesisThread(std::shared_ptr<SynthRing> ring, std::vector<CQuillMidiBuffer*> streams, PlayState& state,
                    const Preroll& preroll);

    /// Returns when the output has ended, a stop is asked for, or an engine has failed. Throws std::bad_alloc.
    void Run();

private:
    enum class Order { None, Restart, Leave };

    Order NextOrder() const;
    bool DoNext();
    bool Restart();
    void BeginPass(DWORD position);
    bool AtRegionEnd();
    bool EndPass();
    bool IsResetDue(CQuillMidiBuffer* stream) const;
    bool ResetEngines(bool onlyWhereNeeded);
    bool CloseBlocks();
    bool Finish();
    bool Step();
    bool StepTrack(size_t index, DWORD stepSamples);
    bool Fail(const char* text, int code);

    const std::shared_ptr<SynthRing> m_ring;
    const std::vector<CQuillMidiBuffer*> m_streams;
    PlayState& m_state;
    const Preroll m_preroll;
    const DWORD m_rate;
    RingWriter m_writer;
    std::vector<StepFeeder> m_feeders;
    std::vector<short> m_samples; ///< of one step, with room for an engine that writes past its capacity
    std::vector<short> m_silence;

    bool m_finished = false;
    LONGLONG m_clock = 0;     ///< first sample of the coming step, in the engine's time base
    LONGLONG m_passBegin = 0; ///< in the same, as are the next two
    LONGLONG m_heardFrom = 0;
    LONGLONG m_regionEnd = 0;
};

} // namespace torv
