#pragma once

#include "torv/score/master_track.h"

/// What a host edits in.
struct tagGridResolution {
    WORD pointsPerQuarter; ///< screen points to a quarter note
    WORD step;             ///< ticks from grid line to grid line
};
static_assert(sizeof(tagGridResolution) == 4 && offsetof(tagGridResolution, step) == 2);

/// A musical position, all from 0. Beats are the signature's denominator notes.
struct tagSongPosition {
    DWORD measure; ///< as the time-signature map counts
    DWORD beat;    ///< from 0, in denominator notes
    DWORD tick;    ///< from 0, within the beat
};
static_assert(sizeof(tagSongPosition) == 12 && offsetof(tagSongPosition, beat) == 4 &&
              offsetof(tagSongPosition, tick) == 8);

namespace torv {

/// A part of the song under one time signature.
struct SignatureStretch {
    /// The stretch that begins with the map's first record, at clock 0.
    explicit SignatureStretch(const tagTimeSignatureMap& first);
    /// What follows when the map's next record begins.
    SignatureStretch Next(const tagTimeSignatureMap& record) const;
    /// The clock of a position counted in this stretch's measures and beats.
    LONGLONG ClockOf(int measure, int beat, int tick) const;

    LONGLONG start = 0;    ///< clock
    int firstMeasure = 0;  ///< the measure that starts there
    int measureLength = 0; ///< ticks; 0 when no signature so far has a length
    int beatLength = 0;    ///< ticks; 0 for a denominator that is no note length
};

} // namespace torv

/// Converts between clocks (ticks, 480 to a quarter note), screen points and musical positions, and snaps clocks to
/// the editing grid and to the quantize unit. It has its own copy of the song's time-signature map.
///
/// Divisions truncate towards zero, so that negative values have negative rests. With any resolution of 0 results and
/// rests are 0; what does not fit its type is the nearest value that does; null rests and offsets are not wanted. Each
/// conversion also stands as a static form with the resolutions as arguments, points to a quarter note first. Musical
/// positions walk the map: a microsecond for a hundred changes.
class TORV_API CGridManager : public CObject {
public:
    /// As after Create().
    CGridManager();
    ~CGridManager() override;

    /// 96 points to a quarter note, grid step and quantize unit of 60 ticks, 4/4 throughout. 1; this and the next two
    /// answer 0, and nothing changes, when memory is short.
    int Create();
    /// 1; 0, and nothing changes, for a null pointer.
    int Create(CMasterTrack* master, const tagGridResolution* grid, WORD quantize);
    /// Copies the master track's signatures, which moves its cursor. 0 for a null track, which changes nothing, and for
    /// one without an event list: then it is 4/4 throughout.
    int Update(CMasterTrack* master);

    /// Null pointers are left alone.
    void SetGridResolution(const tagGridResolution* grid);
    /// Copies points and grid step out.
    void GetGridResolution(tagGridResolution* grid) const;
    /// Ticks of a quantize unit; the functions about units count in it.
    /// @{
    void SetQuantizeResolution(WORD ticks) { m_wQuantize = ticks; }
    WORD GetQuantizeResolution() const { return m_wQuantize; }
    /// @}
    /// The copied signatures, valid until the next Create or Update.
    const CArray<tagTimeSignatureMap>* GetTimeSignatureMap() const { return &m_map; }
    /// The signature in force at a measure: of several changes in one measure the first there, the last from the next
    /// measure on. Before measure 0 it is the song's first.
    tagTimeSignature GetTimeSignature(int measure) const;

