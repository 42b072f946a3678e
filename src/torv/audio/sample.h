#pragma once

#include "torv/platform/platform.h"

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

/// -1.0..+1.0 of a whole value of 1 to 4 bytes, those of one byte unsigned; one that does not fill its bytes is at
/// their upper end.
inline double SampleAt(const BYTE* bytes, DWORD width) {
    const DWORD value = LoadValue(bytes, width);
    if (width < 2)
        return (static_cast<double>(value) - 128.0) / 128.0;
    return static_cast<LONG>(value << (32 - 8 * width)) / 2147483648.0;
}

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
