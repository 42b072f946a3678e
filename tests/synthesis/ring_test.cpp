#include "synthesis/driver.h"
#include "torv/audio/sample.h"
#include "torv/synthesis/ring_writer.h"

#include <cstring>
#include <numeric>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;
using Samples = std::vector<short>;
using Content = torv::SynthRing::Content;

constexpr DWORD kFrames = 4;                  // of a block
constexpr DWORD kRingFrames = 2999 * kFrames; // one block stays free

torv::SynthRing Mono(size_t tracks) {
    return {torv::PcmFormat(1, 16, 44100), kFrames, std::vector<torv::EngineInstance>(tracks)};
}

Samples Read(torv::SynthRing& ring, DWORD blocks) {
    Samples samples(blocks * kFrames, 99);
    ring.Read(reinterpret_cast<BYTE*>(samples.data()), blocks, {});
    return samples;
}

} // namespace

TEST_CASE("ring: what was appended is what is mixed, once and in order, however both are cut") {
    torv::SynthRing ring = Mono(2);
    std::mt19937 random(11);
    Samples expected;
    Samples heard;
    size_t passEnd = 0;
    short next = 0;
    const auto take = [&](DWORD most, bool isMore) {
        const auto portion = ring.Next(most, isMore);
        REQUIRE(portion.blocks <= most);
        if (portion.content == Content::Data) {
            const Samples mixed = Read(ring, portion.blocks);
            heard.insert(heard.end(), mixed.begin(), mixed.end());
        }
        if (portion.endsPass) {
            REQUIRE(heard.size() == passEnd);
            ring.TakeMark();
        }
        return portion;
    };
    for (int turn = 0; turn < 6000; ++turn) { // several laps
        const DWORD count = turn % 100 == 50 ? 20000 : random() % 40;
        Samples samples(count);
        switch (random() % 8) {
        default: {
            std::generate(samples.begin(), samples.end(), [&] { return static_cast<short>(next++ % 10000); });
            const DWORD taken = ring.Append(0, samples.data(), count);
            REQUIRE(ring.Append(1, samples.data(), count) == taken);
            expected.insert(expected.end(), samples.begin(), samples.begin() + taken);
            const DWORD filled = static_cast<DWORD>(expected.size() - heard.size());
            REQUIRE(filled <= kRingFrames);
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
    while (ring.IsBlockBegun())
        for (size_t track = 0; track < 2; ++track)
            if (!ring.Close(track))
                take(1, false);
    while (take(7, false).content != Content::None || ring.HasMark()) {
    }
    for (short& sample : expected)
        sample = static_cast<short>(sample * 2); // two tracks
    heard.resize(expected.size());
    CHECK(expected.size() > 4 * kRingFrames);
    CHECK(heard == expected);
}

TEST_CASE("ring: what is to be read next") {
    torv::SynthRing ring = Mono(1);
    const Samples samples(10 * kFrames, 1);
    const auto check = [&](DWORD most, bool isMore, Content content, DWORD blocks, bool endsPass) {
        const auto portion = ring.Next(most, isMore);
        CHECK(portion.content == content);
        CHECK(portion.blocks == blocks);
        CHECK(portion.endsPass == endsPass);
    };
    check(4, true, Content::NotYet, 0, false);
    check(4, false, Content::None, 0, false);
    ring.Append(0, samples.data(), 3 * kFrames + 1);
    check(4, true, Content::NotYet, 0, false); // not a whole buffer
    check(3, true, Content::Data, 3, false);
    check(4, false, Content::Data, 3, false); // the rest of the song
    CHECK_FALSE(ring.IsPassEmpty());
    REQUIRE(ring.Mark(0));
    CHECK(ring.IsPassEmpty());
    CHECK(ring.Tracks()[0].info.markedBlock == 3);
    ring.Append(0, samples.data(), 5 * kFrames);
    CHECK_FALSE(ring.Mark(0)); // the one before has not been taken
    check(2, true, Content::Data, 2, false);
    check(3, true, Content::Data, 3, true);
    check(7, true, Content::Data, 3, true); // up to the mark, not beyond
    Read(ring, 3);
    check(7, true, Content::NotYet, 0, true); // the pass was over with what has been read
    ring.TakeMark();
    CHECK(ring.Mark(0));
    check(7, true, Content::Data, 5, true);
    ring.Restart();
    check(1, true, Content::NotYet, 0, false);
    CHECK(ring.Tracks()[0].info.markedBlock == 0x8000);
    CHECK(ring.Tracks()[0].info.writeBlock == 0);
}

TEST_CASE("ring: an engine sample fills the frame's channels, low byte first, its sign in the bytes beyond") {
    for (const WORD channels : {1, 2})
        for (const WORD bytes : {1, 2, 3}) {
            CAPTURE(bytes);
            torv::SynthRing ring(torv::PcmFormat(channels, bytes * 8, 44100), 256,
                                 std::vector<torv::EngineInstance>(1));
            const short sample = -2;
            REQUIRE(ring.Append(0, &sample, 1) == 1);
            Bytes frame;
            for (int channel = 0; channel < channels; ++channel)
                for (int byte = 0; byte < bytes; ++byte)
                    frame.push_back(byte == 0 ? 0xFE : 0xFF);
            const BYTE* const at = ring.Tracks()[0].info.samples;
            CHECK(Bytes(at, at + frame.size()) == frame);
            CHECK(at[frame.size()] == 0);
        }
}

TEST_CASE("ring: one track of the mix, across the ring's end, unless it is muted") {
    torv::SynthRing ring = Mono(1);
    torv::SynthTrack& track = ring.Tracks()[0];
    const DWORD end = 3000 * kFrames * 2;
    const BYTE last[]{0xFF, 0x7F};
    const BYTE first[]{1, 0};
    std::memcpy(track.info.samples + end - 2, last, 2);
    std::memcpy(track.info.samples, first, 2);
    const auto mix = [&](DWORD offset) {
        Bytes out(4, 0);
        ring.Mix(track, out.data(), 5, offset, {}); // whole frames only
        return out;
    };
    CHECK(mix(end - 2) == Bytes{0xFF, 0x7F, 1, 0});
    CHECK(mix(2 * end - 2) == Bytes{0xFF, 0x7F, 1, 0});
    CHECK(mix(end - 1) == Bytes(4, 0)); // no frame begins there
    track.SetVolume(2.0);
    CHECK(mix(end - 2) == Bytes{0xFE, 0xFF, 2, 0}); // 65534 wraps to -2
    track.mute = 1;
    CHECK(mix(end - 2) == Bytes(4, 0));
}

TEST_CASE("ring: a writer waits for room and for the mark, and gives up when it is interrupted") {
    torv::SynthRing ring = Mono(1);
    torv::PlayState state;
    torv::RingWriter writer(ring, state);
    state.BeginSynthesis();
    Samples samples(kRingFrames + 3 * kFrames);
    std::iota(samples.begin(), samples.end(), short{0});
    torv::Shared<int> result = -1;
    const auto waiting = torv::WorkerThread::Begin(
        [&] { result = writer.Append(0, samples.data(), static_cast<DWORD>(samples.size())); });
    while (ring.Buffered() < 2999)
        Sleep(0);
    CHECK(result == -1);
    const Samples early = Read(ring, 3);
    waiting->Wait();
    CHECK(result == 1);
    CHECK(early == Samples(samples.begin(), samples.begin() + 3 * kFrames));
    CHECK(Read(ring, 2999) == Samples(samples.begin() + 3 * kFrames, samples.end())); // nothing was overwritten

    writer.Append(0, samples.data(), kRingFrames);
    REQUIRE(writer.Mark(0));
    SUBCASE("by a stop") { state.AskToStop(); }
    SUBCASE("by a new start") { state.AskForRestart(); }
    CHECK_FALSE(writer.Append(0, samples.data(), 1));
    CHECK_FALSE(writer.Close(0));
    CHECK_FALSE(writer.Mark(0));
}
