#pragma once

#include "phonemes.h"

#include <array>

namespace rve {

/// |1 - b/z - c/z²|² on the unit circle. Double: near the peak of a low formant these terms all but cancel.
inline double PolynomialSquared(double b, double c, double cosine) {
    return 1 + b * b + c * c - 2 * b * (1 - c) * cosine - 2 * c * (2 * cosine * cosine - 1);
}

/// A two-pole resonance with a gain of 1 at 0 Hz, as one of a chain of formants.
class Resonator {
public:
    void Reset() { m_y1 = m_y2 = 0; }
    void Set(float hz, float bandwidth, float rate);
    /// The square of its gain where the cosine of the frequency (in radians a sample) is `cosine`.
    double GainSquared(double cosine) const {
        const double below = PolynomialSquared(m_b, m_c, cosine);
        return m_a * m_a / (below > 1e-12 ? below : 1e-12);
    }
    float Next(float x) {
        const float y = m_a * x + m_b * m_y1 + m_c * m_y2;
        m_y2 = m_y1;
        m_y1 = y;
        return y;
    }

private:
    float m_a = 1, m_b = 0, m_c = 0;
    float m_y1 = 0, m_y2 = 0;
};

/// The inverse of a resonance: a notch with a gain of 1 at 0 Hz.
class Antiresonator {
public:
    void Reset() { m_x1 = m_x2 = 0; }
    void Set(float hz, float bandwidth, float rate);
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
    void Set(float hz, float bandwidth, float rate);
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
        m_chain[static_cast<size_t>(formant)].Set(hz, bandwidth, rate);
        m_boostBands[static_cast<size_t>(formant)].Set(hz, bandwidth, rate);
    }
    /// The resonances above the formants: the first one's place, and how far apart they are.
    void SetUpper(float hz, float apart, float rate);
    /// Where the nose resonates, and where its notch is.
    void SetNose(float hz, float notchHz, float rate);
    double GainSquared(double cosine) const;
    /// Amplitude of one formant's band beside the rest: 1 leaves it as it is.
    void SetBoost(int formant, float gain);
    float Next(float x) {
        for (Resonator& upper : m_upper) // first: the formants soften what their moving does
            x = upper.Next(x);
        x = m_notch.Next(m_nose.Next(x));
        for (Resonator& formant : m_chain)
            x = formant.Next(x);
        if (!m_boosted)
            return x;
        float y = x;
        for (size_t i = 0; i < kFormants; ++i)
            y += m_boosts[i] * m_boostBands[i].Next(x);
        return y;
    }

private:
    static constexpr int kUpper = 9;

    std::array<Resonator, kFormants> m_chain;
    std::array<Resonator, kUpper> m_upper;
    float m_upperHz = 0, m_upperApart = 0; ///< what they were set to
    Resonator m_nose;
    Antiresonator m_notch;
    std::array<Band, kFormants> m_boostBands;
    std::array<float, kFormants> m_boosts{};
    bool m_boosted = false;
};

} // namespace rve
