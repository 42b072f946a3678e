#include "torv/synthesis/step_feeder.h"

#include <doctest/doctest.h>

#include <array>
#include <initializer_list>

namespace {

using Records = std::vector<std::array<int, 4>>; // delta, status, data 1, data 2

Records NextRecords(torv::StepFeeder& feeder) {
    Records records;
    for (const auto& event : feeder.NextStep())
        records.push_back({static_cast<int>(event.delta), event.status, event.data1, event.data2});
    return records;
}

void Add(CQuillMidiBuffer& stream, LONG time, std::initializer_list<BYTE> bytes) {
    REQUIRE(stream.AddEvent(1, bytes.begin(), static_cast<DWORD>(bytes.size()), time) == 1);
}

} // namespace

TEST_CASE("steps: an entry comes in its step, at its sample") {
    CQuillMidiBuffer stream;
    REQUIRE(stream.Create(1, 0, 0) == 1);
    Add(stream, -20, {0x91, 1, 1});
    Add(stream, 5, {0x92, 2, 2});  // 220.5, cut to 220
    Add(stream, 6, {0x93, 3, 3});  // 264.6: 8 into the second step
    Add(stream, 2, {0x94, 4, 4});  // 88, past by then: at the step's beginning
    Add(stream, 29, {0x95, 5, 5}); // 1278.9: 254 into the fifth
    torv::StepFeeder feeder;
    stream.SeekToBegin();
    feeder.Begin(&stream, 0);
    CHECK(NextRecords(feeder) == Records{{0, 0x91, 1, 1}, {220, 0x92, 2, 2}});
    CHECK(NextRecords(feeder) == Records{{8, 0x93, 3, 3}, {0, 0x94, 4, 4}});
    CHECK(NextRecords(feeder).empty());
    CHECK(NextRecords(feeder).empty());
    CHECK_FALSE(feeder.EntriesEnded());
    const RVEEvent chased{0, 0xB0, 9, 9, 0};
    feeder.Add(&chased, 1);
    CHECK(NextRecords(feeder) == Records{{0, 0xB0, 9, 9}, {254, 0x95, 5, 5}});
    CHECK(feeder.EntriesEnded());
    CHECK(feeder.Clock() == 1280);
    CHECK(NextRecords(feeder).empty());

    SUBCASE("beginning later finds the same places, and what is past at once") {
        stream.SeekToBegin();
        feeder.Begin(&stream, 1024);
        CHECK(NextRecords(feeder) ==
              Records{{0, 0x91, 1, 1}, {0, 0x92, 2, 2}, {0, 0x93, 3, 3}, {0, 0x94, 4, 4}, {254, 0x95, 5, 5}});
    }
}

TEST_CASE("steps: each byte with its top bit set opens a record of at most three bytes") {
    CQuillMidiBuffer stream;
    REQUIRE(stream.Create(1, 0, 0) == 1);
    Add(stream, 0, {0x10, 0xB0, 99, 0x50, 98, 0, 0x90, 0xB1, 7});
    std::vector<BYTE> block; // longer than what is read at a time, which is no multiple of three
    for (int i = 0; i < 300; ++i)
        block.insert(block.end(), {0xB2, static_cast<BYTE>(i % 128), static_cast<BYTE>(i / 128)});
    REQUIRE(stream.AddEvent(1, block.data(), static_cast<DWORD>(block.size()), 0) == 1);
    torv::StepFeeder feeder;
    stream.SeekToBegin();
    feeder.Begin(&stream, 0);
    const Records records = NextRecords(feeder);
    REQUIRE(records.size() == 303);
    CHECK(records[0] == std::array{0, 0xB0, 99, 0x50}); // what went before it and after its third byte is dropped
    CHECK(records[1] == std::array{0, 0x90, 0, 0});
    CHECK(records[2] == std::array{0, 0xB1, 7, 0});
    for (int i = 0; i < 300; ++i)
        CHECK(records[static_cast<std::size_t>(i) + 3] == std::array{0, 0xB2, i % 128, i / 128});
}

TEST_CASE("steps: the end comes after the last time, with a silent step or a second later") {
    const short sound[] = {0, 1};
    const short silence[] = {0, 0};
    CQuillMidiBuffer stream;
    REQUIRE(stream.Create(1, 0, 0) == 1);
    torv::StepFeeder feeder;
    feeder.Begin(&stream, 0);
    CHECK(feeder.Finished()); // nothing to play
    feeder.Begin(nullptr, 0);
    CHECK(feeder.Finished());

    Add(stream, 0, {0x90, 1, 1});
    stream.SetLast(1, 10); // 441 samples: two steps
    stream.SeekToBegin();
    feeder.Begin(&stream, 0);
    feeder.NextStep();
    feeder.StepProduced(silence, 2);
    CHECK_FALSE(feeder.Finished());
    feeder.NextStep();
    feeder.StepProduced(sound, 2);
    CHECK_FALSE(feeder.Finished());
    feeder.NextStep();
    feeder.StepProduced(silence, 2);
    CHECK(feeder.Finished());
    while (feeder.Clock() < 1000000 && (feeder.StepProduced(sound, 2), !feeder.Finished()))
        feeder.NextStep();
    CHECK(feeder.Clock() == 44288); // 173 steps: one more would pass 441 + 44100 = 44541
}
