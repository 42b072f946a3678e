#include "synthesis/driver.h"
#include "torv/synthesis/mix_formula.h"

#include <random>
#include <vector>

using Bytes = std::vector<BYTE>;

TEST_CASE("mix: scaling and adding, bit width by bit width") {
    const struct {
        WORD channels;
        WORD bits;
        Bytes frame;  ///< of the ring
        Bytes before; ///< in the output
        Bytes after;  ///< with track gains 0.75 and 0.25, master gains 1.5 and 0.5
    } rows[] = {
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
    for (const auto& row : rows) {
        CAPTURE(row.channels);
        CAPTURE(row.bits);
        const auto format = torv::PcmFormat(row.channels, row.bits, 44100);
        Bytes out = row.before;
        torv::MixFrames(out.data(), row.frame.data(), 1, format, {0.75, 0.25, 1.5, 0.5});
        CHECK(out == row.after);

        // The driver's operations on a frame do the same.
        Driver driver;
        driver.m_WaveFormat = format;
        driver.SetMasterVolume(1.0, -0.5);
        driver.RTS_SetMasterPlayParam();
        driver.SetMasterVolume(9.0); // not before it is asked for
        DWORD left = 0;
        DWORD right = 0;
        float outL = 0;
        float outR = 0;
        driver.RTS_ReadSample(row.frame.data(), left, right);
        driver.RTS_AddVolume(0.75, 0.25, left, right, outL, outR);
        Bytes framed = row.before;
        char* const begin = reinterpret_cast<char*>(framed.data());
        CHECK(driver.RTS_MixOut(begin, outL, outR) == begin + framed.size());
        CHECK(framed == row.after);
    }
    Bytes out(2, 0); // under the master mute 8 bits still bring the middle of their range
    torv::MixFrames(out.data(), Bytes{200, 200}.data(), 1, torv::PcmFormat(2, 8, 44100), {1.0, 1.0, 0.0, 0.0});
    CHECK(out == Bytes{128, 128});
}

TEST_CASE("mix: the usual format's quick way gives what the frame by frame way gives") {
    const auto format = torv::PcmFormat(2, 16, 44100);
    std::mt19937 random(5);
    for (const double volume : {0.1, 1.0, 700.0, 131072.0}) { // the last is beyond what 32 bits hold
        const torv::MixGains gains{volume, 0.3, 0.7, volume};
        Bytes ring(4000);
        for (BYTE& byte : ring)
            byte = static_cast<BYTE>(random());
        Bytes quick(ring.rbegin(), ring.rend());
        Bytes slow = quick;
        torv::MixFrames(quick.data(), ring.data(), 1000, format, gains);
        for (size_t at = 0; at < slow.size(); at += 4) {
            const auto values = torv::LoadFrame(ring.data() + at, 2, 4);
            torv::AddOutputFrame(slow.data() + at, format, torv::ScaleValue(values.left, 16, gains.trackL),
                                 torv::ScaleValue(values.right, 16, gains.trackR), gains);
        }
        CHECK(quick == slow);
    }
}
