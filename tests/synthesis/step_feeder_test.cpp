#include "torv/synthesis/step_feeder.h"

#include <doctest/doctest.h>

#include <array>

namespace {

using Records = std::vector<std::array<int, 4>>; // delta, status, data 1, data 2

struct Steps {
    Steps() { REQUIRE(stream.Create(1, 0, 0) == 1); }
    void Add(LONG time, const std::vector<BYTE>& bytes) {
        REQUIRE(stream.AddEvent(1, bytes.data(), static_cast<DWORD>(bytes.size()), time) == 1);
    }
    void Begin(LONGLONG clock) {
        stream.SeekToBegin();
        feeder.Begin(&stream, clock);
    }
    Records Next() {
        Records records;
        for (const auto& event : feeder.NextStep())
            records.push_back({static_cast<int>(event.delta), event.status, event.data1, event.data2});
        return records;
    }

    CQuillMidiBuffer stream;
    torv::StepFeeder feeder;
};

} // namespace

TEST_CASE("steps: an entry comes in its step, at its sample") {
    Steps steps;
    steps.Add(-20, {0x91, 1, 1});
    steps.Add(5, {0x92, 2, 2});  // 220.5, cut to 220
    steps.Add(6, {0x93, 3, 3});  // 264.6: 8 into the second step
    steps.Add(2, {0x94, 4, 4});  // 88, past by then: at the step's beginning
    steps.Add(29, {0x95, 5, 5}); // 1278.9: 254 into the fifth
    steps.Begin(0);
    CHECK(steps.Next() == Records{{0, 0x91, 1, 1}, {220, 0x92, 2, 2}});
    CHECK(steps.Next() == Records{{8, 0x93, 3, 3}, {0, 0x94, 4, 4}});
    CHECK(steps.Next().empty());
    CHECK(steps.Next().empty());
    CHECK_FALSE(steps.feeder.EntriesEnded());
    const RVEEvent chased{0, 0xB0, 9, 9, 0};
    steps.feeder.Add(&chased, 1);
    CHECK(steps.Next() == Records{{0, 0xB0, 9, 9}, {254, 0x95, 5, 5}});
    CHECK(steps.feeder.EntriesEnded());
    CHECK(steps.feeder.Clock() == 1280);
    steps.Begin(1024); // later finds the same places, and what is past at once
    CHECK(steps.Next() ==
          Records{{0, 0x91, 1, 1}, {0, 0x92, 2, 2}, {0, 0x93, 3, 3}, {0, 0x94, 4, 4}, {254, 0x95, 5, 5}});
}

TEST_CASE("steps: each byte with its top bit set opens a record of at most three bytes") {
    Steps steps;
    steps.Add(0, {0x10, 0xB0, 99, 0x50, 98, 0, 0x90, 0xB1, 7});
    std::vector<BYTE> block; // longer than what is read at a time, which is no multiple of three
    Records expected{{0, 0xB0, 99, 0x50}, {0, 0x90, 0, 0}, {0, 0xB1, 7, 0}}; // what belongs to none is dropped
    for (int i = 0; i < 300; ++i) {
        block.insert(block.end(), {0xB2, static_cast<BYTE>(i % 128), static_cast<BYTE>(i / 128)});
        expected.push_back({0, 0xB2, i % 128, i / 128});
    }
    steps.Add(0, block);
    steps.Begin(0);
    CHECK(steps.Next() == expected);
}

TEST_CASE("steps: the end comes after the last time, with a silent step or a second later") {
    Steps steps;
    torv::StepFeeder& feeder = steps.feeder;
    steps.Begin(0);
    CHECK(feeder.Finished()); // nothing to play
    feeder.Begin(nullptr, 0);
    CHECK(feeder.Finished());
    steps.Add(0, {0x90, 1, 1});
    steps.stream.SetLast(1, 10); // 441 samples: two steps
    steps.Begin(0);
    for (const short last : {0, 1, 0, 1}) { // of two samples
        CAPTURE(feeder.Clock());
        feeder.NextStep();
        const short samples[] = {0, last};
        feeder.StepProduced(samples, 2);
        CHECK(feeder.Finished() == (feeder.Clock() == 768));
    }
    while (feeder.Clock() < 1000000 && !feeder.Finished())
        feeder.NextStep();
    CHECK(feeder.Clock() == 44288); // 173 steps: one more would pass 441 + 44100 = 44541
}
