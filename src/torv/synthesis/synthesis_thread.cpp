#include "torv/synthesis/synthesis_thread.h"

#include "torv/synthesis/thread_messages.h"

#include <algorithm>

namespace torv {
namespace {

constexpr DWORD kWait = 1;            // milliseconds
constexpr DWORD kGuardSamples = 1024; // see m_samples

LONGLONG StepBefore(LONGLONG sample) { return sample - sample % kStepSamples; }

} // namespace

SynthesisThread::SynthesisThread(CRtSynthesis& driver)
    : m_driver(driver), m_set(driver.Tracks()), m_rate(driver.m_dwRate) {
    if (!m_set)
        return;
    const size_t count = m_set->tracks.size();
    for (size_t i = 0; i < count; ++i)
        m_streams.push_back(driver.RTS_GetQuillMidiBuffer(static_cast<int>(i)));
    m_feeders.resize(count);
    const auto longestStep = static_cast<DWORD>(AtOutputRate(kStepSamples, m_rate) + 1);
    m_samples.resize(std::max(m_set->frameSize, longestStep) + kGuardSamples);
    m_silence.resize(longestStep);
}

void SynthesisThread::Run() {
    if (!m_set)
        return;
    for (SynthTrack& track : m_set->tracks)
        track.engine.Start();
    BeginPass(m_driver.m_dwCurrentPosition);
    while (DoNext())
        Sleep(m_finished ? kWait : 0);
    for (SynthTrack& track : m_set->tracks)
        track.engine.Stop();
}

SynthesisThread::Order SynthesisThread::NextOrder() const {
    if (m_driver.m_nStopRequest)
        return Order::Leave;
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == kOutputEnded)
            return Order::Leave;
        // One that was obeyed already, together with the one before, is passed over.
        const bool isRestart = message.message == kOutputRestarted || message.message == kPositionChanged;
        if (isRestart && m_driver.IsRestartDue())
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
    if (m_finished || m_driver.IsRestartDue())
        return true;
    return m_clock >= m_regionEnd ? AtRegionEnd() : Step();
}

bool SynthesisThread::Restart() {
    if (!ResetEngines(false))
        return false;
    const DWORD asked = m_driver.m_dwRestartsAsked;
    for (SynthTrack& track : m_set->tracks)
        track.info = {0, 0, kRingBlocks, 0, kNoMark, track.info.samples};
    m_driver.m_ring.Clear();
    const bool isSought = m_driver.m_nPositionChanged != 0;
    m_driver.m_nPositionChanged = 0;
    BeginPass(isSought ? m_driver.m_dwSongPosition : m_driver.m_dwCurrentPosition);
    m_driver.m_nSynthesizing = 1;
    m_driver.m_dwRestartsDone = asked; // from here on the output goes by the rings again
    return true;
}

void SynthesisThread::BeginPass(DWORD position) {
    const DWORD preroll = m_driver.m_dwPreroll;
    const DWORD start = position > preroll ? position - preroll : 0;
    m_clock = m_passBegin = StepBefore(MsToSample(start, kEngineTimeBase));
    m_heardFrom = StepBefore(MsToSample(position, kEngineTimeBase));
    m_regionEnd = MsToSample(m_driver.OpenRegionEnd(), kEngineTimeBase);
    m_finished = false;
    for (size_t i = 0; i < m_feeders.size(); ++i) {
        CQuillMidiBuffer* const stream = m_streams[i];
        if (!stream) {
            m_feeders[i].Begin(nullptr, m_clock);
            continue;
        }
        SynthTrack& track = m_set->tracks[i];
        m_driver.ChaseTrack(track, *stream, position);
        MoveToTime(*stream, start);
        m_feeders[i].Begin(stream, m_clock);
        m_feeders[i].Add(track.chased.Events().data(), track.chased.Events().size());
    }
}

