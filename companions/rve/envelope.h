#pragma once

#include "diction.h"

#include <array>
#include <complex>

namespace rve {

/// What the score asks of a tract beyond its sounds. Neutral as it stands.
struct Colour {
    std::array<float, bank::kFormants> frequency = {1, 1, 1, 1}; ///< factors of the formants' places
    std::array<float, bank::kFormants> width = {1, 1, 1, 1};     ///< and of their bandwidths
    std::array<float, bank::kFormants> decibels{};               ///< at the formants
    float size = 1;                                              ///< factor of all frequencies: above 1 a shorter tract
    float tilt = 0;                                              ///< decibels at 3 kHz beside the fundamental
    float breath = 1;                                            ///< factor of the noise in the voice
    float hiss = 1;                                              ///< factor of the noise without voice
    float lowest = 0;                                            ///< Hz, which the first formant does not fall below

    /// Towards another one by the share `pace`.
    void Approach(const Colour& target, float pace);
};

/// A frame's spectrum, smooth over frequency: from a mel-cepstrum up to 8 kHz, and continued above.
class Envelope {
public:
    void Set(const SpokenFrame& frame, const Colour& colour);
    /// Amplitude and phase that a harmonic at this frequency takes; amplitude only where it is all that is wanted.
    std::complex<float> VoiceAt(float hz) const;
    float VoiceLevelAt(float hz) const;
    /// Amplitude of the noise there.
    float NoiseLevelAt(float hz) const;
    float Voicing() const { return m_voicing; }

private:
    static constexpr int kPoints = 257;
    static constexpr float kSpacing = 31.25F;
    static constexpr int kMostPlaces = bank::kFormants + 2;

    float SourceOf(float hz) const;
    float LogAt(float source) const;
    float StrengthAt(float source) const;

    std::array<float, kPoints + 1> m_log{}; ///< natural logarithm of the amplitude
    std::array<float, kPoints + 1> m_phase{};
    std::array<float, kPoints + 1> m_strength{};
    std::array<float, kMostPlaces> m_from{}; ///< where the sound shall have ...
    std::array<float, kMostPlaces> m_to{};   ///< ... what the recording has there
    float m_size = 1;
    float m_top = 0; ///< the level that is continued above the recording
    float m_voicing = 0;
    float m_breath = 1, m_hiss = 1;
};

} // namespace rve
