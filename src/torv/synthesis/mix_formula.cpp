#include "torv/synthesis/mix_formula.h"

#include <cstring>

namespace torv {
namespace {

static_assert(std::endian::native == std::endian::little, "samples are read as they lie in memory");

/// Below this no product of sixteen bits leaves what 32 bits hold.
constexpr double kSmallGain = 16384.0;

bool IsSmall(double track, double master) { return std::fabs(track) * std::fabs(master) < kSmallGain; }

SHORT LoadShort(const BYTE* bytes) {
    SHORT value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// The usual format, written so that the compiler does several frames at once. Both factors are powers of two off the
/// gains, so that every product is what the general form computes.
void MixShortPairs(BYTE* out, const BYTE* ring, DWORD frames, const MixGains& gains) {
    const double trackL = gains.trackL * 3.0517578125e-05;
    const double trackR = gains.trackR * 3.0517578125e-05;
    const double masterL = gains.masterL * 32768.0;
    const double masterR = gains.masterR * 32768.0;
    for (DWORD i = 0; i < frames; ++i, out += 4, ring += 4) {
        const auto left = static_cast<float>(LoadShort(ring) * trackL);
        const auto right = static_cast<float>(LoadShort(ring + 2) * trackR);
        const WORD sums[2]{static_cast<WORD>(LoadShort(out) + static_cast<int>(masterL * left)),
                           static_cast<WORD>(LoadShort(out + 2) + static_cast<int>(masterR * right))};
        std::memcpy(out, sums, sizeof sums);
    }
}

} // namespace

void MixFrames(BYTE* out, const BYTE* ring, DWORD frames, const WAVEFORMATEX& format, const MixGains& gains) {
    const DWORD align = format.nBlockAlign;
    const int bits = format.wBitsPerSample;
    if (bits == 16 && format.nChannels == 2 && align == 4 && IsSmall(gains.trackL, gains.masterL) &&
        IsSmall(gains.trackR, gains.masterR)) {
        MixShortPairs(out, ring, frames, gains);
        return;
    }
    for (DWORD i = 0; i < frames; ++i, ring += align) {
        const FrameValues values = LoadFrame(ring, format.nChannels, align);
        out = AddOutputFrame(out, format, ScaleValue(values.left, bits, gains.trackL),
                             ScaleValue(values.right, bits, gains.trackR), gains);
    }
}

} // namespace torv
