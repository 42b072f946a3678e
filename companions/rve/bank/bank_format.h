#pragma once

#include <cstddef>
#include <cstdint>

/// The file of a recorded voice, little-endian throughout: a header, `phones` names of eight bytes, the frames, for
/// every phone and every pair of neighbours the place of its sequence (a 32-bit index into the sequences), and the
/// sequences (16 bits each): a word with the frame counts of the phone's three states (5 bits each, the first state
/// lowest), then as many frame numbers. Phone 0 is silence, which has neighbours but no sequences (kNoSequence).
namespace rve::bank {

inline constexpr char kMagic[8] = {'T', 'O', 'R', 'V', 'B', 'A', 'N', 'K'};
inline constexpr uint32_t kVersion = 1;
inline constexpr int kCoefficients = 25; ///< of a mel-cepstrum, the first is the level
inline constexpr int kBands = 5;
inline constexpr int kFormants = 4;
inline constexpr float kCepstrumUnit = 1.0F / 2048;
inline constexpr float kAlpha = 0.42F; ///< how far the cepstrum's frequencies are warped
inline constexpr double kRate = 16000; ///< of the recordings: spectra reach to half of it
inline constexpr double kFrameMs = 5;
inline constexpr float kBandEdges[kBands - 1] = {1000, 2000, 4000, 6000};
inline constexpr uint32_t kNoSequence = 0xFFFFFFFF;
inline constexpr int kStates = 3;
inline constexpr int kMostStateFrames = 31;

struct Header {
    char magic[8];
    uint32_t version;
    uint32_t bytes; ///< of the whole file
    uint32_t check; ///< of all that follows the header: CheckSum
    uint32_t phones;
    uint32_t frames;
    uint32_t sequenceWords;
};
static_assert(sizeof(Header) == 32);

struct PhoneName {
    char text[8]; ///< padded with zeros
};

struct Frame {
    int16_t cepstrum[kCoefficients]; ///< in kCepstrumUnit, of the spectrum's natural logarithm
    uint8_t strength[kBands];        ///< how much of each band is voice rather than noise, of 255
    uint8_t voicing;                 ///< how surely the frame is voiced, of 255
    uint16_t formants[kFormants];    ///< Hz
};
static_assert(sizeof(Frame) == 64);

/// Fowler, Noll and Vo's hash (FNV-1a), four bytes at a time.
inline uint32_t CheckSum(const unsigned char* bytes, size_t count) {
    uint32_t sum = 2166136261U;
    for (size_t i = 0; i < count; i += 4) {
        uint32_t word = 0;
        for (size_t k = 0; k < 4 && i + k < count; ++k)
            word |= static_cast<uint32_t>(bytes[i + k]) << (8 * k);
        sum = (sum ^ word) * 16777619U;
        sum ^= sum >> 15;
    }
    return sum;
}

} // namespace rve::bank
