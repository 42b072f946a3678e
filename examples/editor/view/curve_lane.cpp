#include "view/curve_lane.h"

#include "view/colors.h"

#include <algorithm>

namespace editor {

namespace {

constexpr float kMargin = 6; // above and below the curve

}

float CurveLane::XOf(const Editor& editor, uint32_t tick) const {
    return m_paper.x + static_cast<float>(editor.grid.PointOf(tick) - editor.scroll);
}

float CurveLane::YOf(const Editor& editor, int value) const {
    const CurveRange& range = kCurveRanges[editor.curve];
    const float share = static_cast<float>(value - range.lowest) / static_cast<float>(range.highest - range.lowest);
    return m_paper.y + m_size.y - kMargin - share * (m_size.y - 2 * kMargin);
}

CurvePoint CurveLane::PointAt(const Editor& editor, ImVec2 mouse) const {
    const CurveRange& range = kCurveRanges[editor.curve];
    const float share = (m_paper.y + m_size.y - kMargin - mouse.y) / (m_size.y - 2 * kMargin);
    const int value = range.lowest + static_cast<int>(share * static_cast<float>(range.highest - range.lowest));
    return {editor.grid.TickAt(static_cast<int>(mouse.x - m_paper.x) + editor.scroll),
            std::clamp(value, range.lowest, range.highest)};
}

void CurveLane::Draw(Editor& editor, float height) {
    ImGui::BeginChild("curve", {0, height}, false, ImGuiWindowFlags_NoScrollbar | ImGuiWindowFlags_NoScrollWithMouse);
    ImDrawList& draw = *ImGui::GetWindowDrawList();
    const ImVec2 corner = ImGui::GetCursorScreenPos();
    for (const CurveKind kind : {kDynamics, kPitch})
        if (ImGui::Selectable(kCurveRanges[kind].name, editor.curve == kind, 0, {kKeysWidth - 4, 0}))
            editor.curve = kind;
    m_paper = {corner.x + kKeysWidth, corner.y};
    m_size = {ImGui::GetContentRegionAvail().x - kKeysWidth, height};
    ImGui::SetCursorScreenPos(m_paper);
    ImGui::InvisibleButton("lane", m_size, ImGuiButtonFlags_MouseButtonLeft | ImGuiButtonFlags_MouseButtonRight);
    TakeMouse(editor);
    draw.PushClipRect(m_paper, {m_paper.x + m_size.x, m_paper.y + m_size.y}, true);
    draw.AddRectFilled(m_paper, {m_paper.x + m_size.x, m_paper.y + m_size.y}, kDarkRow);
    const uint32_t from = editor.grid.TickAt(editor.scroll);
    const uint32_t to = editor.grid.TickAt(editor.scroll + static_cast<int>(m_size.x)) + 1;
    for (const Grid::Bar& bar : editor.grid.Bars(from, to))
        VerticalLine(draw, XOf(editor, bar.tick), m_paper.y, m_paper.y + m_size.y, kBarLine);
    DrawCurve(editor, draw);
    DrawMarks(editor, draw);
    draw.PopClipRect();
    ImGui::EndChild();
}

void CurveLane::TakeMouse(Editor& editor) {
    const CurvePoint now = PointAt(editor, ImGui::GetMousePos());
    if (ImGui::IsItemActivated()) {
        m_isDragging = true;
        m_last = now;
        editor.Step(ImGui::IsMouseDown(0) ? "Draw curve" : "Erase curve");
    }
    if (ImGui::IsItemActive() && m_isDragging) {
        Curve& curve = editor.Further().curves[editor.curve];
        if (ImGui::IsMouseDown(0))
            editor::DrawCurve(curve, editor.curve, m_last, now);
        else
            EraseCurve(curve, editor.curve, m_last.tick, now.tick);
        m_last = now;
    }
    if (ImGui::IsItemDeactivated()) {
        editor.history.Settle();
        m_isDragging = false;
    }
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("%s %d", kCurveRanges[editor.curve].name, now.value);
}

/// Steps, as the engine takes them: a point's value holds until the next.
void CurveLane::DrawCurve(const Editor& editor, ImDrawList& draw) const {
    const CurveKind kind = editor.curve;
    const Curve& curve = editor.CurrentTrack().curves[kind];
    const float usual = YOf(editor, kCurveRanges[kind].usual);
    const float right = m_paper.x + m_size.x;
    draw.AddRectFilled({m_paper.x, usual}, {right, usual + 1}, kBeatLine);
    const ImU32 color = TrackColor(editor.track, 0.9F);
    const uint32_t from = editor.grid.TickAt(editor.scroll);
    float x = m_paper.x;
    float y = YOf(editor, ValueAt(curve, kind, from));
    const auto stepTo = [&](float nextX, float nextY) {
        draw.AddRectFilled({x, std::min(y, usual)}, {nextX, std::max(y, usual)}, color & IM_COL32(255, 255, 255, 60));
        draw.AddRectFilled({x, y}, {nextX, y + 2}, color);
        draw.AddRectFilled({nextX, std::min(y, nextY)}, {nextX + 2, std::max(y, nextY) + 2}, color);
        x = nextX;
        y = nextY;
    };
    for (const CurvePoint& point : curve)
        if (point.tick > from && x < right)
            stepTo(XOf(editor, point.tick), YOf(editor, point.value));
    if (!curve.empty())
        stepTo(right, y);
}

void CurveLane::DrawMarks(const Editor& editor, ImDrawList& draw) const {
    const bool isCounting = editor.CurrentTrack().curves[kDynamics].empty();
    for (const Mark& mark : editor.CurrentTrack().marks) {
        const ImVec2 at{XOf(editor, mark.tick), m_paper.y + 2};
        const ImVec2 size = ImGui::CalcTextSize(mark.icon.c_str());
        draw.AddRectFilled(at, {at.x + size.x + 8, at.y + size.y + 2}, isCounting ? kCursorLine : kBeatLine, 3);
        draw.AddText({at.x + 4, at.y + 1}, isCounting ? kBlack : kFaint, mark.icon.c_str());
    }
}

} // namespace editor
