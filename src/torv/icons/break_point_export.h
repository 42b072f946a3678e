#pragma once

#include "torv/icons/break_point.h"

namespace torv {

/// Ticks as a position or a factor of MulDiv: signed, staying at 0x7FFFFFFF beyond it.
LONG SignedTicks(DWORD ticks);

/// A stored point, in ten-thousandths of an icon of `length` ticks, as it stands when the icon begins at `clock`.
tagBreakPoint ExportPoint(const tagBreakPoint& stored, DWORD clock, DWORD length);
/// Fills a list with exported points whose positions count from the icon's start, as ten-thousandths of `length`.
void StoreExported(CBreakPointList& stored, const CBreakPointList& exported, DWORD length);

/// A host's array of points, newly allocated (null and 0 for an empty list), and back. A null array is empty.
tagBreakPoint* NewPointArray(const CBreakPointList& list, WORD& count);
void TakePointArray(CBreakPointList& list, const tagBreakPoint* points, WORD count);

} // namespace torv
