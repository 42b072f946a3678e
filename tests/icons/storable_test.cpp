#include "icon_fixture.h"

#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/icons/storable.h"

namespace {

/// Through a file and back, and as text again.
template <class Icon>
std::string ReadBack(Icon& icon) {
    const std::string text = Described(icon);
    Icon read(icon.GetIconID() >> 24, icon.GetIconID() >> 16 & 0xFF, 1);
    Construct(read, text);
    return Described(read);
}

} // namespace

TEST_CASE("storable: a file gives the icon back as it is, and every point is near where it was") {
    CIconVibrato vibrato(4, 4, 1);
    Rows depth, rate;
    for (int position = 0; position < 5000; ++position) {
        depth.push_back({position, position & 127, 0x8000});
        rate.push_back({position + 5000, -position});
    }
    Fill(*vibrato.GetDepthBPList(), depth);
    Fill(*vibrato.GetRateBPList(), rate);
    torv::MakeStorable(vibrato);
    CHECK(ReadBack(vibrato) == Described(vibrato));
    CHECK(vibrato.GetLength() == 240);
    for (const auto& [list, given] : {std::pair(vibrato.GetDepthBPList(), depth), {vibrato.GetRateBPList(), rate}}) {
        const Rows stored = RowsOf(*list);
        REQUIRE(stored.size() == given.size());
        int furthest = 0;
        for (size_t i = 0; i < stored.size(); ++i) {
            furthest = std::max(furthest, given[i][0] - stored[i][0]);
            CHECK(stored[i] == std::vector<int>{stored[i][0], given[i][1], 0});
        }
        CHECK(furthest > 0); // not every place is read as it was written
        CHECK(furthest <= 4);
    }
}

TEST_CASE("storable: what a file cannot hold is brought into its ranges") {
    CIconDynamics swell(5, 2, 1);
    swell.SetStartDynamics(500);
    swell.SetLength(0x80000000);
    Rows rows(8000, {0, 7});
    rows.front() = {-5, 7};
    Fill(*swell.GetDynamicsBPList(), rows);
    torv::MakeStorable(swell);
    CHECK(swell.GetStartDynamics() == 127);
    CHECK(swell.GetLength() == 240);
    CHECK(RowsOf(*swell.GetDynamicsBPList()) == Rows(7000, {0, 7, 0})); // as many as a line holds
    Fill(*swell.GetDynamicsBPList(), {{9999, 1}, {10000, 2}, {5, 3}});
    torv::MakeStorable(swell);
    CHECK(swell.GetDynamicsBPList()->GetCount() == 1); // the reader ends there
    CHECK(ReadBack(swell) == Described(swell));
    swell.SetCaption(std::string(5000, 'x').c_str());
    torv::MakeStorable(swell);
    CHECK(swell.GetCaption().GetLength() == 4096);
}
