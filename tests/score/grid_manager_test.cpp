#include "torv/score/grid_manager.h"
#include "torv/score/sequence_object.h"

#include "allocation_failure.h"
#include "values.h"

#include <doctest/doctest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

constexpr LONG kMax = 0x7FFFFFFF;
constexpr LONG kMin = -kMax - 1;

struct Signatures : CMasterTrack {
    explicit Signatures(tagTimeSignature initial = {}) {
        Create();
        SetInitialTimeSig(initial);
    }
    /// `delta` ticks after the change before.
    void Change(DWORD delta, DWORD numerator, DWORD exponent) {
        tagMasterEventEntry entry{delta, torv::kEventTimeSignature, 0, numerator | exponent << 8, 0};
        CHECK(AddEvent(&entry) == 1);
    }
};

CGridManager GridOver(Signatures& master) {
    CGridManager grid;
    CHECK(grid.Update(&master) == 1);
    return grid;
}

/// "measure beat tick" at a clock.
std::string At(const CGridManager& grid, LONG clock) {
    tagSongPosition position{9, 9, 9};
    grid.ClockToSongPosition(static_cast<DWORD>(clock), position);
    return Values(static_cast<LONG>(position.measure), static_cast<LONG>(position.beat),
                  static_cast<LONG>(position.tick));
}

/// "3/4"
std::string SignatureAt(const CGridManager& grid, int measure) {
    const tagTimeSignature signature = grid.GetTimeSignature(measure);
    return std::to_string(signature.numerator) + '/' + std::to_string(1 << signature.denominatorExponent);
}

using Grid = CGridManager;

} // namespace

TEST_CASE("grid: clocks, points, grid lines and units, worked by hand") {
    int a = 7, b = 7, c = 7; // rests
    CHECK(Values(Grid::ClockToScreen(480, 96), Grid::ClockToScreen(100, 96), Grid::ClockToScreen(-61, 96),
                 Grid::ClockToScreen(100, 0)) == "96 20 -12 0");
    CHECK(Values(Grid::ClockToScreen(kMax, 96), Grid::ClockToScreen(kMax, 65535), Grid::ClockToScreen(kMin, 65535)) ==
          "429496729 2147483647 -2147483648");
    CHECK(Values{Grid::ScreenToClock(97, 96, &a), a, Grid::ScreenToClock(-97, 96, &b), b} == "485 0 -485 0");
    CHECK(Values{Grid::ScreenToClock(7, 1000, &a), a, Grid::ScreenToClock(-7, 1000, &b), b} == "3 1 -3 -1");
    // 65534 x 480 / 65535 = 479.99; 65535 x 479 / 480 = 65398.47
    CHECK(Values{Grid::ScreenToClock(65534, 65535, &a), a} == "479 136");
    CHECK(Values(Grid::ScreenToClock(kMax, 1, nullptr), Grid::ScreenToClock(kMin, 1, nullptr)) ==
          "2147483647 -2147483648");
    CHECK(Values{Grid::ClockToGrid(-61, 60, &a), a, Grid::ClockToGrid(119, 60, &b), b} == "-1 -1 1 59");
    CHECK(Values{Grid::ScreenToGrid(30, 96, 60, &a), a, Grid::ScreenToGrid(257, 1000, 60, &b), b,
                 Grid::ScreenToGrid(-257, 1000, 60, &c), c} == "2 6 2 7 -2 -7"); // 30: tick 150, 30 ticks after line 2
    CHECK(Values{Grid::PointsToUnits(30, 96, 60, &a), a, Grid::PointsToUnits(0xFFFFFFF0, 96, 60, &b), b} == "2 6 0 0");
    CHECK(Values{Grid::ClocksToUnits(0xFFFFFFFF, 60, &a), a} == "71582788 15"); // clocks of units are unsigned
    CHECK(Values(Grid::GridToScreen(2, 1000, 60), Grid::GridToClock(kMax, 60), Grid::GridToClock(kMin, 60)) ==
          "250 2147483647 -2147483648");
    CHECK(Values(Grid::UnitsToClocks(~0U, 60), Grid::UnitsToPoints(~0U, 96, 60)) == "4294967295 429496729");
    int rests[] = {7, 7, 7, 7, 7, 7}; // without a resolution there is neither result nor rest
    CHECK(Values{Grid::ScreenToClock(97, 0, &rests[0]), Grid::ClockToGrid(100, 0, &rests[1]),
                 Grid::ScreenToGrid(101, 0, 60, &rests[2]), Grid::ScreenToGrid(101, 96, 0, &rests[3]),
                 Grid::ClocksToUnits(100, 0, &rests[4]), Grid::PointsToUnits(101, 96, 0, &rests[5]), rests[0], rests[1],
                 rests[2], rests[3], rests[4], rests[5]} == "0 0 0 0 0 0 0 0 0 0 0 0");
}

