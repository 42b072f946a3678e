#include "torv/icons/break_point_export.h"

#include "torv/platform/arithmetic.h"

#include <algorithm>

namespace torv {

LONG SignedTicks(DWORD ticks) { return static_cast<LONG>(std::min<DWORD>(ticks, 0x7FFFFFFF)); }

tagBreakPoint ExportPoint(const tagBreakPoint& stored, DWORD clock, DWORD length) {
    const int offset = MulDiv(stored.position, SignedTicks(length), kIconUnits);
    return {static_cast<LONG>(clock + static_cast<DWORD>(offset)), stored.value, stored.flags};
}

void StoreExported(CBreakPointList& stored, const CBreakPointList& exported, DWORD length) {
    stored.RemoveAll();
    for (POSITION at = exported.GetHeadPosition(); at;) {
        tagBreakPoint point = exported.GetNext(at);
        point.position = MulDiv(point.position, kIconUnits, SignedTicks(length));
        stored.AddTail(point);
    }
}

tagBreakPoint* NewPointArray(const CBreakPointList& list, WORD& count) {
    count = static_cast<WORD>(list.GetCount() < 0xFFFF ? list.GetCount() : 0xFFFF);
    if (count == 0)
        return nullptr;
    auto* const points = new tagBreakPoint[count];
    POSITION at = list.GetHeadPosition();
    for (WORD i = 0; i < count; ++i)
        points[i] = list.GetNext(at);
    return points;
}

void TakePointArray(CBreakPointList& list, const tagBreakPoint* points, WORD count) {
    list.RemoveAll();
    for (WORD i = 0; points && i < count; ++i) {
        tagBreakPoint point = points[i];
        list.AddTail(point);
    }
}

} // namespace torv
