#include "synthesis/driver.h"
#include "torv/audio/sample.h"

#include <doctest/doctest.h>

#include <cstring>
#include <vector>

namespace {

/// A driver with rings and no threads.
struct Rings {
    explicit Rings(int tracks, WORD channels = 2, WORD bits = 16, DWORD rate = 44100) {
        REQUIRE(driver.OpenSynthesizer() == 1);
        driver.UseFormat(torv::PcmFormat(channels, bits, rate));
        driver.RTS_SetSynthesisParam(1, tracks, 0, rate, 0, 0);
        REQUIRE(driver.RTS_CreateRVE() == 1);
        driver.PretendToRun();
        driver.RTS_SetMasterPlayParam();
    }
    std::vector<BYTE> Bytes(int track, size_t from, size_t count) {
        const BYTE* samples = driver.RTS_GetOutBuffer(track)->samples;
        return {samples + from, samples + from + count};
    }

    const FakeEngine engine;
    Driver driver;
};

using Bytes = std::vector<BYTE>;

} // namespace

TEST_CASE("ring: an engine sample fills the frame's channels, low byte first, its sign in the bytes beyond") {
    const short sample[]{-2}; // FE FF
    struct Row {
        WORD channels;
        WORD bits;
        Bytes frame;
    };
    const Row rows[] = {{1, 8, {0xFE}},
                        {1, 16, {0xFE, 0xFF}},
                        {1, 24, {0xFE, 0xFF, 0xFF}},
                        {2, 16, {0xFE, 0xFF, 0xFE, 0xFF}},
                        {2, 24, {0xFE, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF}}};
    for (const Row& row : rows) {
        CAPTURE(row.channels);
        CAPTURE(row.bits);
        Rings rings(1, row.channels, row.bits);
        CHECK(rings.driver.RTS_AppendSample(0, sample, 1, 0) == 1);
        CHECK(rings.Bytes(0, 0, row.frame.size()) == row.frame);
        CHECK(rings.driver.RTS_AppendSample(0, sample, 0, 0) == 0);
        CHECK(rings.driver.RTS_AppendSample(1, sample, 1, 0) == 0);
    }
}

TEST_CASE("ring: blocks are full at the frame size, and the last track moves the shared index") {
    Rings rings(2, 1, 16, 48000); // 441 frames a block
    const std::vector<short> samples(441, 7);
    Driver& driver = rings.driver;
    CHECK(driver.RTS_AppendSample(0, samples.data(), 278, 0) == 1);
    CHECK(driver.RTS_AppendSample(0, samples.data(), 279, 0) == 1); // 557: one block and 116
    CHECK(driver.RTS_GetOutBuffer(0)->writeBlock == 1);
    CHECK(driver.RTS_GetOutBuffer(0)->blockFill == 116);
    CHECK(driver.RTS_IsBlkOk(1) == 0); // the first track alone does not count
    CHECK(driver.RTS_AppendSample(1, samples.data(), 441, 0) == 1);
    CHECK(driver.RTS_IsBlkOk(1) == 1);
    CHECK(driver.RTS_IsBlkOk(2) == 0);

    // A block that is closed, and one of silence, hold nothing of the ring's lap before.
    BYTE* const ring = driver.RTS_GetOutBuffer(0)->samples;
    std::memset(ring + (441 + 116) * 2, 0x55, 441 * 4);
    driver.RTS_UpdaatWriteIndex(0);
    CHECK(driver.RTS_GetOutBuffer(0)->writeBlock == 2);
    CHECK(driver.RTS_GetOutBuffer(0)->blockFill == 0);
    CHECK(rings.Bytes(0, (441 + 116) * 2, (441 - 116) * 2) == Bytes((441 - 116) * 2, 0));
    CHECK(driver.RTS_AppendSample(0, nullptr, 2, 1) == 1); // nothing
    CHECK(driver.RTS_GetOutBuffer(0)->writeBlock == 2);
    CHECK(driver.RTS_AppendSample(0, nullptr, 1, 1) == 1); // a block
    CHECK(driver.RTS_GetOutBuffer(0)->writeBlock == 3);
    CHECK(rings.Bytes(0, 2 * 441 * 2, 441 * 2) == Bytes(441 * 2, 0));
}

TEST_CASE("ring: indexes wrap at 3000 blocks, and so does a frame's place") {
    Rings rings(1);
    Driver& driver = rings.driver;
    driver.Ring().read = 2990;
    driver.Ring().write = 10;
    CHECK(driver.RTS_IsBlkOk(20) == 1);
    CHECK(driver.RTS_IsBlkOk(21) == 0);
    driver.Ring().read = 10;
    CHECK(driver.RTS_IsBlkOk(1) == 0); // equal is empty

    driver.Ring().write = 2999;
    driver.Ring().read = 5;
    tagRtsInfo& info = *driver.RTS_GetOutBuffer(0);
    info.writeBlock = 2999;
    info.blockFill = 255;
    const short samples[]{1, 2};
    CHECK(driver.RTS_AppendSample(0, samples, 2, 0) == 1);
    CHECK(info.writeBlock == 0);
    CHECK(info.blockFill == 1);
    CHECK(driver.Ring().write == 0);
    CHECK(rings.Bytes(0, (3000 * 256 - 1) * 4, 4) == Bytes{1, 0, 1, 0});
    CHECK(rings.Bytes(0, 0, 4) == Bytes{2, 0, 2, 0});
}

