#include "torv/audio/mix_block.h"

#include "audio/wave_test_files.h"

#include <limits>

TEST_CASE("mix block: sides times gains in every width, cut toward zero; one channel is the middle of both") {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    const struct {
        WORD channels, bits;
        bool isMono;
        float left, right; // the sum of two tracks
        torv::StereoGain gain;
        Bytes bytes;
        double level;
        unsigned wrapped;
    } rows[] = {
        {2, 8, false, 0.5F, -0.506F, {1, 1}, {192, 64}, 0.506, 0},                 // 64; -64.77 -> -64; both + 128
        {2, 16, false, 0.5F, -0.00005F, {1, 1}, {0, 0x40, 0xFF, 0xFF}, 0.5, 0},    // 16384; -1.6384 -> -1
        {2, 24, false, 0.25F, -0.5F, {1, 1}, {0, 0, 0x20, 0, 0, 0xC0}, 0.5, 0},    // 2^21; -2^22
        {2, 32, false, 0.5F, -2.0F, {1, 1}, {0, 0, 0, 0x3F, 0, 0, 0, 0xC0}, 2, 0}, // floats hold it
        {2, 16, false, 0.5F, 0.5F, {0.5, 1.5}, {0, 0x20, 0, 0x60}, 0.75, 0},       // 8192; 24576
        {2, 12, false, 0.5F, 0.5F, {1, 1}, {0, 0, 0}, 0, 0},                       // no such width
        {3, 8, false, 0.5F, 0.5F, {1, 1}, {0, 0, 0}, 0, 0},                        // nor so many sides
        {1, 16, true, 0.5F, 0.25F, {0.5, 1.0}, {0, 0x24}, 0.28125, 0},             // 0.375 x 0.75 x 32768 = 9216
        {2, 8, false, -1.0078125F, 0, {1, 1}, {0xFF, 128}, 1.0078125, 1},          // -129
        {1, 8, true, 2.0F, 2.0F, {1, 1}, {128}, 2, 1},                             // 256 + 128
        {2, 16, true, 0.5F, 0.25F, {0.5, 1.0}, {0, 0x24, 0, 0x24}, 0.28125, 0},
        {2, 16, false, 0.999F, -1.0F, {1, 1}, {0xDF, 0x7F, 0, 0x80}, 1, 0},         // 32735.2; -32768 is a sample
        {2, 16, false, -1.5F, 1.0F, {1, 1}, {0, 0x40, 0, 0x80}, 1.5, 1},            // -49152; 32768: once a frame
        {2, 24, false, 131072.25F, 0, {1, 1}, {0, 0, 0x20, 0, 0, 0}, 131072.25, 1}, // 2^40 + 2^21: beyond 32 bits
        {2, 16, false, kNaN, 0, {1, 1}, {0, 0, 0, 0}, 0, 0},
    };
    for (const auto& row : rows) {
        CAPTURE(&row - rows);
        torv::MixBlock block(1, row.isMono);
        const float half[] = {row.left / 2, row.right / 2};
        block.Add(&half[0], &half[1]);
        block.Add(&half[0], &half[1]);
        const auto align = static_cast<WORD>(row.bytes.size());
        Bytes bytes(align, 99);
        torv::MixPeak peak;
        block.Write(bytes.data(), {1, row.channels, 44100, 44100u * align, align, row.bits, 0}, row.gain, peak);
        CHECK(bytes == row.bytes);
        CHECK(peak.level == doctest::Approx(row.level));
        CHECK(peak.wrappedFrames == row.wrapped);
    }
}
