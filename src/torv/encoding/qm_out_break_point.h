#pragma once

#include "torv/encoding/nprn_block.h"
#include "torv/encoding/realtime_info.h"
#include "torv/icons/break_point.h"
#include "torv/platform/platform.h"

#include <new>
#include <vector>

class CQuillMidiBuffer;

/// Writes one breakpoint curve of one engine parameter into a stream, a value block a point or a sample. Attach a list,
/// output, detach; one object serves one parameter at a time. The curve's points are copied on attaching.
class TORV_API CxQMOutBreakPoint {
public:
    CxQMOutBreakPoint() = default;
    CxQMOutBreakPoint(const CxQMOutBreakPoint&) = delete;
    CxQMOutBreakPoint& operator=(const CxQMOutBreakPoint&) = delete;
    virtual ~CxQMOutBreakPoint();

    /// Whether no points are attached.
    bool IsEmpty() const { return m_points.empty(); }
    /// Forgets the points.
    virtual void DetachObject();
    /// Writes one value as the block's next parameter, or parameters; returns the bytes written.
    virtual DWORD WriteNextNPRNEvents(BYTE* out, int value, tagQuillNPRNBlock* block) const;
    /// Whether a point would be sent; a filter for hosts that list points, which the outputs here do not ask.
    virtual int IsTargetBP(tagBreakPoint point) const;

    /// Sends every point at its own time, but for those in the first presend milliseconds. `info` is the caller's copy:
    /// it is reset and advanced. Returns 1, or 0 when the buffer refused a value.
    int OutputParam(CQuillMidiBuffer* buffer, tagQuillMidiRealtimeInfo* info);
    /// Sends samples of the linearly interpolated curve every `resolution` ticks, equal ones too, and the curve's last
    /// value at the last sample's time when no sample reached it. Returns 1, or 0 without points and when the buffer
    /// refused a value.
    int OutputParamLinear(CQuillMidiBuffer* buffer, tagQuillMidiRealtimeInfo* info, int resolution);
    /// The same sampling into a list, without samples that repeat the one before. 0, with the list as it was, without
    /// points and when memory is short.
    int OutputParamLinear(CBreakPointList* list, int resolution);

protected:
    /// Copies tick and value of every point, in list order. An empty list attaches nothing and succeeds; 0 when memory
    /// is short.
    int AttachBreakPointList(const CBreakPointList* list);
    /// The same with a curve that `draw` puts into an array and whose size it answers, 0 when memory is short.
    template <class Draw>
    int AttachCurve(Draw draw) {
        return Attach([&] {
            CBreakPointArray array;
            if (!draw(array))
                return 0;
            m_points.reserve(static_cast<size_t>(array.GetSize()));
            for (int i = 0; i < array.GetSize(); ++i)
                AttachPoint(array[i]);
            return 1;
        });
    }
    /// Writes one value block at the info's time, not at the point's tick.
    int WriteEvent(CQuillMidiBuffer* buffer, const tagQuillMidiRealtimeInfo* info, tagBreakPoint point);

    struct Point {
        DWORD tick;
        LONG value;
    };
    std::vector<Point> m_points;
    BYTE m_nNumberMsb = 0;

private:
    template <class Take>
    int Attach(Take take) {
        DetachObject();
        try {
            return take();
        } catch (const std::bad_alloc&) {
            DetachObject();
            return 0;
        }
    }
    void AttachPoint(const tagBreakPoint& point);

    enum class Sample { OnGrid, Closing };
    template <class Emit>
    void Walk(int resolution, Emit emit) const;
};
