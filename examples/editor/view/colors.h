#pragma once

#include <imgui.h>

/// The editor's few colours in one place, and its lines.
namespace editor {

constexpr ImU32 kInk = IM_COL32(222, 224, 230, 255);
constexpr ImU32 kFaint = IM_COL32(150, 154, 164, 255);
constexpr ImU32 kPaper = IM_COL32(34, 36, 42, 255);
constexpr ImU32 kDarkRow = IM_COL32(29, 31, 36, 255);
constexpr ImU32 kBarLine = IM_COL32(96, 100, 112, 255);
constexpr ImU32 kBeatLine = IM_COL32(62, 66, 76, 255);
constexpr ImU32 kGridLine = IM_COL32(46, 49, 57, 255);
constexpr ImU32 kCursorLine = IM_COL32(240, 200, 90, 255);
constexpr ImU32 kPlayLine = IM_COL32(250, 95, 85, 255);
constexpr ImU32 kLoopArea = IM_COL32(90, 150, 250, 60);
constexpr ImU32 kWhite = IM_COL32(236, 236, 232, 255);
constexpr ImU32 kBlack = IM_COL32(40, 42, 48, 255);

/// A line on whole points: one that is smoothed comes out with gaps where no graphics card draws it.
inline void VerticalLine(ImDrawList& draw, float x, float top, float bottom, ImU32 color) {
    draw.AddRectFilled({x, top}, {x + 1, bottom}, color);
}

/// A track's colour; `strength` 0..1 is how much it stands out.
inline ImU32 TrackColor(size_t track, float strength) {
    const float hue = 0.57F + 0.137F * static_cast<float>(track);
    return ImColor::HSV(hue - static_cast<float>(static_cast<int>(hue)), 0.5F, 0.45F + 0.45F * strength);
}

} // namespace editor