TEST_CASE("grid: the resolutions, the song's signatures, null pointers") {
    const auto show = [](const Grid& grid) {
        tagGridResolution resolution{};
        grid.GetGridResolution(&resolution);
        int rests[5] = {};
        return Values(resolution.pointsPerQuarter, resolution.step, grid.GetQuantizeResolution(), SignatureAt(grid, 3),
                      "|", grid.ClockToScreen(480), grid.ScreenToClock(50, &rests[0]), grid.ClockToGrid(100, &rests[1]),
                      grid.GridToClock(2), grid.ScreenToGrid(50, &rests[2]), grid.GridToScreen(2),
                      grid.GridsToPoints(2), "|", grid.ClocksToUnits(100, &rests[3]), grid.UnitsToClocks(2),
                      grid.PointsToUnits(50, &rests[4]), grid.UnitsToPoints(2), "|", rests[0], rests[1], rests[2],
                      rests[3], rests[4]);
    };
    const std::string plain = "96 60 60 4/4 | 96 250 1 120 4 24 24 | 1 120 4 24 | 0 40 2 40 2";
    Grid grid;
    CHECK(show(grid) == plain);
    Signatures master({3, 2});
    const tagGridResolution resolution{200, 30};
    CHECK(grid.Create(&master, &resolution, 15) == 1);
    const std::string changed = "200 30 15 3/4 | 200 120 3 60 4 25 25 | 6 30 8 12 | 0 10 0 10 0";
    CHECK(show(grid) == changed);
    CHECK(Values(grid.Create(nullptr, &resolution, 1), grid.Create(&master, nullptr, 1), grid.Update(nullptr)) ==
          "0 0 0");
    grid.SetGridResolution(nullptr);
    grid.GetGridResolution(nullptr);
    CHECK(show(grid) == changed);
    const tagGridResolution standard{96, 60};
    grid.SetGridResolution(&standard);
    grid.SetQuantizeResolution(60);
    master.Change(1440, 4, 2); // not seen before Update
    CHECK(Values{SignatureAt(grid, 3), grid.Update(&master), show(grid)} == "3/4 1 " + plain);
    FailEachAllocation([&](AllocationFailure& failure) {
        Grid other;
        master.SetInitialTimeSig({5, 2});
        const int done = failure.During([&] { return other.Create(&master, &resolution, 15); });
        CHECK(done == !failure.HasHappened());
        CHECK(SignatureAt(other, 0) == (done ? "5/4" : "4/4"));
        CHECK(other.GetQuantizeResolution() == (done ? 15 : 60));
    });
    CHECK(Values{grid.Create(&master, &resolution, 15), grid.Create(), show(grid)} == "1 1 " + plain);
    CMasterTrack uncreated;
    CHECK(grid.Update(&uncreated) == 0);
    CHECK(grid.GetTimeSignatureMap()->IsEmpty()); // which is 4/4 throughout
    CHECK(Values(SignatureAt(grid, 5), At(grid, 2400), grid.SongPositionToClock(1, 1, 0),
                 Grid::SongPositionToClock(nullptr, 1, 1, 0)) == "4/4 1 1 0 2400 2400");
}

