#pragma once

#include "document.h"

#include <torv/torv.h>

namespace editor {

/// Where ticks lie on the screen, and where bars, beats and grid lines are: the library's grid manager, kept in step
/// with the document's measures. Points count from the song's start; scrolling is the view's.
class Grid {
public:
    Grid();
    /// To be called when the measures may have changed.
    void Update(const Document& document);

    uint32_t Step() const { return m_step; } ///< ticks from one grid line to the next
    void SetStep(uint32_t ticks);
    int Zoom() const { return m_zoom; } ///< points to a quarter note
    void SetZoom(int points);

    int PointOf(uint32_t tick) const { return m_manager.ClockToScreen(static_cast<LONG>(tick)); }
    /// Points before the song's start are tick 0.
    uint32_t TickAt(int point) const;
    /// The nearest grid line, and the one at or before a tick.
    uint32_t Snap(uint32_t tick) const { return SnapDown(tick + m_step / 2); }
    uint32_t SnapDown(uint32_t tick) const;

    struct Bar {
        uint32_t tick;
        uint32_t end;
        int number;    ///< from 1
        uint32_t beat; ///< ticks
    };
    /// The bars that have anything in [from, to).
    std::vector<Bar> Bars(uint32_t from, uint32_t to) const;
    /// "3.2.120": bar, beat, ticks.
    std::string PositionText(uint32_t tick) const;

private:
    void Apply();

    CGridManager m_manager;
    uint32_t m_step = kQuarter / 2;
    int m_zoom = 96;
};

} // namespace editor
