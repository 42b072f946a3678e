#include "torv/synthesis/stream_singer.h"

#include "torv/synthesis/step_feeder.h"

#include <algorithm>

namespace torv {

namespace {} // namespace

StreamSinger::StreamSinger(EngineInstance engine, CQuillMidiBuffer& stream, DWORD rate, DWORD capacity)
    : m_engine(std::move(engine)), m_stream(stream), m_rate(rate), m_capacity(capacity),
      m_feeder(std::make_unique<StepFeeder>()) {
    // A silent step at a rate beyond the known ones can be longer than a frame.
    const auto longestStep = static_cast<DWORD>(AtOutputRate(kStepSamples, rate) + 1);
    m_samples = std::make_unique<short[]>(std::max(capacity, longestStep) + kGuardSamples);
    m_stream.SeekToBegin();
    m_feeder->Begin(&m_stream, 0);
    m_engine.Start();
}

StreamSinger::~StreamSinger() = default;

bool StreamSinger::Sing() {
    const LONGLONG begin = m_feeder->Clock();
    const auto& events = m_feeder->NextStep();
    RVEStepOutput output{m_capacity, m_samples.get()};
    m_count = 0;
    if (m_engine.Step(static_cast<int>(events.size()), events.data(), output) != 0)
        return false;
    m_count = std::min<DWORD>(output.count, m_capacity);
    m_feeder->StepProduced(m_samples.get(), m_count);
    if (m_count == 0) { // the clock goes on, so the sound must
        m_count = static_cast<DWORD>(AtOutputRate(m_feeder->Clock(), m_rate) - AtOutputRate(begin, m_rate));
        std::fill_n(m_samples.get(), m_count, short{0});
    }
    return true;
}

bool StreamSinger::Finished() const { return m_feeder->Finished(); }

LONGLONG StreamSinger::Steps() const { return m_feeder->Clock() / kStepSamples; }

DWORD StreamSinger::SungMilliseconds() const {
    return std::min(static_cast<DWORD>(m_feeder->Clock() * 1000 / kEngineTimeBase), TotalMilliseconds());
}

} // namespace torv
