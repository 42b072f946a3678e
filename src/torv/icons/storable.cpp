#include "torv/icons/storable.h"

#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_vibrato.h"

#include <algorithm>

namespace torv {
namespace {

/// What a line of a file holds.
constexpr int kMostPoints = 7000;
constexpr int kLongestText = 4096;

/// The nearest place at or before `position` that is read as it was written: as a fraction, cut to a whole number.
LONG StorablePosition(LONG position) {
    position = std::max<LONG>(position, 0);
    for (;;) {
        const LONG read = TruncateToLong(static_cast<double>(position) / kIconUnits * kIconUnits);
        if (read == position)
            return position;
        position = read;
    }
}

void MakeStorable(CBreakPointList& curve) {
    int count = 0;
    POSITION at = curve.GetHeadPosition();
    for (; at && count < kMostPoints && curve.GetAt(at).position < kIconUnits; ++count) {
        tagBreakPoint& point = curve.GetNext(at);
        point = {StorablePosition(point.position), point.value, 0};
    }
    while (curve.GetCount() > count)
        curve.RemoveTail();
}

} // namespace

void MakeStorable(CIconObject& icon) {
    OrBadAlloc(icon.SetIDString(icon.GetIDString().Left(kLongestText)));
    OrBadAlloc(icon.SetCaption(icon.GetCaption().Left(kLongestText)));
    if (icon.GetLength() == 0 || icon.GetLength() > 0x7FFFFFFF)
        icon.SetLength(CIconObject::kDefaultLength);
    if (auto* const vibrato = dynamic_cast<CIconVibrato*>(&icon)) {
        vibrato->SetStartDepth(CIconVibrato::NormalizeDepth(vibrato->GetStartDepth()));
        vibrato->SetStartRate(CIconVibrato::NormalizeRate(vibrato->GetStartRate()));
        MakeStorable(*vibrato->GetDepthBPList());
        MakeStorable(*vibrato->GetRateBPList());
    } else if (auto* const dynamics = dynamic_cast<CIconDynamics*>(&icon)) {
        dynamics->NormalizeEnds();
        MakeStorable(*dynamics->GetDynamicsBPList());
    }
}

} // namespace torv
