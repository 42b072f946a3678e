#include "allocation_counter.h"
#include "stage.h"

#include "torv/platform/platform.h"

#include <doctest/doctest.h>

#include <random>

namespace {

/// The built library, by its entry points.
struct Engine {
    HMODULE module = LoadLibraryA("RVE.dll");
    RVECreateProc create = torv::EntryPoint<RVECreateProc>(module, "RVECreate");
    RVESetStaticSettingProc set = torv::EntryPoint<RVESetStaticSettingProc>(module, "RVESetStaticSetting");
    RVESetDynamicSettingProc setDynamic = torv::EntryPoint<RVESetDynamicSettingProc>(module, "RVESetDynamicSetting");
    RVEStartProc start = torv::EntryPoint<RVEStartProc>(module, "RVEStart");
    RVEDoStepSynthesisProc step = torv::EntryPoint<RVEDoStepSynthesisProc>(module, "RVEDoStepSynthesis");
    RVEResetProc reset = torv::EntryPoint<RVEResetProc>(module, "RVEReset");
    RVEStopProc stop = torv::EntryPoint<RVEStopProc>(module, "RVEStop");
    RVEDeleteProc release = torv::EntryPoint<RVEDeleteProc>(module, "RVEDelete");
    ~Engine() { FreeLibrary(module); }
};

RVEStaticSetting Setting(uint32_t rate, uint32_t frame = 256) { return {rate, frame, nullptr, 0, 1, {}}; }

std::vector<int16_t> StepOnce(const Engine& engine, int32_t handle, const Stream* stream) {
    std::vector<int16_t> samples(256);
    RVEStepOutput output{256, samples.data()};
    CHECK(engine.step(handle, stream ? static_cast<int32_t>(stream->Events().size()) : 0,
                      stream ? stream->Events().data() : nullptr, &output) == 0);
    samples.resize(output.count);
    return samples;
}

} // namespace

TEST_CASE("entry points: instances, settings and errors") {
    const Engine engine;
    REQUIRE(bool(engine.module));
    REQUIRE(bool(engine.step));
    const int32_t handle = engine.create();
    REQUIRE(handle >= 0);
    int16_t samples[256];
    RVEStepOutput output{256, samples};
    CHECK(engine.step(handle, 0, nullptr, &output) == -4); // no setting yet
    CHECK(engine.set(handle, Setting(22050)) == -3);
    CHECK(engine.set(handle, Setting(44100, 441)) == -3);
    CHECK(engine.set(handle, Setting(44100)) == 0);
    CHECK(engine.setDynamic(handle, nullptr) == 0);
    CHECK(engine.start(handle) == 0);
    CHECK(engine.step(handle, 5, nullptr, &output) == 0); // no events at all
    CHECK(output.count == 256);
    output = {0, nullptr};
    CHECK(engine.step(handle, 0, nullptr, &output) == 0);
    CHECK(output.count == 0);
    output = {256, nullptr};
    CHECK(engine.step(handle, 0, nullptr, &output) == -5);
    CHECK(engine.step(handle, 0, nullptr, nullptr) == -5);
    for (const int32_t nobody : {-1, -2, 4095, 4096, 100000}) {
        CHECK(engine.reset(nobody) == -1);
        CHECK(engine.release(nobody) == -1);
    }
    CHECK(engine.stop(handle) == 0);
    CHECK(engine.release(handle) == 0);
    CHECK(engine.release(handle) == -1);
}

TEST_CASE("instances are independent and deterministic, and a reset starts over") {
    const Engine engine;
    Stream one, other;
    one.Note({.startMs = 20, .lengthMs = 200, .phonemes = "s a"});
    other.Value(0x53, 3).Note({.note = 40, .startMs = 10, .lengthMs = 100, .phonemes = "i"});
    const int32_t a = engine.create(), b = engine.create(), c = engine.create();
    for (const int32_t handle : {a, b, c})
        CHECK(engine.set(handle, Setting(44100)) == 0);
    std::vector<std::vector<int16_t>> first;
    for (int i = 0; i < 60; ++i) {
        first.push_back(StepOnce(engine, a, i ? nullptr : &one));
        StepOnce(engine, b, i ? nullptr : &other);
    }
    CHECK(engine.reset(a) == 0);
    CHECK(engine.reset(b) == 0);
    for (int i = 0; i < 60; ++i) {
        CHECK(StepOnce(engine, b, i ? nullptr : &one) == first[static_cast<size_t>(i)]);
        CHECK(StepOnce(engine, c, i ? nullptr : &one) == first[static_cast<size_t>(i)]);
        CHECK(StepOnce(engine, a, i ? nullptr : &one) == first[static_cast<size_t>(i)]);
    }
    for (const int32_t handle : {a, b, c})
        engine.release(handle);
}

TEST_CASE("a step allocates nothing, whatever arrives") {
    const auto singer = std::make_unique<rve::Singer>();
    singer->Configure(96000);
    std::mt19937 random(7);
    std::vector<RVEEvent> events(3000);
    int16_t samples[558];
    Stream song;
    for (int i = 0; i < 300; ++i) // more than there is room for
        song.Note({.note = i % 128, .startMs = i * 16, .lengthMs = 40, .phonemes = "s t r eI"});
    allocation_counter::WatchThisThread();
    singer->Step(static_cast<int32_t>(song.Events().size()), song.Events().data(), samples, 558);
    for (int i = 0; i < 200; ++i) {
        for (RVEEvent& event : events)
            event = {static_cast<uint32_t>(random()), static_cast<uint8_t>(random() % 4 ? 0xB0 : random()),
                     static_cast<uint8_t>(random() % 2 ? 98 + random() % 2 : random()), static_cast<uint8_t>(random()),
                     0};
        singer->Step(static_cast<int32_t>(events.size()), events.data(), samples, 558);
    }
    allocation_counter::WatchThisThread(false);
    CHECK(allocation_counter::Take() == 0);
}

TEST_CASE("blocks: one that breaks off is dropped, one without an end mark sings nothing, the next one is whole") {
    Stream whole;
    whole.Note({.startMs = 50, .phonemes = "a"});
    const auto expected = Sing(whole, 0.3);
    for (size_t cut = 0; cut < whole.Events().size(); cut += 5) {
        const auto singer = std::make_unique<rve::Singer>();
        singer->Configure(44100);
        std::vector<RVEEvent> events(whole.Events().begin(), whole.Events().begin() + static_cast<std::ptrdiff_t>(cut));
        events.insert(events.end(), whole.Events().begin(), whole.Events().end());
        int16_t samples[256];
        std::vector<double> sound;
        for (int i = 0; i < 51; ++i) {
            const uint32_t count =
                singer->Step(i ? 0 : static_cast<int32_t>(events.size()), events.data(), samples, 256);
            for (uint32_t k = 0; k < count; ++k)
                sound.push_back(samples[k] / 32768.0);
        }
        CHECK(sound == expected);
    }
}

TEST_CASE("phonemes: unknown symbols are passed over, starts are where an advancement stands") {
    const auto level = [](const char* phonemes) {
        Stream stream;
        stream.Note({.startMs = 200, .phonemes = phonemes});
        return Part(Sing(stream), 135, 195);
    };
    CHECK(Rms(level("?? a")) == 0.0);
    CHECK(Rms(level("s a")) > 0.01);
    CHECK(Rms(level("sa")) == 0.0); // one start: "s" and "a" without an advancement of its own
}
