#include "encoding_fixture.h"

#include "allocation_failure.h"
#include "torv/encoding/qm_out_parameters.h"

namespace {

/// A curve of plain values for the tests to output.
struct Curve : CxQMOutBreakPoint {
    explicit Curve(std::initializer_list<std::pair<LONG, SHORT>> points) {
        CBreakPointList list;
        for (const auto& [position, value] : points)
            AddPoint(&list, position, value);
        AttachBreakPointList(&list);
        m_nNumberMsb = 0x63;
    }
    using CxQMOutBreakPoint::WriteEvent;
};

const tagSequenceTimeMap kEvenMap[] = {{500000, 0, 0}, {0, 0xFFFFFFFF, 0xFFFFFFFF}};

} // namespace

TEST_CASE("list output: the samples without repeats, or the list as it was") {
    CBreakPointList every;
    CHECK(Curve({{0, 0}, {3, 3}}).OutputParamLinear(&every, 0) == 1); // no resolution: every tick
    CHECK(PointsOf(every) == Points{{0, 0}, {1, 1}, {2, 2}, {3, 3}});
    FailEachAllocation([](AllocationFailure& failure) {
        Curve curve({{0, 5}, {240, 5}, {480, 9}, {490, 11}});
        CBreakPointList list;
        AddPoint(&list, -1, 1);
        const int done = failure.During([&] { return curve.OutputParamLinear(&list, 120); });
        CHECK(done == !failure.HasHappened());
        // 5 + 4 x 120/240; the last value is owed at its own tick.
        CHECK(PointsOf(list) == (done ? Points{{-1, 1}, {0, 5}, {360, 7}, {480, 9}, {490, 11}} : Points{{-1, 1}}));
    });
}

TEST_CASE("outputs: nothing to write, nowhere to write it, and nothing to attach") {
    CQuillMidiBuffer buffer; // not created
    tagQuillMidiRealtimeInfo info{};
    info.map = kEvenMap;
    CBreakPointList list;
    Curve none({});
    Curve some({{480, 9}});
    CHECK(none.OutputParam(&buffer, &info) == 1);
    CHECK(none.OutputParamLinear(&list, 30) == 0);
    CHECK(some.OutputParamLinear(nullptr, 30) == 0);
    for (CQuillMidiBuffer* const to : {&buffer, static_cast<CQuillMidiBuffer*>(nullptr)}) {
        CHECK(some.OutputParam(to, &info) == 0);
        CHECK(some.OutputParamLinear(to, &info, 30) == 0);
        CHECK(some.WriteEvent(to, &info, {}) == 0);
    }
    CHECK(some.OutputParam(&buffer, nullptr) == 0);
    some.DetachObject();
    CHECK(some.IsEmpty());

    CIconVibrato icon(4, 4, 1);
    CIconDynamics swell(5, 2, 1);
    CxQMOutVibrato vibrato;
    CxQMOutDynamics dynamics;
    CHECK(vibrato.AttachObject(nullptr, 0, 0) == 0);
    CHECK(vibrato.AttachObject(&icon, 0, 2) == 0);
    CHECK(dynamics.AttachObject(static_cast<const CBreakPointList*>(nullptr)) == 0);
    CHECK(dynamics.IsTargetBP({0, -1, 0}) == 0);
    CHECK(dynamics.IsTargetBP({0, 0, 0}) == 1);
    CHECK(none.IsTargetBP({0, -1, 0}) == 1);
    AddPoint(&list, 0, 1);
    FailEachAllocation([&](AllocationFailure& failure) {
        const bool isAttached = failure.During([&] {
            return dynamics.AttachObject(&swell, 0, 72) && vibrato.AttachObject(&icon, 0, 1) &&
                   CxQMOutTremoloDepth().AttachObject(&list);
        });
        CHECK(isAttached == !failure.HasHappened());
    });
}
