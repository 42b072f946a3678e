#pragma once

#include "torv/icons/break_point.h"
#include "torv/platform/or_zero.h"

namespace torv {

/// Ticks as a position or a factor of MulDiv: signed, staying at 0x7FFFFFFF beyond it.
LONG SignedTicks(DWORD ticks);

/// A stored point, in ten-thousandths of an icon of `length` ticks, as it stands when the icon begins at `clock`.
tagBreakPoint ExportPoint(const tagBreakPoint& stored, DWORD clock, DWORD length);
/// Fills a list with exported points whose positions count from the icon's start, as ten-thousandths of `length`.
void StoreExported(CBreakPointList& stored, const CBreakPointList& exported, DWORD length);

/// Appends what `make(points)` puts in. The list's count then; 0, with the list as it was, for a null list and when
/// memory is refused. The list may be one that `make` reads.
template <class Make>
int AppendPoints(CBreakPointList* list, Make make) {
    if (!list)
        return 0;
    return OrZero([&] {
        CBreakPointList points;
        make(points);
        list->AddTail(&points);
        return list->GetCount();
    });
}

/// A host's array of points, newly allocated (null and 0 for an empty list), and back. A null array is empty.
tagBreakPoint* NewPointArray(const CBreakPointList& list, WORD& count);
void TakePointArray(CBreakPointList& list, const tagBreakPoint* points, WORD count);

} // namespace torv
