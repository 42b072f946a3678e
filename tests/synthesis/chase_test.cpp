#include "synthesis/driver.h"

#include <doctest/doctest.h>

#include <initializer_list>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

/// A block as the encoder writes it: an opening, a delay of 300 ms (2, 44), then parameters from number 2 on.
Bytes Block(BYTE number, std::initializer_list<BYTE> values) {
    Bytes bytes;
    const auto add = [&bytes](BYTE controller, BYTE value) { bytes.insert(bytes.end(), {0xB3, controller, value}); };
    add(99, number);
    add(98, 0);
    add(6, 0);
    add(38, 0);
    add(99, number);
    add(98, 1);
    add(6, 2);
    add(38, 44);
    BYTE parameter = 2;
    for (const BYTE value : values) {
        add(99, number);
        add(98, parameter++);
        add(6, value);
    }
    return bytes;
}

Bytes Joined(const Bytes& a, const Bytes& b) {
    Bytes both(a);
    both.insert(both.end(), b.begin(), b.end());
    return both;
}

/// The value of parameter 2 in every chased group, with the group's number: (number, value)...
std::vector<int> Groups(const std::vector<RVEEvent>& events) {
    std::vector<int> groups;
    for (size_t i = 0; i + 10 < events.size(); ++i)
        if (events[i].data1 == 99 && events[i + 1].data1 == 98 && events[i + 1].data2 == 0) {
            groups.push_back(events[i].data2);
            groups.push_back(events[i + 10].data2);
        }
    return groups;
}

struct Chase {
    explicit Chase(DWORD preroll = 500, int isOn = 1) {
        REQUIRE(driver.OpenSynthesizer() == 1);
        driver.RTS_SetSynthesisParam(1, 1, 0, 44100, preroll, isOn);
        REQUIRE(stream.Create(1, 0, 0) == 1);
        driver.RTS_SetQuillMidiBuffer(0, &stream);
        REQUIRE(driver.RTS_CreateRVE() == 1);
    }
    void Add(LONG time, const Bytes& bytes) {
        REQUIRE(stream.AddEvent(1, bytes.data(), static_cast<DWORD>(bytes.size()), time) == 1);
    }
    std::vector<RVEEvent> At(DWORD position) {
        const int count = driver.RTS_ChaseEvent(0, position);
        const auto* events = driver.RTS_GetChaseEvents(0);
        REQUIRE(events != nullptr);
        CHECK(events->size() == static_cast<size_t>(count));
        return *events;
    }

    const FakeEngine engine;
    CQuillMidiBuffer stream;
    Driver driver;
};

} // namespace

TEST_CASE("chase: the latest group of every parameter before the preroll, newest first, with the preroll as delay") {
    Chase chase;
    chase.Add(0, Block(0x60, {1}));
    chase.Add(0, Block(0x53, {7}));
    chase.Add(100, Block(0x63, {50}));
    chase.Add(150, Block(0x50, {60})); // a note is no state
    chase.Add(200, Block(0x55, {0x30, 90}));
    chase.Add(250, Block(0x55, {0x31, 91}));
    chase.Add(300, Block(0x55, {0x30, 92})); // the same control again
    chase.Add(400, Joined(Block(0x63, {51}), Block(0x63, {52})));
    chase.Add(500, Block(0x63, {99})); // at the seek point: told as it comes
    chase.Add(600, Block(0x64, {98}));

    const auto events = chase.At(1000);
    CHECK(Groups(events) == std::vector<int>{0x63, 52, 0x55, 0x30, 0x55, 0x31, 0x53, 7, 0x60, 1});
    REQUIRE(events.size() == 11 + 14 + 14 + 11 + 11);
    CHECK(events[0].status == 0xB3);
    CHECK(events[0].delta == 0);
    CHECK(events[6].data2 == 500 / 128); // the delay's two halves
    CHECK(events[7].data2 == 500 % 128);
    CHECK(events[13 + 11].data2 == 92);

    CHECK(chase.At(1001).size() == events.size()); // now it stands before
    CHECK(Groups(chase.At(1001))[1] == 99);
    CHECK(chase.At(500).empty()); // nothing is chased from before 0
    CHECK(chase.At(0).empty());
    CHECK(Groups(chase.At(100000)).size() == 12); // behind the last entry
}

TEST_CASE("chase: not when it is off; delays have 14 bits; short and foreign entries are passed over") {
    {
        Chase chase(500, 0);
        chase.Add(0, Block(0x53, {7}));
        CHECK(chase.At(1000).empty());
    }
    {
        Chase chase(20000);
        chase.Add(0, Block(0x53, {7}));
        const auto events = chase.At(30000);
        REQUIRE(events.size() == 11);
        CHECK(events[6].data2 == 0x7F);
        CHECK(events[7].data2 == 0x7F);
    }
    Chase chase;
    chase.Add(0, {0xB0, 99, 0x53});           // no second message
    chase.Add(0, {0xB0, 99, 0x53, 0xB0, 98}); // cut
    chase.Add(0, {});
    chase.Add(0, {0xB0, 99, 0x64, 0xB0, 98, 0, 0xB0, 6, 5, 1}); // too short for a delay: as it is
    const auto events = chase.At(1000);
    REQUIRE(events.size() == 3);
    CHECK(events[2].data2 == 5);
}

TEST_CASE("chase: the stream is placed before the first entry at or after the time") {
    Chase chase;
    for (const LONG time : {-5, 10, 20, 20, 40})
        chase.Add(time, {0x90, 60, 1});
    const auto next = [&] {
        tagQuillMidiEntry entry{};
        return chase.stream.ReadNextEntry(&entry) ? entry.time : -1;
    };
    const LONG rows[][2] = {{0, -5}, {1, 10}, {10, 10}, {11, 20}, {40, 40}};
    for (const auto& row : rows) {
        CAPTURE(row[0]);
        CHECK(chase.driver.RTS_MoveTo(0, static_cast<DWORD>(row[0])) == 1);
        CHECK(next() == row[1]);
    }
    CHECK(chase.driver.RTS_MoveTo(0, 41) == 0);
    CHECK(next() == -1);
    CHECK(chase.driver.RTS_MoveTo(1, 0) == 0); // no such track
}
