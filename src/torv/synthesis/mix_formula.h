#pragma once

#include "torv/audio/sample.h"
#include "torv/platform/platform.h"

#include <cmath>

/// How one frame of a track's ring comes into the output: scaled to floating point by the track's gains, then added by
/// the master gains. Additions wrap and nothing is clipped.
namespace torv {

struct MixGains {
    double trackL = 1.0;
    double trackR = 1.0;
    double masterL = 1.0; ///< 0 under the master mute
    double masterR = 1.0;
};

/// Adds one value of `bits` to the output. An 8-bit one brings the middle of its range with it each time, so that
/// several tracks shift the sum; a 24-bit one is added byte by byte, without carry. Levels of old mixes depend on both.
inline void AddOutputValue(BYTE* out, int bits, double scaled) {
    if (bits == 32) {
        const auto sum = static_cast<float>(std::bit_cast<float>(LoadValue(out, 4)) + scaled);
        StoreValue(out, 4, std::bit_cast<DWORD>(sum));
        return;
    }
    const auto added = static_cast<ULONGLONG>(TruncateToInt64(bits == 8 ? scaled + 128.0 : scaled));
    if (bits == 16) {
        StoreValue(out, 2, LoadValue(out, 2) + static_cast<DWORD>(added));
        return;
    }
    for (int byte = 0; byte < bits / 8; ++byte)
        out[byte] = static_cast<BYTE>(out[byte] + (added >> (8 * byte)));
}

/// Adds one frame to the output and returns where the next one is; other channel counts than 1 and 2 take nothing.
inline BYTE* AddOutputFrame(BYTE* out, const WAVEFORMATEX& format, float left, float right, const MixGains& gains) {
    const int bits = format.wBitsPerSample;
    const double scale = FullScale(bits);
    if (format.nChannels == 2) {
        AddOutputValue(out, bits, gains.masterL * scale * left);
        AddOutputValue(out + format.nBlockAlign / 2, bits, gains.masterR * scale * right);
    } else if (format.nChannels == 1) {
        const double middle = (left + right) * 0.5;
        AddOutputValue(out, bits, (gains.masterL * scale + gains.masterR * scale) * 0.5 * middle);
    }
    return out + format.nBlockAlign;
}

/// Adds `frames` frames of a ring, which has the output's own format, to the output.
void MixFrames(BYTE* out, const BYTE* ring, DWORD frames, const WAVEFORMATEX& format, const MixGains& gains);

} // namespace torv
