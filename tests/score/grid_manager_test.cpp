#include "torv/score/grid_manager.h"
#include "torv/score/sequence_object.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <random>
#include <vector>

namespace {

constexpr LONG kMax = 0x7FFFFFFF;
constexpr LONG kMin = -kMax - 1;

struct Master : CMasterTrack {
    explicit Master(tagTimeSignature initial = {}) {
        Create();
        SetInitialTimeSig(initial);
    }
    /// `delta` ticks after the change before.
    void Change(DWORD delta, DWORD numerator, DWORD exponent) {
        tagMasterEventEntry entry{delta, torv::kEventTimeSignature, 0, numerator | exponent << 8, 0};
        CHECK(AddEvent(&entry) == 1);
    }
};

CGridManager GridOver(Master& master) {
    CGridManager grid;
    CHECK(grid.Update(&master) == 1);
    return grid;
}

using Position = std::array<DWORD, 3>;

Position At(const CGridManager& grid, DWORD clock) {
    tagSongPosition position{9, 9, 9};
    grid.ClockToSongPosition(clock, position);
    return {position.measure, position.beat, position.tick};
}

LONG Back(const CGridManager& grid, const Position& position) {
    return grid.SongPositionToClock(tagSongPosition{position[0], position[1], position[2]});
}

int SignatureAt(const CGridManager& grid, int measure) {
    const tagTimeSignature signature = grid.GetTimeSignature(measure);
    return signature.numerator * 100 + (1 << signature.denominatorExponent);
}

int Random(std::mt19937& random, int low, int high) {
    return low + static_cast<int>(random() % (static_cast<DWORD>(high - low) + 1));
}

/// Changes at bar lines and off them, some without a length, and now and then several in one measure.
void FillRandomly(Master& master, std::mt19937& random) {
    master.SetInitialTimeSig({static_cast<BYTE>(Random(random, 1, 9)), static_cast<BYTE>(Random(random, 0, 7))});
    int measure = 1920;
    for (int changes = Random(random, 0, 60); changes > 0; --changes) {
        const int numerator = Random(random, 0, 12);
        const int exponent = Random(random, 0, 8);
        const int delta = random() % 2 ? Random(random, 1, 4) * measure : Random(random, 1, 5000);
        master.Change(static_cast<DWORD>(delta), static_cast<DWORD>(numerator), static_cast<DWORD>(exponent));
        measure = std::max(1, CSequenceObject::CalcMeasureClock(numerator, exponent));
    }
}

} // namespace

TEST_CASE("grid: clocks and points, worked by hand") {
    struct Row {
        LONG from;
        WORD points;
        LONG to;
        int rest = 0;
    };
    for (const Row& row : {Row{480, 96, 96}, Row{100, 96, 20}, Row{-61, 96, -12}, Row{100, 0, 0},
                           Row{kMax, 96, 429496729}, Row{kMax, 65535, kMax}, Row{kMin, 65535, kMin}}) {
        CAPTURE(row.from);
        CHECK(CGridManager::ClockToScreen(row.from, row.points) == row.to);
    }
    for (const Row& row : {Row{97, 96, 485}, Row{-97, 96, -485}, Row{7, 1000, 3, 1}, Row{-7, 1000, -3, -1},
                           Row{97, 0, 0}, Row{kMax, 1, kMax}, Row{kMin, 1, kMin}}) {
        CAPTURE(row.from);
        int rest = 77;
        CHECK(CGridManager::ScreenToClock(row.from, row.points, &rest) == row.to);
        CHECK(rest == row.rest);
    }
}

