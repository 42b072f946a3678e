#pragma once

#include <algorithm>
#include <cmath>

namespace rve {

/// The denominator 1 - b/z - c/z² of a resonance.
struct Poles {
    float b = 0;
    float c = 0;
    float radius = 0;
};

inline Poles PolesAt(float hz, float bandwidth, float rate) {
    constexpr float kPi = 3.14159265F;
    constexpr float kHighest = 0.47F; // of the sample rate: a formant beyond it could not be held
    const float frequency = std::min(hz / rate, kHighest);
    const float radius = std::exp(-kPi * bandwidth / rate);
    return {2 * radius * std::cos(2 * kPi * frequency), -radius * radius, radius};
}

/// |1 - b/z - c/z²|² on the unit circle, by the cosine of the angle there. Double: near the peak of a low formant its
/// terms all but cancel.
class PolynomialSquared {
public:
    PolynomialSquared(double b, double c)
        : m_constant(1 + b * b + c * c + 2 * c), m_first(-2 * b * (1 - c)), m_second(-4 * c) {}
    double At(double cosine) const { return m_constant + cosine * (m_first + cosine * m_second); }

private:
    double m_constant, m_first, m_second; ///< the factors of the cosine's powers
};

} // namespace rve
