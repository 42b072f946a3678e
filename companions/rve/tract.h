#pragma once

#include "cascade.h"
#include "phonemes.h"
#include "place.h"
#include "poles.h"

#include <array>

namespace rve {

/// The inverse of a resonance: a notch with a gain of 1 at 0 Hz.
class Antiresonator {
public:
    void Reset() { m_x1 = m_x2 = 0; }
    void Set(const Poles& zeros);
    double GainSquared(double cosine) const { return m_a * m_a * PolynomialSquared(m_b, m_c, cosine); }
    float Next(float x) {
        const float y = m_a * (x - m_b * m_x1 - m_c * m_x2);
        m_x2 = m_x1;
        m_x1 = x;
        return y;
    }

private:
    float m_a = 1, m_b = 0, m_c = 0;
    float m_x1 = 0, m_x2 = 0;
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
    void Set(int formant, float hz, float bandwidth, float rate) {
        const Poles poles = PolesAt(hz, bandwidth, rate);
        m_chain.Set(formant, poles);
        m_boostBands[Place(formant)].Set(poles);
    }
    /// The resonances above the formants: the first one's place, and how far apart they are.
    void SetUpper(float hz, float apart, float rate);
    /// Where the nose resonates, and where its notch is.
    void SetNose(float hz, float notchHz, float rate);
    double GainSquared(double cosine) const;
    /// Amplitude of one formant's band beside the rest: 1 leaves it as it is.
    void SetBoost(int formant, float gain);
    /// The samples go through it, in place.
    void Run(float* samples, int count);

private:
    static constexpr int kUpper = 9;
    static constexpr int kNose = kUpper; ///< the stage behind them

    Cascade<1> m_chain;
    static_assert(decltype(m_chain)::kStages == kFormants);
    Cascade<3> m_upper;
    float m_upperHz = 0, m_upperApart = 0; ///< what they were set to
    Antiresonator m_notch;
    std::array<Band, kFormants> m_boostBands;
    std::array<float, kFormants> m_boosts{};
    bool m_boosted = false;
};

} // namespace rve