TEST_CASE("grid: grid lines and units, worked by hand") {
    CGridManager grid;
    int rest = 0;
    CHECK((grid.ClockToGrid(-61, &rest) == -1 && rest == -1));
    CHECK((grid.ScreenToGrid(30, &rest) == 2 && rest == 6)); // tick 150: 30 after line 2
    CHECK((CGridManager::ScreenToGrid(257, 1000, 60, &rest) == 2 && rest == 1 + 6));
    CHECK((CGridManager::ScreenToGrid(-257, 1000, 60, &rest) == -2 && rest == -7));
    CHECK((grid.GridToScreen(-3) == -36 && grid.GridsToPoints(3) == 36 && grid.UnitsToPoints(3) == 36));
    CHECK(CGridManager::GridToScreen(2, 1000, 60) == 250);
    CHECK((grid.ClocksToUnits(0xFFFFFFFF, &rest) == 71582788 && rest == 15)); // clocks of units are unsigned
    CHECK((grid.PointsToUnits(18, &rest) == 1 && rest == 6));
    CHECK((grid.PointsToUnits(0xFFFFFFF0, &rest) == 0 && rest == 0));
    CHECK((grid.GridToClock(kMax) == kMax && grid.GridToClock(kMin) == kMin && grid.UnitsToClocks(~0U) == ~0U));
    CHECK((grid.GridsToPoints(~0U) == 429496729 && grid.UnitsToPoints(~0U) == 429496729)); // the last clock's

    int rests[] = {7, 7, 7, 7, 7, 7};
    CHECK(CGridManager::ClockToGrid(100, 0, &rests[0]) == 0);
    CHECK(CGridManager::ScreenToGrid(101, 96, 0, &rests[1]) == 0);
    CHECK(CGridManager::ScreenToGrid(101, 0, 60, &rests[2]) == 0);
    CHECK(CGridManager::ClocksToUnits(100, 0, &rests[3]) == 0);
    CHECK(CGridManager::PointsToUnits(101, 96, 0, &rests[4]) == 0);
    const tagGridResolution flat{0, 60};
    grid.SetGridResolution(&flat);
    CHECK((grid.PointInMeasure(101, &rests[5]) == 0 && grid.GridToScreen(5) == 0));
    CHECK(std::all_of(std::begin(rests), std::end(rests), [](int value) { return value == 0; }));
}

TEST_CASE("grid: defaults, copies of the song's signatures, null pointers") {
    CGridManager grid;
    for (int i = 0; i < 2; ++i) {
        tagGridResolution resolution{};
        grid.GetGridResolution(&resolution);
        CHECK((resolution.pointsPerQuarter == 96 && resolution.step == 60 && grid.GetQuantizeResolution() == 60));
        CHECK((grid.GetTimeSignatureMap()->GetSize() == 1 && SignatureAt(grid, 3) == 404));
        Master master({3, 2});
        resolution = {200, 30};
        CHECK(grid.Create(&master, &resolution, 15) == 1);
        master.Change(1440, 2, 2); // not seen before Update
        CHECK((SignatureAt(grid, 3) == 304 && grid.ClockToScreen(480) == 200 && grid.GridToClock(2) == 60));
        CHECK((grid.Update(&master) == 1 && SignatureAt(grid, 3) == 204 && grid.UnitsToClocks(2) == 30));
        CHECK((grid.Create(nullptr, &resolution, 1) == 0 && grid.Create(&master, nullptr, 1) == 0));
        CHECK((grid.Update(nullptr) == 0 && SignatureAt(grid, 3) == 204 && grid.UnitsToClocks(2) == 30));
        grid.SetGridResolution(nullptr);
        grid.GetGridResolution(nullptr);
        CHECK(grid.Create() == 1);
    }
    CMasterTrack uncreated;
    CHECK((grid.Update(&uncreated) == 0 && grid.GetTimeSignatureMap()->IsEmpty()));
    CHECK((SignatureAt(grid, 5) == 404 && At(grid, 2400) == Position{1, 1, 0}));
    CHECK((grid.SongPositionToClock(1, 1, 0) == 2400 && CGridManager::SongPositionToClock(nullptr, 1, 1, 0) == 2400));
}

