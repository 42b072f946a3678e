#include "icon_fixture.h"

#include "torv/icons/icon_factory.h"
#include "torv/icons/storable.h"

namespace {

/// Through a file and back, and as text again.
std::string ReadBack(CIconObject& icon) {
    const auto read = torv::CopyIcon(&icon);
    Construct(*read, Described(icon));
    return Described(*read);
}

} // namespace

TEST_CASE("storable: a file gives the icon back as it is, and every point is near where it was") {
    CIconVibrato vibrato(4, 4, 1);
    for (const int from : {0, 5000}) {
        Rows given;
        for (int position = from; position < from + 5000; ++position)
            given.push_back({position, -position, 0x8000});
        CBreakPointList& curve = from ? *vibrato.GetRateBPList() : *vibrato.GetDepthBPList();
        Fill(curve, given);
        torv::MakeStorable(vibrato);
        const Rows stored = RowsOf(curve);
        REQUIRE(stored.size() == given.size());
        int furthest = 0;
        for (size_t i = 0; i < stored.size(); ++i) {
            furthest = std::max(furthest, given[i][0] - stored[i][0]);
            CHECK(stored[i] == std::vector<int>{stored[i][0], given[i][1], 0});
        }
        CHECK(furthest > 0); // not every place is read as it was written
        CHECK(furthest <= 4);
    }
    CHECK(vibrato.GetLength() == 240);
    CHECK(ReadBack(vibrato) == Described(vibrato));
}

TEST_CASE("storable: what a file cannot hold is brought into its ranges") {
    CIconDynamics swell(5, 2, 1);
    swell.SetStartDynamics(500);
    swell.SetLength(0x80000000);
    swell.SetCaption(std::string(5000, 'x').c_str());
    Rows rows(8000, {0, 7});
    rows.front() = {-5, 7};
    Fill(*swell.GetDynamicsBPList(), rows);
    torv::MakeStorable(swell);
    CHECK(Values(swell.GetStartDynamics(), swell.GetLength(), swell.GetCaption().GetLength()) == "127 240 4096");
    CHECK(RowsOf(*swell.GetDynamicsBPList()) == Rows(7000, {0, 7, 0})); // as many as a line holds
    Fill(*swell.GetDynamicsBPList(), {{9999, 1}, {10000, 2}, {5, 3}});
    torv::MakeStorable(swell);
    CHECK(swell.GetDynamicsBPList()->GetCount() == 1); // the reader ends there
    CHECK(ReadBack(swell) == Described(swell));
}
