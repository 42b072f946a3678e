#include "grid.h"

#include <algorithm>

namespace editor {

Grid::Grid() {
    m_manager.Create();
    Apply();
}

/// The manager copies a master track's measures, so one that is only made for that will do.
void Grid::Update(const Document& document) {
    CMasterTrack master;
    master.Create();
    const MeterChange& first = document.meters.front();
    master.SetInitialTimeSig({static_cast<BYTE>(first.numerator), static_cast<BYTE>(first.denominatorExponent)});
    uint32_t before = 0;
    for (const MeterChange& meter : document.meters) {
        tagMasterEventEntry entry{};
        entry.delta = meter.tick - before;
        entry.type = torv::kEventTimeSignature;
        entry.value = static_cast<DWORD>(meter.numerator | meter.denominatorExponent << 8);
        master.AddEvent(&entry);
        before = meter.tick;
    }
    m_manager.Update(&master);
}

void Grid::Apply() {
    const tagGridResolution resolution{static_cast<WORD>(m_zoom), static_cast<WORD>(m_step)};
    m_manager.SetGridResolution(&resolution);
}

void Grid::SetStep(uint32_t ticks) {
    m_step = std::clamp<uint32_t>(ticks, kQuarter / 16, 4 * kQuarter);
    Apply();
}

void Grid::SetZoom(int points) {
    m_zoom = std::clamp(points, 12, 960);
    Apply();
}

uint32_t Grid::TickAt(int point) const {
    int rest = 0;
    return static_cast<uint32_t>(std::max<LONG>(m_manager.ScreenToClock(point, &rest), 0));
}

uint32_t Grid::SnapDown(uint32_t tick) const {
    int rest = 0;
    return static_cast<uint32_t>(m_manager.GridToClock(m_manager.ClockToGrid(static_cast<LONG>(tick), &rest)));
}

std::vector<Grid::Bar> Grid::Bars(uint32_t from, uint32_t to) const {
    std::vector<Bar> bars;
    tagSongPosition position{};
    m_manager.ClockToSongPosition(from, position);
    auto measure = static_cast<int>(position.measure);
    auto tick = static_cast<uint32_t>(m_manager.SongPositionToClock(measure, 0, 0));
    while (tick < to) {
        const auto next = static_cast<uint32_t>(m_manager.SongPositionToClock(measure + 1, 0, 0));
        if (next <= tick)
            break; // a signature without a length
        const uint32_t beat = 4 * kQuarter >> m_manager.GetTimeSignature(measure).denominatorExponent;
        bars.push_back({tick, next, ++measure, beat});
        tick = next;
    }
    return bars;
}

std::string Grid::PositionText(uint32_t tick) const {
    tagSongPosition position{};
    m_manager.ClockToSongPosition(tick, position);
    return std::to_string(position.measure + 1) + "." + std::to_string(position.beat + 1) + "." +
           std::to_string(position.tick);
}

} // namespace editor