TEST_CASE("grid: song positions, worked by hand") {
    const CGridManager plain;
    CHECK(At(plain, 2400) == Position{1, 1, 0});
    CHECK(At(plain, static_cast<DWORD>(-2420)) == Position{~0U, ~0U, static_cast<DWORD>(-20)}); // -1920 - 480 - 20
    int offset = 0;
    CHECK((plain.PointInMeasure(500, &offset) == 1 && offset == 116 && plain.PointInMeasure(500, nullptr) == 1));
    CHECK((plain.PointInMeasure(0x80000000, &offset) == 0 && offset == 0));
    tagSongPosition position{9, 9, 9};
    plain.ScreenToSongPosition(static_cast<DWORD>(-500), position);
    CHECK((position.measure == 0 && position.beat == 0 && position.tick == 0));
    plain.ScreenToSongPosition(500, position); // tick 2500
    CHECK((position.measure == 1 && position.beat == 1 && position.tick == 100));
    CHECK((plain.SongPositionToScreen(position) == 500 && plain.SongPositionToScreen(1, 1, 100) == 500));
    CHECK((plain.SongPositionToClock(kMax, kMax, kMax) == kMax && plain.SongPositionToClock(kMin, 0, 0) == kMin));

    Master changing;
    changing.Change(3840, 3, 3);
    const CGridManager changed = GridOver(changing);
    CHECK((At(changed, 3839) == Position{1, 3, 479} && At(changed, 3840) == Position{2, 0, 0}));
    CHECK((At(changed, 4320) == Position{2, 2, 0} && At(changed, 4800) == Position{3, 1, 0}));
    CHECK(changed.SongPositionToClock(2, 0, 0) == 3840);
    CHECK(changed.SongPositionToClock(2, 1, 0) == 4320); // a quarter beat, from 4/4
    CHECK(changed.SongPositionToClock(3, 1, 0) == 4800); // eighths from the next measure on
    CHECK(std::array{SignatureAt(changed, -1), SignatureAt(changed, 1), SignatureAt(changed, 2),
                     SignatureAt(changed, 9)} == std::array{404, 404, 308, 308});

    Master crowded; // three signatures in measure 0
    crowded.Change(100, 3, 2);
    crowded.Change(100, 2, 2);
    const CGridManager several = GridOver(crowded);
    CHECK((SignatureAt(several, 0) == 404 && SignatureAt(several, 1) == 204));
    CHECK((At(several, 1000) == Position{1, 0, 40} && several.SongPositionToClock(1, 0, 40) == 1000));
}

TEST_CASE("grid: a signature without a length keeps the length in force") {
    Master broken;
    broken.Change(3840, 0, 2);
    broken.Change(3840, 3, 9);
    const CGridManager grid = GridOver(broken);
    CHECK((At(grid, 6260) == Position{3, 1, 20} && grid.SongPositionToClock(3, 1, 20) == 6260));
    CHECK((At(grid, 8180) == Position{4, 0, 500} && grid.SongPositionToClock(4, 0, 500) == 8180)); // no beats
    Master none({0, 2});
    const CGridManager never = GridOver(none);
    CHECK((At(never, 5000) == Position{0, 0, 5000} && never.SongPositionToClock(0, 0, 5000) == 5000));
}

TEST_CASE("grid: measure numbers that begin again at 0") {
    Master endless({1, 7});          // 15 ticks to a measure
    endless.Change(975000, 2, 7);    // measure 65000
    endless.Change(30 * 1000, 1, 7); // measure 66000, which is 464
    const CGridManager grid = GridOver(endless);
    CHECK(At(grid, 10) == Position{0, 0, 10});
    CHECK(grid.SongPositionToClock(1000, 0, 0) == 15000);
    CHECK((SignatureAt(grid, 1000) == 1 * 100 + 128 && SignatureAt(grid, 65000) == 2 * 100 + 128));
    // The last change counts from -961080: 464 - 65000 measures of 30 before 975000.
    CHECK(At(grid, 1000000) == Position{464 + 130738, 0, 10});
}

