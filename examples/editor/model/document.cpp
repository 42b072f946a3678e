#include "document.h"

#include <algorithm>

namespace editor {

uint32_t EndOf(const Document& document) {
    uint32_t end = 0;
    for (const Track& track : document.tracks)
        for (const Note& note : track.notes)
            end = std::max(end, note.End());
    return end;
}

bool IsHeard(const Document& document, const Track& track) {
    const bool isAnySolo =
        std::any_of(document.tracks.begin(), document.tracks.end(), [](const Track& each) { return each.isSolo; });
    return !track.isMuted && (track.isSolo || !isAnySolo);
}

int ValueAt(const Curve& curve, CurveKind kind, uint32_t tick) {
    const auto next = std::upper_bound(curve.begin(), curve.end(), tick,
                                       [](uint32_t at, const CurvePoint& point) { return at < point.tick; });
    return next == curve.begin() ? kCurveRanges[kind].usual : std::prev(next)->value;
}

} // namespace editor