TEST_CASE("ring: a writer waits while it is full, until there is room or a stop is asked for") {
    Rings rings(1);
    Driver& driver = rings.driver;
    struct Row {
        SHORT read;
        SHORT write;
    };
    for (const Row& row : {Row{0, 2999}, Row{8, 7}}) {
        driver.Ring().read = row.read;
        driver.Ring().write = row.write;
        const short samples[]{1};
        torv::Shared<int> result = -1;
        const auto writer = torv::WorkerThread::Begin([&] { result = driver.RTS_AppendSample(0, samples, 1, 0); });
        CHECK_FALSE(writer->Wait(120));
        driver.Ring().read = static_cast<SHORT>(row.read + 1);
        CHECK(writer->Wait(10000));
        CHECK(result == 1);
    }
    driver.Ring().read = 0;
    driver.Ring().write = 2999;
    driver.RTS_StopSynthesis();
    const short samples[]{1};
    CHECK(driver.RTS_AppendSample(0, samples, 1, 0) == 0);
}

TEST_CASE("ring: the mark is handed over when the one before has been taken") {
    Rings rings(2);
    Driver& driver = rings.driver;
    const std::vector<short> samples(256 * 4, 1);
    for (int track = 0; track < 2; ++track)
        driver.RTS_AppendSample(track, samples.data(), 256 * 3 + 9, 0);
    driver.RTS_MarkWriteIndex(0);
    CHECK_FALSE(driver.Ring().HasMark());
    driver.RTS_MarkWriteIndex(1);
    CHECK(driver.Ring().mark == 3);
    CHECK(driver.RTS_GetOutBuffer(0)->markedBlock == 3);
    CHECK(driver.RTS_GetOutBuffer(0)->blockFill == 0); // what was begun is dropped

    for (int track = 0; track < 2; ++track)
        driver.RTS_AppendSample(track, samples.data(), 256, 0);
    const auto writer = torv::WorkerThread::Begin([&] { driver.RTS_MarkWriteIndex(1); });
    CHECK_FALSE(writer->Wait(50));
    driver.Ring().TakeMark();
    CHECK(writer->Wait(10000));
    CHECK(driver.Ring().mark == 4);
}

TEST_CASE("ring: what a device buffer gets") {
    Rings rings(1);
    Driver& driver = rings.driver;
    driver.PretendToSynthesize(1);
    DWORD bytes = 1;
    BYTE* buffer = nullptr;
    DWORD blocks = 1;
    int endFlag = 1;
    const auto get = [&](DWORD most) { return driver.RTS_GetWaveOutData_2(bytes, buffer, most, 1, blocks, endFlag); };
    const std::vector<short> samples(256 * 10, 0x0102);
    CHECK(get(4) == 2); // nothing there yet
    driver.RTS_AppendSample(0, samples.data(), 256 * 3, 0);
    CHECK(get(4) == 2); // not a whole buffer
    CHECK(driver.RTS_IsBlkOk(3) == 1);
    driver.RTS_AppendSample(0, samples.data(), 256 * 4, 0);
    REQUIRE(get(4) == 1);
    CHECK(blocks == 4);
    CHECK(bytes == 4 * 256 * 4);
    CHECK(endFlag == 0);
    CHECK(Bytes(buffer, buffer + bytes) == Bytes([] {
              Bytes expected;
              for (int i = 0; i < 4 * 256 * 2; ++i)
                  expected.insert(expected.end(), {2, 1});
              return expected;
          }()));
    driver.RTS_MarkWriteIndex(0); // three blocks before it
    driver.RTS_AppendSample(0, samples.data(), 256 * 8, 0);
    CHECK(get(2) == 1);
    CHECK(endFlag == 0);
    CHECK(get(4) == 1); // up to the mark, not beyond
    CHECK(blocks == 1);
    CHECK(endFlag == 1);
    CHECK(get(4) == 2);
    driver.Ring().TakeMark();
    CHECK(get(6) == 1);
    CHECK(get(6) == 2);
    driver.PretendToSynthesize(0); // the rest of the song
    CHECK(get(6) == 1);
    CHECK(blocks == 2);
    CHECK(get(6) == 0);
    CHECK(driver.RTS_GetWaveOutSilentData(bytes, buffer, 2, 2, blocks) == 1);
    CHECK(Bytes(buffer, buffer + bytes) == Bytes(2 * 256 * 4, 0));
}

