#include "audio/wave_out_fixture.h"
#include "synthesis/driver.h"
#include "torv/audio/sample.h"
#include "torv/synthesis/ring_writer.h"
#include "values.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace {

constexpr DWORD kFrames = 4;                  // of a block
constexpr DWORD kRingFrames = 2999 * kFrames; // one block stays free

torv::SynthRing Mono(size_t tracks) {
    return {torv::PcmFormat(1, 16, 44100), kFrames, std::vector<torv::EngineInstance>(tracks)};
}

Shorts Read(torv::SynthRing& ring, DWORD blocks) {
    Shorts samples(blocks * kFrames, 99);
    ring.Read(reinterpret_cast<BYTE*>(samples.data()), blocks, {});
    return samples;
}

} // namespace

TEST_CASE("ring: what was appended is what is mixed, once and in order, however both are cut") {
    torv::SynthRing ring = Mono(2);
    std::mt19937 random(11);
    Shorts expected;
    Shorts heard;
    size_t passEnd = 0;
    short next = 0;
    const auto take = [&](DWORD most, bool isMore) {
        const auto portion = ring.Next(most, isMore);
        REQUIRE(portion.blocks <= most);
        const Shorts mixed = Read(ring, portion.blocks);
        heard.insert(heard.end(), mixed.begin(), mixed.end());
        if (portion.endsPass) {
            REQUIRE(heard.size() == passEnd);
            ring.TakeMark();
        }
        return portion.blocks > 0 || portion.endsPass;
    };
    for (int turn = 0; turn < 6000; ++turn) { // several laps
        const DWORD count = turn % 100 == 50 ? 20000 : random() % 40;
        Shorts samples(count);
        switch (random() % 8) {
        default: {
            std::generate(samples.begin(), samples.end(), [&] { return static_cast<short>(next++ % 10000); });
            const DWORD taken = ring.Append(0, samples.data(), count);
            REQUIRE(ring.Append(1, samples.data(), count) == taken);
            expected.insert(expected.end(), samples.begin(), samples.begin() + taken);
            const DWORD filled = static_cast<DWORD>(expected.size() - heard.size());
            REQUIRE((taken == count || filled == kRingFrames)); // waits only when it is full
            REQUIRE(ring.Buffered() == filled / kFrames);
            break;
        }
        case 0:
            if (ring.Close(0)) {
                REQUIRE(ring.Close(1));
                expected.resize((expected.size() / kFrames + 1) * kFrames, 0);
            } else
                REQUIRE(ring.Buffered() == 2999);
            break;
        case 1: {
            const bool isFree = !ring.HasMark();
            REQUIRE(ring.Mark(0));
            REQUIRE(ring.Mark(1) == isFree);
            expected.resize(expected.size() / kFrames * kFrames); // what was begun of a block is dropped
            if (isFree)
                passEnd = expected.size();
            break;
        }
        case 2:
        case 3:
            take(random() % 30 + 1, random() % 2);
        }
    }
    while (take(7, false)) {
    }
    for (short& sample : expected)
        sample = static_cast<short>(sample * 2); // two tracks
    expected.resize(heard.size());
    CHECK(expected.size() > 4 * kRingFrames);
    CHECK((heard == expected));
}