TEST_CASE("grid: each way gives back the value with its rest") {
    std::mt19937 random(480);
    for (int i = 0; i < 20000; ++i) {
        const WORD points = static_cast<WORD>(Random(random, 1, i % 2 ? 65535 : 500));
        const WORD step = static_cast<WORD>(Random(random, 1, i % 3 ? 960 : 65535));
        const LONG value = Random(random, -1000000, 1000000);
        CAPTURE(points);
        CAPTURE(step);
        CAPTURE(value);
        int rest = 0;
        const LONG clock = CGridManager::ScreenToClock(value, points, &rest);
        REQUIRE(CGridManager::ClockToScreen(clock, points) + rest == value);
        const LONG grid = CGridManager::ClockToGrid(value, step, &rest);
        REQUIRE(CGridManager::GridToClock(grid, step) + rest == value);
        const DWORD units = CGridManager::ClocksToUnits(static_cast<DWORD>(value), step, &rest);
        REQUIRE(CGridManager::UnitsToClocks(units, step) + static_cast<DWORD>(rest) == static_cast<DWORD>(value));
        const WORD fine = static_cast<WORD>(points % 136 * 480); // every tick has points of its own
        REQUIRE(CGridManager::ScreenToClock(CGridManager::ClockToScreen(value / 65, fine), fine, nullptr) ==
                (fine ? value / 65 : 0));
        // Of a grid line between two points the rest can be one point off.
        const LONG line = CGridManager::ScreenToGrid(value, points, step, &rest);
        const LONG error = value - rest - CGridManager::GridToScreen(line, points, step);
        REQUIRE(std::abs(error) <= (LONGLONG{points} * step % 480 == 0 ? 0 : 1));
    }
}

TEST_CASE("grid: over random signatures clocks come back, and lookups agree with a walk of the map") {
    for (DWORD seed = 1; seed <= 24; ++seed) {
        CAPTURE(seed);
        std::mt19937 random(seed);
        const bool wrapping = seed % 6 == 0;
        Master master({1, 7});
        if (!wrapping)
            FillRandomly(master, random);
        for (int i = 0; wrapping && i < 500; ++i) // far more than 65536 measures
            master.Change(static_cast<DWORD>(Random(random, 1, 9000)), static_cast<DWORD>(Random(random, 1, 2)), 7);
        const CGridManager grid = GridOver(master);
        const CArray<tagTimeSignatureMap>& map = *grid.GetTimeSignatureMap();
        const int measures = wrapping ? 70000 : map[map.GetUpperBound()].measure + 8;
        const auto beatBefore = [&map](DWORD measure) {
            int exponent = map[0].signature.denominatorExponent;
            for (int i = 0; i < map.GetSize() && map[i].measure < measure; ++i)
                exponent = map[i].signature.denominatorExponent;
            return CSequenceObject::CalcNoteLength(exponent, 0, 0);
        };
        const LONG end = grid.SongPositionToClock(measures, 0, 0);
        for (int i = 0; i < 400; ++i) {
            const int measure = Random(random, -2, measures);
            const int beat = Random(random, -3, 20);
            REQUIRE(grid.SongPositionToClock(measure, beat, i) ==
                    CGridManager::SongPositionToClock(&map, measure, beat, i));
            tagTimeSignature expected = map[0].signature;
            for (int k = 0; k < map.GetSize(); ++k) {
                if (map[k].measure <= measure)
                    expected = map[k].signature;
                if (map[k].measure == measure)
                    break;
            }
            REQUIRE(SignatureAt(grid, measure) == expected.numerator * 100 + (1 << expected.denominatorExponent));
            if (wrapping)
                continue;
            const LONG clock = Random(random, -3000, end);
            CAPTURE(clock);
            const Position position = At(grid, static_cast<DWORD>(clock));
            // Only a measure that starts with a change counts its beats as before.
            const int counted = beatBefore(position[0]);
            const int own = beatBefore(position[0] + 1);
            const LONG shift = clock < 0 ? 0 : static_cast<LONG>(position[1]) * (counted - own);
            REQUIRE(Back(grid, position) == clock + shift);
        }
    }
}

TEST_CASE("grid: ten thousand changes, each found") {
    Master master; // 4/4 and 3/4 in turn
    for (DWORD i = 1; i <= 10000; ++i)
        master.Change(i % 2 ? 1920 : 1440, i % 2 ? 3 : 4, 2);
    const CGridManager grid = GridOver(master);
    int wrong = 0;
    for (DWORD clock = 0, measure = 0; measure < 10000; ++measure) {
        for (DWORD beat = 0; beat < (measure % 2 ? 3U : 4U); ++beat, clock += 480) {
            wrong += At(grid, clock + 7) != Position{measure, beat, 7};
            wrong += Back(grid, {measure, beat, 7}) != static_cast<LONG>(clock + 7);
        }
        wrong += SignatureAt(grid, static_cast<int>(measure)) != (measure % 2 ? 304 : 404);
    }
    CHECK(wrong == 0);
}
