#include "torv/synthesis/synthesis_thread.h"

#include "torv/synthesis/thread_messages.h"

#include <algorithm>

namespace torv {
namespace {

LONGLONG StepBefore(LONGLONG sample) { return sample - sample % kStepSamples; }

} // namespace

SynthesisThread::SynthesisThread(std::shared_ptr<SynthRing> ring, std::vector<CQuillMidiBuffer*> streams,
                                 PlayState& state, const Preroll& preroll)
    : m_ring(std::move(ring)), m_streams(std::move(streams)), m_state(state), m_preroll(preroll),
      m_rate(m_ring->Format().nSamplesPerSec), m_writer(*m_ring, state), m_feeders(m_streams.size()) {
    const auto longestStep = static_cast<DWORD>(AtOutputRate(kStepSamples, m_rate) + 1);
    m_samples.resize(std::max(m_ring->FrameSize(), longestStep) + kGuardSamples);
    m_silence.resize(longestStep);
}

void SynthesisThread::Run() {
    for (SynthTrack& track : m_ring->Tracks())
        track.engine.Start();
    BeginPass(m_state.FirstPassBegin());
    while (DoNext())
        Sleep(m_finished ? kLookInterval : 0);
    for (SynthTrack& track : m_ring->Tracks())
        track.engine.Stop();
}

SynthesisThread::Order SynthesisThread::NextOrder() const {
    if (m_state.IsStopAsked())
        return Order::Leave;
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == kOutputEnded)
            return Order::Leave;
        // One that was obeyed already, together with the one before, is passed over.
        const bool isRestart = message.message == kOutputRestarted || message.message == kPositionChanged;
        if (isRestart && m_state.IsRestartDue())
            return Order::Restart;
    }
    return Order::None;
}

/// False when the thread is to leave.
bool SynthesisThread::DoNext() {
    switch (NextOrder()) {
    case Order::Leave:
        return false;
    case Order::Restart:
        return Restart();
    default:
        break;
    }
    // While a new start is on its way here, nothing more goes into the rings.
    if (m_finished || m_state.IsRestartDue())
        return true;
    return m_clock >= m_regionEnd ? AtRegionEnd() : Step();
}

bool SynthesisThread::Restart() {
    if (!ResetEngines(false))
        return false;
    const DWORD asked = m_state.RestartsAsked();
    m_ring->Restart();
    BeginPass(m_state.FirstPassBegin());
    m_state.RestartsDone(asked); // from here on the output goes by the rings again
    return true;
}

void SynthesisThread::BeginPass(DWORD position) {
    const DWORD start = position > m_preroll.milliseconds ? position - m_preroll.milliseconds : 0;
    m_clock = m_passBegin = StepBefore(MsToSample(start, kEngineTimeBase));
    m_heardFrom = StepBefore(MsToSample(position, kEngineTimeBase));
    m_regionEnd = MsToSample(m_state.RegionEnd(), kEngineTimeBase);
    m_finished = false;
    for (size_t i = 0; i < m_feeders.size(); ++i) {
        CQuillMidiBuffer* const stream = m_streams[i];
        if (!stream) {
            m_feeders[i].Begin(nullptr, m_clock);
            continue;
        }
        ChaseTable& chased = m_ring->Tracks()[i].chased;
        ChaseEvents(*stream, position, m_preroll, chased);
        MoveToTime(*stream, start);
        m_feeders[i].Begin(stream, m_clock);
        m_feeders[i].Add(chased.Events().data(), chased.Events().size());
    }
}

bool SynthesisThread::AtRegionEnd() {
    const bool isAnythingHeard = m_heardFrom < m_regionEnd;
    if (!m_state.IsLooping() || !isAnythingHeard)
        return Finish();
    if (!EndPass())
        return true; // to what interrupted it
    if (!ResetEngines(true))
        return false;
    BeginPass(m_state.RegionStart());
    return true;
}

