#include "torv/score/grid_manager.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr LONG kQuarter = torv::kTicksPerQuarter;
constexpr LONG kMaxLong = std::numeric_limits<LONG>::max();

LONG ToLong(LONGLONG value) {
    return static_cast<LONG>(std::clamp<LONGLONG>(value, std::numeric_limits<LONG>::min(), kMaxLong));
}

LONG NotNegative(DWORD points) { return std::max<LONG>(static_cast<LONG>(points), 0); }

void SetRest(int* rest, int value) {
    if (rest)
        *rest = value;
}

} // namespace

CGridManager::CGridManager() { CGridManager::Create(); }
CGridManager::~CGridManager() = default;

int CGridManager::Create() {
    CArray<tagTimeSignatureMap> map;
    try {
        map.Add({0, {}});
    } catch (const std::bad_alloc&) {
        return 0;
    }
    m_grid = {96, 60};
    m_wQuantize = 60;
    m_map = std::move(map);
    return 1;
}

int CGridManager::Create(CMasterTrack* master, const tagGridResolution* grid, WORD quantize) {
    if (!master || !grid || (!Update(master) && master->IsCreated()))
        return 0;
    m_grid = *grid;
    m_wQuantize = quantize;
    return 1;
}

int CGridManager::Update(CMasterTrack* master) {
    if (!master)
        return 0;
    CArray<tagTimeSignatureMap> map;
    const int done = master->GetTimeSignatureMap(map);
    if (done || !master->IsCreated())
        m_map = std::move(map);
    return done;
}

void CGridManager::SetGridResolution(const tagGridResolution* grid) {
    if (grid)
        m_grid = *grid;
}

void CGridManager::GetGridResolution(tagGridResolution* grid) const {
    if (grid)
        *grid = m_grid;
}

LONG CGridManager::ClockToScreen(LONG clock, WORD pointsPerQuarter) {
    const LONG rest = clock % kQuarter * pointsPerQuarter / kQuarter;
    return ToLong(static_cast<LONGLONG>(clock / kQuarter) * pointsPerQuarter + rest);
}

LONG CGridManager::ScreenToClock(LONG points, WORD pointsPerQuarter, int* rest) {
    SetRest(rest, 0);
    if (!pointsPerQuarter)
        return 0;
    const LONG left = points % pointsPerQuarter;
    const LONG ticks = left * kQuarter / pointsPerQuarter;
    SetRest(rest, static_cast<int>(left - pointsPerQuarter * ticks / kQuarter));
    return ToLong(static_cast<LONGLONG>(points / pointsPerQuarter) * kQuarter + ticks);
}

LONG CGridManager::ClockToGrid(LONG clock, WORD step, int* rest) {
    SetRest(rest, step ? static_cast<int>(clock % step) : 0);
    return step ? clock / step : 0;
}

LONG CGridManager::GridToClock(LONG grid, WORD step) { return ToLong(static_cast<LONGLONG>(grid) * step); }

LONG CGridManager::ScreenToGrid(LONG points, WORD pointsPerQuarter, WORD step, int* rest) {
    SetRest(rest, 0);
    if (!step)
        return 0;
    const LONG clock = ScreenToClock(points, pointsPerQuarter, rest);
    if (rest)
        *rest += static_cast<int>(ClockToScreen(clock % step, pointsPerQuarter));
    return clock / step;
}

LONG CGridManager::GridToScreen(LONG grid, WORD pointsPerQuarter, WORD step) {
    return ClockToScreen(GridToClock(grid, step), pointsPerQuarter);
}

DWORD CGridManager::ClocksToUnits(DWORD clock, WORD quantize, int* rest) {
    SetRest(rest, quantize ? static_cast<int>(clock % quantize) : 0);
    return quantize ? clock / quantize : 0;
}

DWORD CGridManager::UnitsToClocks(DWORD units, WORD quantize) {
    return static_cast<DWORD>(std::min<uint64_t>(static_cast<uint64_t>(units) * quantize, 0xFFFFFFFF));
}

DWORD CGridManager::PointsToUnits(DWORD points, WORD pointsPerQuarter, WORD quantize, int* rest) {
    return static_cast<DWORD>(ScreenToGrid(NotNegative(points), pointsPerQuarter, quantize, rest));
}

DWORD CGridManager::UnitsToPoints(DWORD units, WORD pointsPerQuarter, WORD quantize) {
    const LONG clock = ToLong(static_cast<LONGLONG>(UnitsToClocks(units, quantize)));
    return static_cast<DWORD>(ClockToScreen(clock, pointsPerQuarter));
}

void CGridManager::ScreenToSongPosition(DWORD points, tagSongPosition& position) const {
    ClockToSongPosition(static_cast<DWORD>(ScreenToClock(NotNegative(points), nullptr)), position);
}

LONG CGridManager::SongPositionToScreen(const tagSongPosition& position) const {
    return ClockToScreen(SongPositionToClock(position));
}

LONG CGridManager::SongPositionToScreen(int measure, int beat, int tick) const {
    return ClockToScreen(SongPositionToClock(measure, beat, tick));
}

int CGridManager::PointInMeasure(DWORD points, int* offset) const {
    tagSongPosition position;
    ScreenToSongPosition(points, position);
    const int measure = static_cast<int>(position.measure);
    if (offset && !m_grid.pointsPerQuarter)
        *offset = 0;
    else if (offset)
        *offset =
            static_cast<int>(ToLong(static_cast<LONGLONG>(NotNegative(points)) - SongPositionToScreen(measure, 0, 0)));
    return measure;
}
