#include "encoding_fixture.h"

#include "torv/encoding/qm_out_parameters.h"

#include <doctest/doctest.h>

namespace {

/// A curve of plain values for the tests to output.
struct Curve : CxQMOutBreakPoint {
    explicit Curve(std::initializer_list<std::pair<LONG, SHORT>> points) {
        CBreakPointList list;
        for (const auto& [position, value] : points)
            AddPoint(&list, position, value);
        m_nNumberMsb = 0x63;
        AttachBreakPointList(&list);
    }
};

const tagSequenceTimeMap kMap[] = {{500000, 0, 0}, {0, 0xFFFFFFFF, 0xFFFFFFFF}};

/// Sounding time and value of each block, for a presend given in milliseconds.
std::vector<std::vector<long>> Sampled(Curve& curve, int resolution, DWORD presend = 0) {
    CQuillMidiBuffer buffer;
    buffer.Create(1, presend, 0);
    tagQuillMidiRealtimeInfo info{};
    info.map = kMap;
    CHECK(curve.OutputParamLinear(&buffer, &info, resolution) == 1);
    std::vector<std::vector<long>> rows;
    for (const StreamEntry& entry : EntriesOf(buffer))
        rows.push_back({entry.time + entry.Block().Delay(), entry.Block().At(2)});
    return rows;
}

} // namespace

using Rows = std::vector<std::vector<long>>;

TEST_CASE("sampled output: a ramp is rounded to nearest, equal samples are sent too") {
    Curve ramp({{0, 0}, {480, 127}});
    // 120 ticks are 125 ms; 127 x 1/4 = 31.75, 2/4 = 63.5, 3/4 = 95.25.
    CHECK(Sampled(ramp, 120) == Rows{{0, 0}, {125, 32}, {250, 64}, {375, 95}, {500, 127}});
    Curve flat({{0, 5}, {240, 5}});
    CHECK(Sampled(flat, 120) == Rows{{0, 5}, {125, 5}, {250, 5}});
    Curve falling({{0, 10}, {480, -1}});                                 // -1 sent in seven bits
    CHECK(Sampled(falling, 240) == Rows{{0, 10}, {250, 4}, {500, 127}}); // 10 - 5.5, halves away from zero: 10 - 6
}

TEST_CASE("sampled output: the last value is owed when no sample reached it, at the last sample's time") {
    Curve ramp({{0, 0}, {480, 127}});
    const auto rows = Sampled(ramp, 7);
    REQUIRE(rows.size() == 70);                     // 0, 7 .. 476, and the closing value
    CHECK(rows[68] == std::vector<long>{495, 126}); // 476 ticks are 495.8 ms; 125.94
    CHECK(rows[69] == std::vector<long>{495, 127});
}

TEST_CASE("sampled output: a single point is its closing value, whatever the presend") {
    Curve later({{480, 64}});
    CHECK(Sampled(later, 30) == Rows{{500, 64}});
    Curve early({{10, 64}});
    CHECK(Sampled(early, 30, 2000) == Rows{{10, 64}}); // sent before the song: its time is -1990
    Curve minusOne({{0, -1}});                         // equals what counts as sent at first
    CHECK(Sampled(minusOne, 30).empty());
}

TEST_CASE("sampled output: of two points at one tick the second starts anew, and early samples are not sent") {
    Curve step({{0, 10}, {240, 10}, {240, 90}, {480, 90}});
    CHECK(Sampled(step, 120) == Rows{{0, 10}, {125, 10}, {250, 10}, {375, 90}, {500, 90}});
    Curve ramp({{0, 0}, {480, 100}});
    CHECK(Sampled(ramp, 240, 250) == Rows{{250, 50}, {500, 100}});
    Curve before({{0, 0}, {480, 100}, {960, 100}});
    const auto dropped = Sampled(before, 480, 2000);
    CHECK(dropped == Rows{}); // the last sample stands at the last point: nothing is owed
}

TEST_CASE("stepwise output: every point at its own time, but for the presend's") {
    CQuillMidiBuffer buffer;
    buffer.Create(1, 250, 0);
    tagQuillMidiRealtimeInfo info{};
    info.map = kMap;
    Curve curve({{0, 1}, {240, 2}, {480, 3}, {480, 4}});
    CHECK(curve.OutputParam(&buffer, &info) == 1);
    std::vector<std::vector<long>> rows;
    for (const StreamEntry& entry : EntriesOf(buffer))
        rows.push_back({static_cast<long>(entry.tick), entry.time, entry.Block().At(2)});
    CHECK(rows == Rows{{0, 0, 2}, {240, 250, 3}, {240, 250, 4}});
    CHECK((buffer.GetLastTick() == 480 && buffer.GetLastTime() == 500));
    Curve none({});
    CHECK(none.OutputParam(&buffer, &info) == 1);
    CHECK(none.OutputParamLinear(&buffer, &info, 30) == 0);
}

TEST_CASE("list output: the same samples without repeats") {
    Curve curve({{0, 5}, {240, 5}, {480, 9}});
    CBreakPointList list;
    CHECK(curve.OutputParamLinear(&list, 120) == 1);
    std::vector<std::vector<long>> rows;
    for (POSITION at = list.GetHeadPosition(); at;) {
        const tagBreakPoint& point = list.GetNext(at);
        rows.push_back({point.position, point.value});
    }
    CHECK(rows == Rows{{0, 5}, {360, 7}, {480, 9}});
}

TEST_CASE("filters: only dynamics asks for values that are not negative") {
    CxQMOutDynamics dynamics;
    CxQMOutTremoloDepth tremolo;
    CHECK(dynamics.IsTargetBP({0, -1, 0}) == 0);
    CHECK(dynamics.IsTargetBP({0, 0, 0}) == 1);
    CHECK(tremolo.IsTargetBP({0, -1, 0}) == 1);
    CHECK(CxQMOutVibrato().AttachObject(nullptr, 0, 0) == 0);
    CIconVibrato icon(4, 4, 1);
    CHECK(CxQMOutVibrato().AttachObject(&icon, 0, 2) == 0);
}