TEST_CASE("mix: scaling and adding, bit width by bit width") {
    struct Row {
        WORD channels;
        WORD bits;
        Bytes frame;  ///< of the ring
        Bytes before; ///< in the output
        Bytes after;  ///< with track gains 0.75 and 0.25, master gains 1.5 and 0.5
    };
    const Row rows[] = {
        // (228 - 128) x 0.75 x 1.5 + 128 = 240.5, cut; (28 - 128) x 0.25 x 0.5 + 128 = 115.5, and 200 + 115 wraps
        {2, 8, {228, 28}, {1, 200}, {241, 59}},
        // 1000 x 1.125 = 1125, and 32767 + 1125 wraps; -1001 x 0.125 = -125.125, cut to -125
        {2, 16, {0xE8, 0x03, 0x17, 0xFC}, {0xFF, 0x7F, 0, 0}, {0x64, 0x84, 0x83, 0xFF}},
        // 3 << 8 = 768, x 1.125 = 864 = 0x000360, byte by byte without carry: FF + 60 = 5F
        {2, 24, {3, 0, 0, 0, 0, 0}, {0xFF, 0, 0, 5, 6, 7}, {0x5F, 3, 0, 5, 6, 7}},
        // one value for both sides: (1000 x 0.75 + 1000 x 0.25) x 0.5 = 500, x (1.5 + 0.5) x 0.5
        {1, 16, {0xE8, 0x03}, {0, 0}, {0xF4, 0x01}},
        // (100 x 0.75 + 100 x 0.25) x 0.5 = 50, and 128
        {1, 8, {228}, {0}, {178}},
        // floats: 1.0 x 1.125 on 2.0 = 3.125; -1.0 x 0.125
        {2, 32, {0, 0, 0x80, 0x3F, 0, 0, 0x80, 0xBF}, {0, 0, 0, 0x40, 0, 0, 0, 0}, {0, 0, 0x48, 0x40, 0, 0, 0, 0xBE}},
    };
    for (const Row& row : rows) {
        CAPTURE(row.channels);
        CAPTURE(row.bits);
        Rings rings(1, row.channels, row.bits);
        Driver& driver = rings.driver;
        driver.SetMasterOutputChannels(2); // for pans; the format stays
        driver.RTS_SetTrackVolume(0, 0.5);
        driver.RTS_SetTrackPanpot(0, -0.5); // q = 0.25
        driver.SetMasterVolume(1.0, -0.5);
        driver.RTS_SetMasterPlayParam();
        std::memcpy(driver.RTS_GetOutBuffer(0)->samples, row.frame.data(), row.frame.size());
        Bytes out = row.before;
        driver.RTS_WaveDataTrackMix(0, out.data(), static_cast<DWORD>(out.size()), 0);
        CHECK(out == row.after);

        // The frame-wise operations do the same.
        DWORD left = 0;
        DWORD right = 0;
        float outL = 0;
        float outR = 0;
        driver.RTS_ReadSample(row.frame.data(), left, right);
        driver.RTS_AddVolume(0.75, 0.25, left, right, outL, outR);
        Bytes framed = row.before;
        CHECK(driver.RTS_MixOut(reinterpret_cast<char*>(framed.data()), outL, outR) ==
              reinterpret_cast<char*>(framed.data() + framed.size()));
        CHECK(framed == row.after);
    }
}

TEST_CASE("mix: mutes, the ring's end, and values beyond full scale") {
    Rings rings(1);
    Driver& driver = rings.driver;
    BYTE* const ring = driver.RTS_GetOutBuffer(0)->samples;
    const DWORD end = 3000 * 256 * 4;
    const Bytes last{0xFF, 0x7F, 0x01, 0x80}; // 32767 and -32767
    std::memcpy(ring + end - 4, last.data(), 4);
    const Bytes first{1, 0, 2, 0};
    std::memcpy(ring, first.data(), 4);
    const auto mix = [&](DWORD offset) {
        Bytes out(8, 0);
        driver.RTS_WaveDataTrackMix(0, out.data(), 8, offset);
        return out;
    };
    CHECK(mix(end - 4) == Bytes{0xFF, 0x7F, 0x01, 0x80, 1, 0, 2, 0}); // unchanged at gain 1, across the ring's end
    CHECK(mix(end - 3) == Bytes(8, 0));                               // no frame begins there
    driver.RTS_SetTrackVolume(0, 2.0);
    CHECK(mix(end - 4) == Bytes{0xFE, 0xFF, 0x02, 0, 2, 0, 4, 0}); // 65534 wraps to -2
    driver.RTS_SetTrackVolume(0, 131072.0); // beyond what 32 bits hold: 32767 x 2^17 has no low bits
    CHECK(mix(end - 4) == Bytes(8, 0));
    driver.RTS_SetTrackVolume(0, 1.0);
    driver.RTS_SetTrackMute(0, 1);
    CHECK(mix(end - 4) == Bytes(8, 0));
    driver.RTS_SetTrackMute(0, 0);
    driver.SetMute(1); // the master's
    CHECK(mix(end - 4) == Bytes(8, 0));
}

TEST_CASE("mix: under the master mute an 8-bit track still brings the middle of its range") {
    Rings rings(1, 2, 8);
    rings.driver.SetMute(1);
    Bytes out(2, 0);
    rings.driver.RTS_WaveDataTrackMix(0, out.data(), 2, 0);
    CHECK(out == Bytes{128, 128});
}
