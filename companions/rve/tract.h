#pragma once

#include "cascade.h"
#include "phonemes.h"
#include "place.h"
#include "poles.h"

#include <array>

namespace rve {

/// The nose: a resonance and a notch, each with a gain of 1 at 0 Hz, that undo one another while they lie at one place.
/// As one filter: between them what lies high would be a thousand times as strong, and what is rounded off there heard.
class Nose {
public:
    void Reset() { m_made = m_step = 0; }
    void SetResonance(const Poles& poles);
    void SetNotch(const Poles& zeros);
    double GainSquared(double cosine) const;
    /// The samples go through it, in place.
    void Run(float* samples, int count);

private:
    /// 1 - b - c and -c of both.
    float m_gain = 1, m_squared = 0;
    float m_notchGain = 1, m_notchSquared = 0;
    float m_made = 0, m_step = 0; ///< what the resonance has made last, and its step to there
};

/// A band with a gain of 1 at its centre.
class Band {
public:
    void Reset() { m_x1 = m_x2 = m_y1 = m_y2 = 0; }
    void Set(const Poles& poles);
    float Next(float x) {
        const float y = m_a * (x - m_x2) + m_b * m_y1 + m_c * m_y2;
        m_x2 = m_x1;
        m_x1 = x;
        m_y2 = m_y1;
        m_y1 = y;
        return y;
    }

private:
    float m_a = 0, m_b = 0, m_c = 0;
    float m_x1 = 0, m_x2 = 0, m_y1 = 0, m_y2 = 0;
};

/// The vocal tract: a chain of formants for the voice and the breath, with a boost for each of the first, the
/// resonances above them, and the nose, whose resonance and notch undo one another while it is shut.
class VocalTract {
public:
    void Reset();
    void Set(int formant, float hz, float bandwidth, float rate);
    /// The resonances above the formants: the first one's place, and how far apart they are.
    void SetUpper(float hz, float apart, float rate);
    /// Where the nose resonates, and where its notch is.
    void SetNose(float hz, float notchHz, float rate);
    /// The squares of the gains at so many frequencies, which are given by the cosines of their angles (a sample).
    static constexpr size_t kGains = 12;
    using Gains = std::array<double, kGains>;
    Gains GainsSquared(const Gains& cosines) const;
    /// Amplitude of one formant's band beside the rest, which is reached in a line after so many samples: 1 leaves it
    /// as it is.
    void SetBoost(int formant, float gain, int samples);
    /// The samples go through it, in place.
    void Run(float* samples, int count);

private:
    static constexpr int kUpper = 9;
    static constexpr int kFirstFormant = Cascade::kStages - kFormants;
    static_assert(kUpper <= kFirstFormant);
    /// What a resonance was set to.
    struct Setting {
        float hz = 0, bandwidth = 0;
        /// Whether it is to be set anew: what nobody could hear need not be.
        bool Moves(float toHz, float toBandwidth);
    };

    Cascade m_chain;                       ///< the upper ones first: the formants soften what their moving does
    float m_upperHz = 0, m_upperApart = 0; ///< what they were set to
    std::array<Setting, kFormants> m_formantSettings;
    Nose m_nose;
    Setting m_noseSetting, m_notchSetting;
    std::array<Band, kFormants> m_boostBands;
    std::array<float, kFormants> m_boosts{}, m_boostSteps{};
    bool m_boosted = false;
};

} // namespace rve
