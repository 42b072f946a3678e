#include "torv/audio/mix_block.h"

#include "torv/audio/sample.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace torv {
namespace {

constexpr double kIntRange = 2147483648.0;

/// The low bits of what the value is when cut toward zero; those beyond 64 bits, and NaN, as TruncateToInt64 has them.
DWORD LowBits(double value) {
    return std::fabs(value) < kIntRange ? static_cast<DWORD>(static_cast<int>(value))
                                        : static_cast<DWORD>(TruncateToInt64(value));
}

template <int bits>
DWORD Stored(double value) {
    if constexpr (bits == 32)
        return std::bit_cast<DWORD>(static_cast<float>(value));
    else
        return LowBits(value) + (bits == 8 ? 128 : 0);
}

/// Values of one side, `step` bytes apart.
template <int bits>
void WriteSide(const double* values, DWORD count, double gain, BYTE* out, DWORD step) {
    for (DWORD i = 0; i < count; ++i, out += step)
        StoreValue(out, bits / 8, Stored<bits>(values[i] * gain));
}

void WriteSide(const double* values, DWORD count, int bits, double gain, BYTE* out, DWORD step) {
    switch (bits) {
    case 8:
        return WriteSide<8>(values, count, gain, out, step);
    case 16:
        return WriteSide<16>(values, count, gain, out, step);
    case 24:
        return WriteSide<24>(values, count, gain, out, step);
    default:
        return WriteSide<32>(values, count, gain, out, step);
    }
}

/// Ends of a side's values, a NaN passed over.
struct Range {
    double low = 0.0;
    double high = 0.0;
    double Magnitude() const { return std::max(high, -low); }
};

Range RangeOf(const double* values, DWORD count, double gain) {
    Range range;
    for (DWORD i = 0; i < count; ++i) {
        const double value = values[i] * gain;
        range.low = value < range.low ? value : range.low;
        range.high = value > range.high ? value : range.high;
    }
    return range;
}

bool Wraps(double value, double scale) { return value >= scale || value <= -scale - 1.0; }

} // namespace

MixBlock::MixBlock(DWORD frames, bool isMono) : m_frames(std::min(frames, kFrames)), m_isMono(isMono) {
    std::fill_n(m_left.begin(), m_frames, 0.0);
    std::fill_n(m_right.begin(), m_frames, 0.0);
}

void MixBlock::Add(const float* left, const float* right) {
    if (m_isMono) {
        for (DWORD i = 0; i < m_frames; ++i)
            m_left[i] += (static_cast<double>(left[i]) + right[i]) * 0.5;
        return;
    }
    for (DWORD i = 0; i < m_frames; ++i) {
        m_left[i] += left[i];
        m_right[i] += right[i];
    }
}

void MixBlock::Write(BYTE* out, const WAVEFORMATEX& format, const StereoGain& gain, MixPeak& peak) const {
    const int bits = format.wBitsPerSample;
    const DWORD align = format.nBlockAlign;
    const double scale = FullScale(bits);
    if (scale == 0.0 || format.nChannels < 1 || format.nChannels > 2) {
        std::memset(out, 0, static_cast<size_t>(m_frames) * align);
        return;
    }
    // The scale is a power of two, so that it changes no product but in its exponent.
    const double left = gain.left * scale;
    const double right = gain.right * scale;
    const double middle = (right + left) * 0.5;
    const double gains[2] = {m_isMono ? middle : left, m_isMono ? middle : right};
    const double* const sides[2] = {Left(), Right()};
    double most = 0.0;
    bool isBeyond = false;
    for (int side = 0; side < format.nChannels; ++side) {
        WriteSide(sides[side], m_frames, bits, gains[side], out + static_cast<size_t>(side) * (bits / 8), align);
        const Range range = RangeOf(sides[side], m_frames, gains[side]);
        most = std::max(most, range.Magnitude());
        isBeyond = isBeyond || Wraps(range.high, scale) || Wraps(range.low, scale);
    }
    peak.level = std::max(peak.level, most / scale);
    if (!isBeyond || bits == 32)
        return;
    for (DWORD i = 0; i < m_frames; ++i)
        peak.wrappedFrames +=
            Wraps(sides[0][i] * gains[0], scale) || (format.nChannels == 2 && Wraps(sides[1][i] * gains[1], scale));
}

} // namespace torv