bool SynthesisThread::AtRegionEnd() {
    const bool isAnythingHeard = m_heardFrom < m_regionEnd;
    if (!m_driver.m_nRegionLoop || !isAnythingHeard) {
        Finish();
        return true;
    }
    for (size_t i = 0; i < m_set->tracks.size(); ++i)
        m_driver.MarkBlock(*m_set, i);
    // Tracks whose engine made a sample more or less than the others' go on together with them.
    for (SynthTrack& track : m_set->tracks)
        track.info.writeBlock = static_cast<WORD>(m_driver.m_ring.write);
    while (m_driver.m_nPlaying && !m_driver.m_nOutputStarted) {
        if (m_driver.m_nStopRequest || m_driver.IsRestartDue())
            return true;
        Sleep(kWait);
    }
    if (!ResetEngines(true))
        return false;
    BeginPass(m_driver.m_dwRegionStart);
    return true;
}

/// At a loop's turn only an engine that would sing on is reset: one that sings across the region's end, or that was
/// told of what comes behind it.
bool SynthesisThread::IsResetDue(CQuillMidiBuffer* stream) const {
    if (!stream)
        return false;
    stream->SetLoopEndState(m_driver.m_dwRegionEnd);
    return stream->GetLoopEndState() || IsTellingAhead(*stream, m_driver.m_dwRegionEnd);
}

bool SynthesisThread::ResetEngines(bool onlyWhereNeeded) {
    for (size_t i = 0; i < m_set->tracks.size(); ++i) {
        if (onlyWhereNeeded && !IsResetDue(m_streams[i]))
            continue;
        if (const int code = m_set->tracks[i].engine.Reset(); code != 0)
            return Fail("RVEReset Failed! (%d)", code);
    }
    return true;
}

void SynthesisThread::Finish() {
    const bool isBlockBegun =
        std::any_of(m_set->tracks.begin(), m_set->tracks.end(), [](const SynthTrack& t) { return t.info.blockFill; });
    for (size_t i = 0; i < m_set->tracks.size() && isBlockBegun; ++i)
        m_driver.CloseBlock(*m_set, i);
    m_finished = true;
    m_driver.m_nSynthesizing = 0;
}

bool SynthesisThread::Step() {
    const LONGLONG end = m_clock + kStepSamples;
    const auto stepSamples =
        static_cast<DWORD>(AtOutputRate(end - m_passBegin, m_rate) - AtOutputRate(m_clock - m_passBegin, m_rate));
    for (size_t i = 0; i < m_set->tracks.size(); ++i)
        if (!StepTrack(i, stepSamples))
            return false;
    m_clock = end;
    const bool areAllOver =
        std::all_of(m_feeders.begin(), m_feeders.end(), [](const StepFeeder& feeder) { return feeder.Finished(); });
    // A loop goes on to its region's end.
    const bool isTurnAhead = m_driver.m_nRegionLoop && m_driver.OpenRegionEnd() != kOpenRegionEnd;
    if (areAllOver && !isTurnAhead)
        Finish();
    return true;
}

bool SynthesisThread::StepTrack(size_t index, DWORD stepSamples) {
    StepFeeder& feeder = m_feeders[index];
    const short* samples = m_silence.data();
    DWORD count = stepSamples;
    if (!feeder.Finished()) {
        const auto& events = feeder.NextStep();
        RVEStepOutput output{m_set->frameSize, m_samples.data()};
        const int code = m_set->tracks[index].engine.Step(static_cast<int>(events.size()), events.data(), output);
        if (code != 0)
            return Fail("Cannot synthesize the track(s)! (%d)", code);
        const DWORD made = std::min<DWORD>(output.count, m_set->frameSize);
        feeder.StepProduced(m_samples.data(), made);
        if (made > 0) { // else the clock goes on, so the sound must
            samples = m_samples.data();
            count = made;
        }
    }
    if (m_clock >= m_heardFrom && m_clock < m_regionEnd)
        m_driver.AppendSamples(*m_set, index, samples, count);
    return true;
}

/// The flags come first: the output ends while the user still reads.
bool SynthesisThread::Fail(const char* text, int code) {
    m_driver.m_nSynthesisError = 1;
    m_driver.m_nStopRequest = 1;
    CString message;
    message.Format(text, code);
    const AtRest rest;
    AfxMessageBox(message, MB_OK | MB_ICONSTOP);
    return false;
}

} // namespace torv
