#pragma once

#include "torv/audio/gain.h"
#include "torv/platform/platform.h"

#include <algorithm>
#include <bit>

/// Sample values as they lie in files, rings and device buffers: little-endian, held in the low bits of a DWORD.
namespace torv {

inline DWORD LoadValue(const BYTE* bytes, DWORD width) {
    DWORD value = 0;
    for (DWORD i = 0; i < width && i < sizeof value; ++i)
        value |= static_cast<DWORD>(bytes[i]) << (8 * i);
    return value;
}

inline void StoreValue(BYTE* bytes, DWORD width, DWORD value) {
    for (DWORD i = 0; i < width; ++i, value >>= 8)
        bytes[i] = value & 0xFF;
}

struct FrameValues {
    DWORD left = 0;
    DWORD right = 0;
};

/// One sample frame of `align` bytes: one channel holds a value of the whole frame that counts for both sides, two
/// share it in halves; any other channel count holds nothing that could be played.
inline FrameValues LoadFrame(const BYTE* frame, int channels, DWORD align) {
    if (channels == 1) {
        const DWORD value = LoadValue(frame, align);
        return {value, value};
    }
    if (channels == 2)
        return {LoadValue(frame, align / 2), LoadValue(frame + align / 2, align / 2)};
    return {};
}

/// The reverse; one channel takes the left value, and a frame of another channel count stays as it is.
inline void StoreFrame(BYTE* frame, int channels, DWORD align, FrameValues values) {
    if (channels == 1)
        StoreValue(frame, align, values.left);
    if (channels == 2) {
        StoreValue(frame, align / 2, values.left);
        StoreValue(frame + align / 2, align / 2, values.right);
    }
}

/// A stored value as a float, scaled. 8 bits are unsigned around 128, 16 signed, 32 a float. The 24-bit factor belongs
/// to the value before its shift, so full scale gives 256: levels of mixes made with it depend on that. Any other width
/// gives 0.
inline float ScaleValue(DWORD value, int bits, double gain) {
    switch (bits) {
    case 8:
        return static_cast<float>((static_cast<double>(value) - 128.0) * gain * 0.0078125);
    case 16:
        return static_cast<float>(static_cast<SHORT>(value & 0xFFFF) * gain * 3.0517578125e-05);
    case 24:
        return static_cast<float>(static_cast<LONG>(value << 8) * gain * 1.1920928955078125e-07);
    case 32:
        return static_cast<float>(std::bit_cast<float>(value) * gain);
    default:
        return 0.0F;
    }
}

/// What full scale 1.0 is as a stored value; 0 for any other width.
constexpr double FullScale(int bits) {
    switch (bits) {
    case 8:
        return 128.0;
    case 16:
        return 32768.0;
    case 24:
        return 8388608.0;
    case 32:
        return 1.0; // a float
    default:
        return 0.0;
    }
}

/// A stored value of 8 to 32 bits as a whole number: 8 bits are unsigned around 128, others signed. No bits are 0.
inline LONG WholeValue(DWORD value, int bits) {
    if (bits == 8)
        return static_cast<LONG>(value) - 128;
    const int unused = 32 - bits;
    return unused >= 0 && unused < 32 ? static_cast<LONG>(value << unused) >> unused : 0;
}

/// The reverse; of a number that the bits cannot hold the low ones are kept.
inline DWORD StoredValue(long long whole, int bits) { return static_cast<DWORD>(bits == 8 ? whole + 128 : whole); }

/// The nearest whole number that so many bits hold.
inline long long HeldValue(long long whole, int bits) {
    const long long limit = 1LL << (bits - 1);
    return std::clamp(whole, -limit, limit - 1);
}

/// -1.0..+1.0 of a whole value of 1 to 4 bytes; one that does not fill its bytes is at their upper end.
inline double SampleAt(const BYTE* bytes, DWORD width) {
    if (width == 0 || width > sizeof(DWORD))
        return 0.0;
    const int bits = static_cast<int>(8 * width);
    return static_cast<double>(WholeValue(LoadValue(bytes, width), bits)) / static_cast<double>(1LL << (bits - 1));
}

/// The reverse, cut toward zero; what lies outside stays at the ends.
inline DWORD SampleOf(double sample, int bits) {
    return StoredValue(HeldValue(TruncateToInt64(sample * static_cast<double>(1LL << (bits - 1))), bits), bits);
}

/// A stored value scaled within its own width, cut toward zero; what passes the width stays at its ends or wraps.
DWORD ScaledWithin(DWORD value, int bits, double gain, bool stays);

/// What ScaleValue makes of 16-bit mono frames for the two sides, several at once.
void ScaleShorts(const BYTE* frames, DWORD count, const StereoGain& gain, float* left, float* right);

/// Whether frames of such a format can be cut into values.
inline bool IsUsableFormat(const WAVEFORMATEX& format) {
    return format.nBlockAlign != 0 && format.nChannels != 0 && format.wBitsPerSample % 8 == 0 &&
           format.nBlockAlign == format.nChannels * (format.wBitsPerSample / 8);
}

inline WAVEFORMATEX PcmFormat(WORD channels, WORD bits, DWORD rate) {
    const WORD align = static_cast<WORD>(channels * (bits / 8));
    return {WAVE_FORMAT_PCM, channels, rate, rate * align, align, bits, 0};
}

constexpr DWORD kDefaultSampleRate = 44100;

} // namespace torv
