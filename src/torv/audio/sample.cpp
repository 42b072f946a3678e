#include "torv/audio/sample.h"

#include <cstring>

namespace torv {

DWORD ScaledWithin(DWORD value, int bits, double gain, bool stays) {
    if (bits == 32)
        return std::bit_cast<DWORD>(static_cast<float>(std::bit_cast<float>(value) * gain));
    const long long scaled = TruncateToInt64(WholeValue(value, bits) * gain);
    return StoredValue(stays ? HeldValue(scaled, bits) : scaled, bits);
}

/// The factor is a power of two, which may as well be in the gain.
void ScaleShorts(const BYTE* frames, DWORD count, const StereoGain& gain, float* left, float* right) {
    static_assert(std::endian::native == std::endian::little, "samples are read as they lie in memory");
    const double gainLeft = gain.left * 3.0517578125e-05;
    const double gainRight = gain.right * 3.0517578125e-05;
    for (DWORD i = 0; i < count; ++i) {
        SHORT value;
        std::memcpy(&value, frames + i * sizeof value, sizeof value);
        left[i] = static_cast<float>(value * gainLeft);
        right[i] = static_cast<float>(value * gainRight);
    }
}

} // namespace torv
