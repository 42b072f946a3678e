#include "torv/audio/mix_block.h"

#include "audio/wave_test_files.h"

#include <doctest/doctest.h>

#include <limits>

namespace {

/// One frame, the sum of two tracks, as bytes.
Bytes Mixed(const WAVEFORMATEX& format, bool isMono, float left, float right, torv::StereoGain gain = {1.0, 1.0},
            torv::MixPeak* peak = nullptr) {
    torv::MixBlock block(1, isMono);
    const float half[] = {left / 2, right / 2};
    block.Add(&half[0], &half[1]);
    block.Add(&half[0], &half[1]);
    Bytes bytes(format.nBlockAlign);
    torv::MixPeak unused;
    block.Write(bytes.data(), format, gain, peak ? *peak : unused);
    return bytes;
}

} // namespace

TEST_CASE("mix block: two sides in every width, cut toward zero") {
    CHECK(Mixed(Format(2, 8), false, 0.5F, -0.506F) == Bytes{192, 64});                // 64; -64.77 -> -64; both + 128
    CHECK(Mixed(Format(2, 16), false, 0.5F, -0.00005F) == Bytes{0, 0x40, 0xFF, 0xFF}); // 16384; -1.6384 -> -1
    CHECK(Mixed(Format(2, 24), false, 0.5F, -0.25F) == Bytes{0, 0, 0x40, 0, 0, 0xE0}); // 2^22; -2^21
    CHECK(Mixed(Format(2, 32), false, 0.5F, -2.0F) == Bytes{0, 0, 0, 0x3F, 0, 0, 0, 0xC0}); // floats, not cut
    CHECK(Mixed(Format(2, 16), false, 0.5F, 0.5F, {0.5, 1.5}) == Bytes{0, 0x20, 0, 0x60});  // 8192; 24576
    CHECK(Mixed(Format(2, 12), false, 0.5F, 0.5F) == Bytes(3));                             // no such width
}

TEST_CASE("mix block: one output channel is the middle of both sides, by the middle of both gains") {
    const torv::StereoGain gain{0.5, 1.0};                                  // 0.75
    CHECK(Mixed(Format(1, 16), true, 0.5F, 0.25F, gain) == Bytes{0, 0x24}); // 0.375 x 0.75 x 32768 = 9216
    CHECK(Mixed(Format(1, 8), true, 0.5F, 0.25F, gain) == Bytes{164});      // 36 + 128
    CHECK(Mixed(Format(2, 16), true, 0.5F, 0.25F, gain) == Bytes{0, 0x24, 0, 0x24});
}

TEST_CASE("mix block: beyond full scale the low bits stay, and are told") {
    torv::MixPeak peak;
    CHECK(Mixed(Format(2, 16), false, 0.999F, -1.0F, {1, 1}, &peak) == Bytes{0xDF, 0x7F, 0, 0x80}); // 32735.2
    CHECK(peak.level == 1.0);
    CHECK(peak.wrappedFrames == 0);                                                            // -32768 is a sample
    CHECK(Mixed(Format(2, 16), false, 1.0F, -1.5F, {1, 1}, &peak) == Bytes{0, 0x80, 0, 0x40}); // 32768; -49152
    CHECK(peak.level == 1.5);
    CHECK(peak.wrappedFrames == 1);
    // 2^40 + 1 x 2^15: beyond 32 bits
    CHECK(Mixed(Format(2, 24), false, 131072.0F + 0.25F, 0, {1, 1}, &peak) == Bytes{0, 0, 0x20, 0, 0, 0});
    CHECK(Mixed(Format(1, 8), true, 2.0F, 2.0F, {1, 1}, &peak) == Bytes{128}); // 256 + 128
    CHECK(peak.wrappedFrames == 3);
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    CHECK(Mixed(Format(2, 16), false, kNaN, 0, {1, 1}, &peak) == Bytes(4));
    CHECK(Mixed(Format(2, 32), false, 8.0F, 0, {1, 1}, &peak) == Bytes{0, 0, 0, 0x41, 0, 0, 0, 0});
    CHECK(peak.wrappedFrames == 3); // a float holds it
}