/// Marks it for the output, which must have begun. False when that was interrupted.
bool SynthesisThread::EndPass() {
    // A pass that is shorter than a block is one all the same: else nothing of the loop would ever be heard.
    if (m_ring->IsPassEmpty() && !CloseBlocks())
        return false;
    for (size_t i = 0; i < m_ring->Tracks().size(); ++i)
        if (!m_writer.Mark(i))
            return false;
    m_ring->Align();
    for (; m_state.IsPlaying() && !m_state.HasOutputStarted(); Sleep(kLookInterval))
        if (m_state.IsInterrupted())
            return false;
    return true;
}

/// At a loop's turn only an engine that would sing on is reset: one that sings across the region's end, or that was
/// told of what comes behind it.
bool SynthesisThread::IsResetDue(CQuillMidiBuffer* stream) const {
    if (!stream)
        return false;
    stream->SetLoopEndState(m_state.RegionEnd());
    return stream->GetLoopEndState() || IsTellingAhead(*stream, m_state.RegionEnd());
}

bool SynthesisThread::ResetEngines(bool onlyWhereNeeded) {
    for (size_t i = 0; i < m_streams.size(); ++i) {
        if (onlyWhereNeeded && !IsResetDue(m_streams[i]))
            continue;
        if (const int code = m_ring->Tracks()[i].engine.Reset(); code != 0)
            return Fail("RVEReset Failed! (%d)", code);
    }
    return true;
}

bool SynthesisThread::CloseBlocks() {
    const size_t count = m_ring->IsBlockBegun() ? m_ring->Tracks().size() : 0;
    for (size_t i = 0; i < count; ++i)
        if (!m_writer.Close(i))
            return false;
    return true;
}

bool SynthesisThread::Finish() {
    m_finished = CloseBlocks();
    if (m_finished)
        m_state.FinishSynthesis();
    return true;
}

bool SynthesisThread::Step() {
    const LONGLONG end = m_clock + kStepSamples;
    const auto stepSamples =
        static_cast<DWORD>(AtOutputRate(end - m_passBegin, m_rate) - AtOutputRate(m_clock - m_passBegin, m_rate));
    for (size_t i = 0; i < m_streams.size(); ++i)
        if (!StepTrack(i, stepSamples))
            return false;
    m_clock = end;
    const bool areAllOver =
        std::all_of(m_feeders.begin(), m_feeders.end(), [](const StepFeeder& feeder) { return feeder.Finished(); });
    // A loop goes on to its region's end.
    const bool isTurnAhead = m_state.IsLooping() && m_state.RegionEnd() != kOpenRegionEnd;
    return areAllOver && !isTurnAhead ? Finish() : true;
}

bool SynthesisThread::StepTrack(size_t index, DWORD stepSamples) {
    StepFeeder& feeder = m_feeders[index];
    const short* samples = m_silence.data();
    DWORD count = stepSamples;
    if (!feeder.Finished()) {
        const auto& events = feeder.NextStep();
        RVEStepOutput output{m_ring->FrameSize(), m_samples.data()};
        const int code = m_ring->Tracks()[index].engine.Step(static_cast<int>(events.size()), events.data(), output);
        if (code != 0)
            return Fail("Cannot synthesize the track(s)! (%d)", code);
        const DWORD made = std::min<DWORD>(output.count, m_ring->FrameSize());
        feeder.StepProduced(m_samples.data(), made);
        if (made > 0) { // else the clock goes on, so the sound must
            samples = m_samples.data();
            count = made;
        }
    }
    if (m_clock >= m_heardFrom && m_clock < m_regionEnd)
        m_writer.Append(index, samples, count);
    return true;
}

/// The flags come first: the output ends while the user still reads.
bool SynthesisThread::Fail(const char* text, int code) {
    m_state.Fail();
    CString message;
    message.Format(text, code);
    const AtRest rest;
    AfxMessageBox(message, MB_OK | MB_ICONSTOP);
    return false;
}

} // namespace torv
