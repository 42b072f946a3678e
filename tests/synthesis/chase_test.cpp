#include "synthesis/driver.h"
#include "values.h"

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

/// A block as the encoder writes it: an opening, a delay of 300 ms (2, 44), then parameters from number 2 on.
Bytes Block(BYTE number, std::initializer_list<BYTE> values) {
    Bytes bytes{0xB3, 99, number, 0xB3, 98, 0, 0xB3, 6, 0, 0xB3, 38, 0,
                0xB3, 99, number, 0xB3, 98, 1, 0xB3, 6, 2, 0xB3, 38, 44};
    BYTE parameter = 2;
    for (const BYTE value : values)
        bytes.insert(bytes.end(), {0xB3, 99, number, 0xB3, 98, parameter++, 0xB3, 6, value});
    return bytes;
}

struct Chase {
    Chase() { REQUIRE(stream.Create(1, 0, 0) == 1); }
    void Add(LONG time, const Bytes& bytes) {
        REQUIRE(stream.AddEvent(1, bytes.data(), static_cast<DWORD>(bytes.size()), time) == 1);
    }
    const std::vector<RVEEvent>& At(DWORD position, torv::Preroll preroll = {500, true}) {
        torv::ChaseEvents(stream, position, preroll, table);
        return table.Events();
    }
    /// The number and the value of parameter 2 of every group.
    std::vector<int> Groups(DWORD position) {
        std::vector<int> groups;
        const auto& events = At(position);
        for (size_t i = 0; i + 10 < events.size(); ++i)
            if (events[i].data1 == 99 && events[i + 1].data1 == 98 && events[i + 1].data2 == 0)
                groups.insert(groups.end(), {events[i].data2, events[i + 10].data2});
        return groups;
    }

    CQuillMidiBuffer stream;
    torv::ChaseTable table;
};

} // namespace

TEST_CASE("chase: the latest group of every parameter before the preroll, newest first, with the preroll as delay") {
    Chase chase;
    chase.Add(-5, Block(0x60, {1}));
    chase.Add(0, Block(0x53, {7}));
    chase.Add(0, {0xB0, 99, 0x53});           // no second message
    chase.Add(0, {0xB0, 99, 0x53, 0xB0, 98}); // cut
    chase.Add(0, {});
    chase.Add(100, Block(0x63, {50}));
    chase.Add(150, Block(0x50, {60})); // a note is no state
    chase.Add(200, Block(0x55, {0x30, 90}));
    chase.Add(250, Block(0x55, {0x31, 91}));
    chase.Add(300, Block(0x55, {0x30, 92})); // the same control again
    Bytes two = Block(0x63, {51});
    const Bytes second = Block(0x63, {52});
    two.insert(two.end(), second.begin(), second.end());
    chase.Add(400, two);
    chase.Add(500, Block(0x63, {99})); // at the seek point: told as it comes

    CHECK(chase.Groups(1000) == std::vector<int>{0x63, 52, 0x55, 0x30, 0x55, 0x31, 0x53, 7, 0x60, 1});
    CHECK(chase.Groups(1001)[1] == 99); // now it stands before
    CHECK(chase.Groups(100000).size() == 10);
    const auto& events = chase.At(1000);
    REQUIRE(events.size() == 11 + 14 + 14 + 11 + 11);
    CHECK(events[0].status == 0xB3);
    CHECK(events[0].delta == 0);
    CHECK(events[6].data2 == 500 / 128); // the delay's two halves
    CHECK(events[7].data2 == 500 % 128);
    CHECK(events[13 + 11].data2 == 92);
    CHECK(chase.At(500).empty()); // nothing is chased from before 0
    CHECK(chase.At(1000, {500, false}).empty());
    CHECK(chase.At(30000, {20000, true})[6].data2 == 0x7F); // delays have 14 bits
    CHECK(chase.At(30000, {20000, true})[7].data2 == 0x7F);
    chase.Add(501, {0xB0, 99, 0x64, 0xB0, 98, 0, 0xB0, 6, 5, 1}); // too short for a delay: as it is
    CHECK(chase.At(1002)[2].data2 == 5);
}

TEST_CASE("chase: what is sent before a time and takes effect at it or later") {
    Chase chase;
    chase.Add(10, {0x90, 60, 1}); // without a delay
    CHECK_FALSE(torv::IsTellingAhead(chase.stream, 20));
    chase.Add(100, Block(0x63, {50})); // at 400
    for (const DWORD time : {100u, 101u, 400u, 401u})
        CHECK(torv::IsTellingAhead(chase.stream, time) == (time == 101 || time == 400));
}

TEST_CASE("chase: what a host reaches of it") {
    const FakeEngine engine;
    Chase chase;
    Bytes kept = Block(0x55, {0x30, 90});
    chase.Add(0, kept);
    chase.Add(20, {0x90, 60, 1});
    Driver driver;
    REQUIRE(driver.OpenSynthesizer() == 1);
    driver.RTS_SetSynthesisParam(1, 1, 0, 44100, 500, 1);
    driver.RTS_SetQuillMidiBuffer(0, &chase.stream);
    CHECK(driver.RTS_ChaseEvent(0, 1000) == 0); // no instances yet
    REQUIRE(driver.RTS_CreateRVE() == 1);
    CHECK(Values{driver.RTS_ChaseEvent(0, 1000), driver.RTS_GetChaseEvents(0)->size()} == "14 14");
    CHECK(driver.RTS_GetChaseEvents(1) == nullptr);
    const auto exists = [&](int track, const Bytes& group) {
        return driver.RTS_ChaseEventExist(track, group.data(), static_cast<DWORD>(group.size()));
    };
    CHECK(Values(exists(0, kept), exists(1, kept), exists(0, {})) == "1 0 0");
    CHECK(Values(exists(0, Block(0x55, {0x31, 90})), exists(0, Block(0x53, {0x30}))) == "0 0");
    kept.resize(84);
    std::copy_n(kept.begin(), 42, kept.begin() + 42);
    for (const DWORD length : {42, 44, 84}) // whole messages, up to the next opening
        CHECK(CRtSynthesis::RTS_GetEventLength(kept.data(), length) == 42);
    CHECK(CRtSynthesis::RTS_GetEventLength(nullptr, 42) == 0);
    const LONG moves[][2] = {{0, 0}, {1, 20}, {20, 20}, {21, -1}};
    for (const auto& [time, found] : moves) {
        CHECK(driver.RTS_MoveTo(0, static_cast<DWORD>(time)) == (found >= 0));
        tagQuillMidiEntry entry{};
        CHECK((chase.stream.ReadNextEntry(&entry) ? entry.time : -1) == found);
    }
    CHECK(driver.RTS_MoveTo(1, 0) == 0); // no such track
}