TEST_CASE("ring: what is to be read next") {
    torv::SynthRing ring = Mono(1);
    const Shorts samples(10 * kFrames, 1);
    const auto next = [&](DWORD most, bool isMore) {
        const auto portion = ring.Next(most, isMore);
        using Content = torv::SynthRing::Content;
        return Values(portion.content == Content::Data     ? "data"
                      : portion.content == Content::NotYet ? "not yet"
                                                           : "none",
                      portion.blocks, portion.endsPass ? "end" : "-");
    };
    CHECK(next(4, true) == "not yet 0 -");
    CHECK(next(4, false) == "none 0 -");
    ring.Append(0, samples.data(), 3 * kFrames + 1);
    CHECK(next(4, true) == "not yet 0 -"); // not a whole buffer
    CHECK(next(3, true) == "data 3 -");
    CHECK(next(4, false) == "data 3 -"); // the rest of the song
    CHECK_FALSE(ring.IsPassEmpty());
    REQUIRE(ring.Mark(0));
    CHECK(Values(ring.IsPassEmpty(), ring.Tracks()[0].info.markedBlock) == "1 3");
    ring.Append(0, samples.data(), 5 * kFrames);
    CHECK_FALSE(ring.Mark(0)); // the one before has not been taken
    CHECK(next(2, true) == "data 2 -");
    CHECK(next(3, true) == "data 3 end");
    CHECK(next(7, true) == "data 3 end"); // up to the mark, not beyond
    Read(ring, 3);
    CHECK(next(7, true) == "not yet 0 end"); // the pass was over with what has been read
    ring.TakeMark();
    CHECK(ring.Mark(0));
    CHECK(next(7, true) == "data 5 end");
    ring.Restart();
    CHECK(next(1, true) == "not yet 0 -");
    CHECK(ring.IsPassEmpty());
    CHECK(Values(ring.Tracks()[0].info.markedBlock, ring.Tracks()[0].info.writeBlock) == "32768 0");
}

TEST_CASE("ring: an engine sample fills the frame's channels, low byte first, its sign in the bytes beyond") {
    for (const WORD channels : {1, 2})
        for (const WORD bytes : {1, 2, 3}) {
            torv::SynthRing ring(torv::PcmFormat(channels, bytes * 8, 44100), 256,
                                 std::vector<torv::EngineInstance>(1));
            const short sample = -2;
            REQUIRE(ring.Append(0, &sample, 1) == 1);
            const std::string value = "\xFE\xFF\xFF"s.substr(0, bytes);
            const std::string frame = (channels == 2 ? value : "") + value + "\0"s;
            CHECK(std::memcmp(ring.Tracks()[0].info.samples, frame.data(), frame.size()) == 0);
        }
}

TEST_CASE("ring: one track of the mix, across the ring's end, unless it is muted") {
    torv::SynthRing ring = Mono(1);
    torv::SynthTrack& track = ring.Tracks()[0];
    const DWORD end = 3000 * kFrames * 2;
    auto* const samples = reinterpret_cast<short*>(track.info.samples);
    samples[end / 2 - 1] = 32767;
    samples[0] = 1;
    const auto mix = [&](DWORD offset) {
        Shorts out(2);
        ring.Mix(track, reinterpret_cast<BYTE*>(out.data()), 5, offset, {}); // whole frames only
        return Values(out[0], out[1]);
    };
    CHECK(mix(end - 2) == "32767 1");
    CHECK(mix(2 * end - 2) == "32767 1");
    CHECK(mix(end - 1) == "0 0"); // no frame begins there
    track.SetVolume(2.0);
    CHECK(mix(end - 2) == "-2 2"); // 65534 wraps
    track.mute = 1;
    CHECK(mix(end - 2) == "0 0");
}

TEST_CASE("ring: a writer waits for room and for the mark, and gives up when it is interrupted") {
    torv::SynthRing ring = Mono(1);
    torv::PlayState state;
    torv::RingWriter writer(ring, state);
    state.BeginSynthesis();
    const Shorts samples = Ramp(kRingFrames + 3 * kFrames, 1);
    {
        const BegunThread waiting([&] { writer.Append(0, samples.data(), static_cast<DWORD>(samples.size())); });
        REQUIRE(Await([&] { return ring.Buffered() == 2999; }));
        CHECK_FALSE(waiting.End(0));
        CHECK(Read(ring, 5) == Ramp(5 * kFrames, 1));
        CHECK(waiting.End());
    }
    CHECK((Read(ring, 2997) == Shorts(samples.begin() + 5 * kFrames, samples.end()))); // nothing was overwritten
    writer.Append(0, samples.data(), kRingFrames);
    REQUIRE(writer.Mark(0));
    for (const bool isStop : {false, true}) {
        if (isStop)
            state.AskToStop();
        else
            state.AskForRestart();
        CHECK(Values(writer.Append(0, samples.data(), 1), writer.Close(0), writer.Mark(0)) == "0 0 0");
        state.RestartsDone(state.RestartsAsked());
    }
}
