#pragma once

#include "view/roll_view.h"

namespace editor {

/// Below the roll: the track's dynamics or pitch, drawn with the left button, erased with the right one; and the
/// dynamics icons, which count while no dynamics are drawn.
class CurveLane {
public:
    void Draw(Editor& editor, float height);
    bool IsDragging() const { return m_isDragging; }

private:
    CurvePoint PointAt(const Editor& editor, ImVec2 mouse) const;
    void TakeMouse(Editor& editor);
    void DrawCurve(const Editor& editor, ImDrawList& draw) const;
    void DrawMarks(const Editor& editor, ImDrawList& draw) const;
    float XOf(const Editor& editor, uint32_t tick) const;
    float YOf(const Editor& editor, int value) const;

    ImVec2 m_paper;
    ImVec2 m_size;
    CurvePoint m_last; ///< where the stroke was in the frame before
    bool m_isDragging = false;
};

} // namespace editor