    /// Points of a clock, cut to whole ones.
    LONG ClockToScreen(LONG clock) const { return ClockToScreen(clock, m_grid.pointsPerQuarter); }
    /// `rest`: the points that do not make up a whole tick.
    LONG ScreenToClock(LONG points, int* rest) const { return ScreenToClock(points, m_grid.pointsPerQuarter, rest); }
    /// The grid line at or before a clock (towards 0); `rest`: the ticks from there.
    LONG ClockToGrid(LONG clock, int* rest) const { return ClockToGrid(clock, m_grid.step, rest); }
    /// The clock of a grid line, counted from 0.
    LONG GridToClock(LONG grid) const { return GridToClock(grid, m_grid.step); }
    /// `rest`: the points from the grid line to the point.
    LONG ScreenToGrid(LONG points, int* rest) const {
        return ScreenToGrid(points, m_grid.pointsPerQuarter, m_grid.step, rest);
    }
    /// The points of a grid line, counted from 0.
    /// @{
    LONG GridToScreen(LONG grid) const { return GridToScreen(grid, m_grid.pointsPerQuarter, m_grid.step); }
    DWORD GridsToPoints(DWORD grids) const { return UnitsToPoints(grids, m_grid.pointsPerQuarter, m_grid.step); }
    /// @}
    /// Whole quantize units in a clock; `rest`: the ticks beyond them.
    DWORD ClocksToUnits(DWORD clock, int* rest) const { return ClocksToUnits(clock, m_wQuantize, rest); }
    /// Ticks of so many quantize units.
    DWORD UnitsToClocks(DWORD units) const { return UnitsToClocks(units, m_wQuantize); }
    /// Points above 0x7FFFFFFF are negative ones, which count as 0.
    DWORD PointsToUnits(DWORD points, int* rest) const {
        return PointsToUnits(points, m_grid.pointsPerQuarter, m_wQuantize, rest);
    }
    /// Points of so many quantize units.
    DWORD UnitsToPoints(DWORD units) const { return UnitsToPoints(units, m_grid.pointsPerQuarter, m_wQuantize); }

    /// The same with resolutions of the caller's: points to a quarter note, ticks of a grid step or quantize unit.
    /// @{
    static LONG ClockToScreen(LONG clock, WORD pointsPerQuarter);
    static LONG ScreenToClock(LONG points, WORD pointsPerQuarter, int* rest);
    static LONG ClockToGrid(LONG clock, WORD step, int* rest);
    static LONG GridToClock(LONG grid, WORD step);
    static LONG ScreenToGrid(LONG points, WORD pointsPerQuarter, WORD step, int* rest);
    static LONG GridToScreen(LONG grid, WORD pointsPerQuarter, WORD step);
    static DWORD ClocksToUnits(DWORD clock, WORD quantize, int* rest);
    static DWORD UnitsToClocks(DWORD units, WORD quantize);
    static DWORD PointsToUnits(DWORD points, WORD pointsPerQuarter, WORD quantize, int* rest);
    static DWORD UnitsToPoints(DWORD units, WORD pointsPerQuarter, WORD quantize);
    /// @}

    /// A clock at a change belongs to the new signature. Clocks above 0x7FFFFFFF are negative ones, and so then are the
    /// numbers of their position.
    void ClockToSongPosition(DWORD clock, tagSongPosition& position) const;
    /// Takes back what ClockToSongPosition gives, but for a measure that starts with a change: its start is right,
    /// while its beats count as long as those before the change. Negative numbers count back from 0.
    LONG SongPositionToClock(const tagSongPosition& position) const;
    /// The same from three numbers, all from 0.
    LONG SongPositionToClock(int measure, int beat, int tick) const;
    /// The same over any map. Null and empty maps are 4/4 throughout.
    static LONG SongPositionToClock(const CArray<tagTimeSignatureMap>* map, int measure, int beat, int tick);
    /// Points above 0x7FFFFFFF are negative ones, which count as 0.
    void ScreenToSongPosition(DWORD points, tagSongPosition& position) const;
    /// The points at which a position, counted from 0, is drawn.
    /// @{
    LONG SongPositionToScreen(const tagSongPosition& position) const;
    LONG SongPositionToScreen(int measure, int beat, int tick) const;
    /// @}
    /// The measure at a point, and in `offset` the points from its start; points as in ScreenToSongPosition.
    int PointInMeasure(DWORD points, int* offset) const;

private:
    tagGridResolution m_grid{};
    WORD m_wQuantize = 0;
    CArray<tagTimeSignatureMap> m_map;
};