TEST_CASE("grid: song positions, worked by hand") {
    const Grid plain;
    CHECK(At(plain, 2400) == "1 1 0");
    CHECK(At(plain, -2420) == "-1 -1 -20"); // -1920 - 480 - 20
    CHECK(Values(plain.SongPositionToClock(kMax, kMax, kMax), plain.SongPositionToClock(kMin, 0, 0)) ==
          "2147483647 -2147483648");
    tagSongPosition position{9, 9, 9};
    plain.ScreenToSongPosition(500, position); // tick 2500
    CHECK(Values(position.measure, position.beat, position.tick) == "1 1 100");
    CHECK(Values(plain.SongPositionToScreen(position), plain.SongPositionToScreen(1, 1, 100)) == "500 500");
    plain.ScreenToSongPosition(static_cast<DWORD>(-500), position);
    CHECK(Values(position.measure, position.beat, position.tick) == "0 0 0");
    int a = 7, b = 7; // points from the measure's start
    CHECK(Values{plain.PointInMeasure(500, &a), a, plain.PointInMeasure(0x80000000, &b), b,
                 plain.PointInMeasure(500, nullptr)} == "1 116 0 0 1");
    Grid flat;
    const tagGridResolution none{0, 60};
    flat.SetGridResolution(&none);
    CHECK(Values{flat.PointInMeasure(101, &a), a} == "0 0");

    struct Change {
        DWORD delta, numerator, exponent;
    };
    struct Song {
        tagTimeSignature initial;
        std::vector<Change> changes;
        std::vector<std::pair<LONG, const char*>> clocks; // both ways
        std::vector<std::pair<int, const char*>> signatures;
    };
    const Song songs[] = {
        {{4, 2},
         {{3840, 3, 3}},
         {{3839, "1 3 479"}, {3840, "2 0 0"}, {4800, "3 1 0"}},
         {{-1, "4/4"}, {1, "4/4"}, {2, "3/8"}, {9, "3/8"}}},
        {{4, 2},
         {{100, 3, 2}, {100, 2, 2}},
         {{50, "0 0 50"}, {1000, "1 0 40"}},
         {{0, "4/4"}, {1, "2/4"}}}, // in one measure
        {{4, 2},
         {{3840, 0, 2}, {3840, 3, 9}},
         {{6260, "3 1 20"}, {8180, "4 0 500"}},
         {}}, // no lengths: the old one stays
        {{0, 2}, {}, {{5000, "0 0 5000"}}, {}},
        // 15 ticks to a measure; the changes at measures 65000 and 66000, which is 464: it counts from -961080, 464 -
        // 65000 measures of 30 before 975000.
        {{1, 7},
         {{975000, 2, 7}, {30000, 1, 7}},
         {{10, "0 0 10"}, {15000, "1000 0 0"}},
         {{1000, "1/128"}, {65000, "2/128"}}},
    };
    for (const Song& song : songs) {
        Signatures master(song.initial);
        for (const Change& change : song.changes)
            master.Change(change.delta, change.numerator, change.exponent);
        const Grid grid = GridOver(master);
        for (const auto& [clock, text] : song.clocks) {
            CAPTURE(clock);
            CHECK(At(grid, clock) == text);
            grid.ClockToSongPosition(static_cast<DWORD>(clock), position);
            CHECK(grid.SongPositionToClock(position) == clock);
        }
        for (const auto& [measure, signature] : song.signatures)
            CHECK(SignatureAt(grid, measure) == signature);
        if (&song == std::end(songs) - 1)
            CHECK(At(grid, 1000000) == Values(464 + 130738, 0, 10));
        if (&song == songs) { // a measure that starts with a change: its start is right, its beats are the old ones
            CHECK(grid.SongPositionToClock(2, 0, 0) == 3840);
            CHECK(grid.SongPositionToClock(2, 1, 0) == 4320);
            CHECK(At(grid, 4320) == "2 2 0");
        }
    }
}
