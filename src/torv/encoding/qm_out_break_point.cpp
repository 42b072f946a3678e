#include "torv/encoding/qm_out_break_point.h"

#include "torv/encoding/quill_midi_buffer.h"

#include <functional>

CxQMOutBreakPoint::~CxQMOutBreakPoint() = default;

void CxQMOutBreakPoint::DetachObject() { m_points.clear(); }

int CxQMOutBreakPoint::IsTargetBP(tagBreakPoint) const { return 1; }

DWORD CxQMOutBreakPoint::WriteNextNPRNEvents(BYTE* out, int value, tagQuillNPRNBlock* block) const {
    return torv::WriteNextNPRNEvents(out, torv::SevenBits(value), torv::kNoDataLsb, block);
}

int CxQMOutBreakPoint::AttachBreakPointList(const CBreakPointList* list) {
    return Attach([&] {
        if (!list)
            return 0;
        m_points.reserve(static_cast<size_t>(list->GetCount()));
        for (POSITION at = list->GetHeadPosition(); at;)
            AttachPoint(list->GetNext(at));
        return 1;
    });
}

// Ticks are unsigned: a point before the start of the song counts as at it.
void CxQMOutBreakPoint::AttachPoint(const tagBreakPoint& point) {
    m_points.push_back({point.position < 0 ? 0 : static_cast<DWORD>(point.position), point.value});
}

int CxQMOutBreakPoint::WriteEvent(CQuillMidiBuffer* buffer, const tagQuillMidiRealtimeInfo* info, tagBreakPoint point) {
    if (!buffer || !info || !info->map)
        return 0;
    const DWORD presend = buffer->GetPresendTime();
    torv::BlockWriter block;
    block.Open(info->channel, m_nNumberMsb, presend).PutWith([&](BYTE* out, tagQuillNPRNBlock* state) {
        return WriteNextNPRNEvents(out, point.value, state);
    });
    // A closing value may be due before the presend has passed: it is sent before the song starts.
    return block.Place(*buffer, *info, static_cast<LONG>(info->time) - static_cast<LONG>(presend));
}

int CxQMOutBreakPoint::OutputParam(CQuillMidiBuffer* buffer, tagQuillMidiRealtimeInfo* info) {
    if (m_points.empty())
        return 1;
    if (!buffer || !info || !info->map)
        return 0;
    torv::ResetRealTimeInfo(*info);
    const auto write = [&] {
        int written = 1;
        for (const Point& point : m_points) {
            torv::UpdateRealTimeInfo(*info, point.tick); // a point out of order goes with the one before it
            if (info->time >= buffer->GetPresendTime())
                written &=
                    WriteEvent(buffer, info, {static_cast<LONG>(point.tick), static_cast<SHORT>(point.value), 0});
        }
        return written;
    };
    const int stored = buffer->InsertTogether(std::ref(write)); // by reference, which takes no memory
    buffer->RaiseLast(info->tick, info->time);
    return stored;
}

// Walks the curve every `resolution` ticks. `emit` gets a sample's kind, tick and value, and answers whether it was
// sent; the closing value is owed when the value sent last is another one.
template <class Emit>
void CxQMOutBreakPoint::Walk(int resolution, Emit emit) const {
    const DWORD step = resolution < 1 ? 1 : static_cast<DWORD>(resolution);
    Point start = m_points.front();
    DWORD tick = start.tick;
    SHORT last = -1;
    for (size_t next = 1; next < m_points.size();) {
        const Point& point = m_points[next];
        SHORT sample = static_cast<SHORT>(start.value);
        if (tick > point.tick || (tick != start.tick && point.tick == start.tick)) {
            // Beyond the point it starts the next segment; a second point at the segment's own tick is passed over.
            if (tick > point.tick)
                start = point;
            ++next;
            continue;
        }
        if (tick != start.tick)
            sample = static_cast<SHORT>(torv::MulDiv(point.value - start.value, static_cast<int>(tick - start.tick),
                                                     static_cast<int>(point.tick - start.tick)) +
                                        start.value);
        if (emit(Sample::OnGrid, tick, sample))
            last = sample;
        tick += step;
    }
    // Signed: for a single point near tick 0 the last grid place lies before 0, and its value is still owed.
    const long long lastGridTick = static_cast<long long>(tick) - step;
    if (lastGridTick < static_cast<long long>(start.tick) && static_cast<SHORT>(start.value) != last)
        emit(Sample::Closing, start.tick, static_cast<SHORT>(start.value));
}

int CxQMOutBreakPoint::OutputParamLinear(CQuillMidiBuffer* buffer, tagQuillMidiRealtimeInfo* info, int resolution) {
    if (m_points.empty() || !buffer || !info || !info->map)
        return 0;
    torv::ResetRealTimeInfo(*info);
    torv::UpdateRealTimeInfo(*info, m_points.front().tick);
    const auto write = [&] {
        int written = 1;
        Walk(resolution, [&](Sample kind, DWORD tick, SHORT value) {
            if (kind == Sample::OnGrid) {
                torv::UpdateRealTimeInfo(*info, tick);
                if (info->time < buffer->GetPresendTime())
                    return false;
            }
            written &= WriteEvent(buffer, info, {static_cast<LONG>(tick), value, 0});
            return true;
        });
        return written;
    };
    const int stored = buffer->InsertTogether(std::ref(write)); // by reference, which takes no memory
    buffer->RaiseLast(info->tick, info->time);
    return stored;
}

int CxQMOutBreakPoint::OutputParamLinear(CBreakPointList* list, int resolution) {
    if (m_points.empty() || !list)
        return 0;
    int added = 0;
    try {
        SHORT previous = -1;
        Walk(resolution, [&](Sample, DWORD tick, SHORT value) {
            if (value != previous) {
                tagBreakPoint point{static_cast<LONG>(tick), value, 0};
                list->AddTail(point);
                previous = value;
                ++added;
            }
            return true;
        });
    } catch (const std::bad_alloc&) {
        for (; added > 0; --added)
            list->RemoveTail();
        return 0;
    }
    return 1;
}
