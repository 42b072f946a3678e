#pragma once

#include "torv/platform/platform.h"

#include <cstddef>

/// One point of a curve; its value holds until the next point.
struct tagBreakPoint {
    LONG position; ///< ticks; inside vibrato and dynamics icons ten-thousandths of the icon's length
    SHORT value;   ///< in the unit of the curve's owner
    WORD flags;    ///< kBreakPointEdge or 0
};
static_assert(sizeof(tagBreakPoint) == 8 && offsetof(tagBreakPoint, value) == 4 && offsetof(tagBreakPoint, flags) == 6);

/// Ascending by position; may be empty.
using CBreakPointList = CList<tagBreakPoint, tagBreakPoint&>;
/// The same as an array, into which curves are exported.
using CBreakPointArray = CArray<tagBreakPoint, tagBreakPoint&>;

namespace torv {

/// Marks a start or end point that an export adds.
inline constexpr WORD kBreakPointEdge = 0x8000;
/// What positions inside an icon count to.
inline constexpr int kIconUnits = 10000;
inline constexpr int kBreakPointListBlock = 10; ///< elements that lists of points are made for at a time

} // namespace torv
