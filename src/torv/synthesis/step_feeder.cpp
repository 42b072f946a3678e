#include "torv/synthesis/step_feeder.h"

#include <algorithm>

namespace torv {

namespace {

constexpr std::size_t kUsualEvents = 1024; ///< the records of a singer change and several notes in one step

} // namespace

StepFeeder::StepFeeder() { m_events.reserve(kUsualEvents); }

void StepFeeder::Begin(CQuillMidiBuffer* stream, LONGLONG clock) {
    m_stream = stream;
    m_clock = clock;
    m_lastSample = stream ? MsToSample(stream->GetLastTime(), kEngineTimeBase) : 0;
    m_silent = true;
    m_handedOver = false;
    m_events.clear();
    FetchEntry();
}

void StepFeeder::FetchEntry() {
    m_ended = !m_stream || !m_stream->ReadNextEntry(&m_entry);
    if (!m_ended)
        m_entrySample = m_entry.time > 0 ? MsToSample(static_cast<DWORD>(m_entry.time), kEngineTimeBase) : 0;
}

void StepFeeder::Add(const RVEEvent* events, std::size_t count) {
    if (m_handedOver)
        m_events.clear();
    m_handedOver = false;
    m_events.insert(m_events.end(), events, events + count);
}

const std::vector<RVEEvent>& StepFeeder::NextStep() {
    if (m_handedOver)
        m_events.clear();
    m_handedOver = true;
    const LONGLONG stepEnd = m_clock + kStepSamples;
    while (!m_ended && m_entrySample < stepEnd) {
        AddEntry(m_entrySample > m_clock ? static_cast<DWORD>(m_entrySample - m_clock) : 0);
        FetchEntry();
    }
    m_clock = stepEnd;
    return m_events;
}

/// Every byte with its top bit set begins a record; two bytes may follow it. What belongs to no record is dropped.
void StepFeeder::AddEntry(DWORD delta) {
    BYTE bytes[256];
    int filled = 3;
    for (DWORD done = 0; done < m_entry.length;) {
        const DWORD wanted = std::min<DWORD>(m_entry.length - done, sizeof bytes);
        const DWORD read = m_stream->ReadEvent(m_entry.offset + done, bytes, wanted);
        if (read == 0)
            return;
        done += read;
        for (DWORD i = 0; i < read; ++i) {
            if (bytes[i] >= 0x80) {
                m_events.push_back({delta, bytes[i], 0, 0, 0});
                filled = 1;
            } else if (filled < 3) {
                (filled == 1 ? m_events.back().data1 : m_events.back().data2) = bytes[i];
                ++filled;
            }
        }
    }
}

void StepFeeder::StepProduced(const short* samples, DWORD count) {
    m_silent = std::all_of(samples, samples + count, [](short sample) { return sample == 0; });
}

bool StepFeeder::Finished() const {
    if (!m_ended || m_clock < m_lastSample)
        return false;
    return m_silent || m_clock + kStepSamples - m_lastSample > kEngineTimeBase;
}

} // namespace torv
