#include "timeline.h"

#include <algorithm>

namespace rve {

void Timeline::Clear() { m_segmentCount = m_firstChange = m_changeCount = 0; }

void Timeline::DropSegments(int count) {
    if (count <= 0)
        return;
    std::copy(m_segments.begin() + count, m_segments.begin() + m_segmentCount, m_segments.begin());
    m_segmentCount -= count;
}

void Timeline::Add(const Segment& segment) {
    if (m_segmentCount == kMaxSegments)
        DropSegments(1);
    int at = m_segmentCount++;
    for (; at > 0 && m_segments[static_cast<size_t>(at - 1)].start > segment.start; --at)
        m_segments[static_cast<size_t>(at)] = m_segments[static_cast<size_t>(at - 1)];
    m_segments[static_cast<size_t>(at)] = segment;
}

const ControlChange* Timeline::Add(const ControlChange& change) {
    const ControlChange* dropped = nullptr;
    const auto slot = [this](int index) -> ControlChange& {
        return m_changes[static_cast<size_t>((m_firstChange + index) % kMaxChanges)];
    };
    if (m_changeCount == kMaxChanges) {
        m_taken = slot(0);
        dropped = &m_taken;
        m_firstChange = (m_firstChange + 1) % kMaxChanges;
        --m_changeCount;
    }
    int at = m_changeCount++;
    for (; at > 0 && slot(at - 1).time > change.time; --at)
        slot(at) = slot(at - 1);
    slot(at) = change;
    return dropped;
}

const ControlChange* Timeline::TakeDue(Time now) {
    if (m_changeCount == 0 || m_changes[static_cast<size_t>(m_firstChange)].time > now)
        return nullptr;
    m_taken = m_changes[static_cast<size_t>(m_firstChange)];
    m_firstChange = (m_firstChange + 1) % kMaxChanges;
    --m_changeCount;
    return &m_taken;
}

} // namespace rve
