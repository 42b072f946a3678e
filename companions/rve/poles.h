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

/// |1 - b/z - c/z²|² on the unit circle. Double: near the peak of a low formant these terms all but cancel.
inline double PolynomialSquared(double b, double c, double cosine) {
    return 1 + b * b + c * c - 2 * b * (1 - c) * cosine - 2 * c * (2 * cosine * cosine - 1);
}

} // namespace rve
