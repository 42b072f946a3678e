#include "tract.h"

#include <algorithm>
#include <cmath>

namespace rve {

namespace {

constexpr float kPi = 3.14159265F;
constexpr float kHighest = 0.47F; // of the sample rate: a formant beyond it could not be held

} // namespace

void Resonator::Set(float hz, float bandwidth, float rate) {
    const float frequency = std::min(hz / rate, kHighest);
    const float radius = std::exp(-kPi * bandwidth / rate);
    m_c = -radius * radius;
    m_b = 2 * radius * std::cos(2 * kPi * frequency);
    m_a = 1 - m_b - m_c;
}

void Band::Set(float hz, float bandwidth, float rate) {
    const float frequency = std::min(hz / rate, kHighest);
    const float radius = std::exp(-kPi * bandwidth / rate);
    m_c = -radius * radius;
    m_b = 2 * radius * std::cos(2 * kPi * frequency);
    m_a = (1 - radius * radius) / 2;
}

void VocalTract::Reset() {
    for (Resonator& formant : m_chain)
        formant.Reset();
    for (Band& band : m_boostBands)
        band.Reset();
    m_boosts.fill(0);
    m_boosted = false;
}

void VocalTract::SetBoost(int formant, float gain) {
    m_boosts[static_cast<size_t>(formant)] = gain - 1;
    const bool boosted =
        std::any_of(m_boosts.begin(), m_boosts.end(), [](float boost) { return std::abs(boost) > 1e-4F; });
    if (boosted && !m_boosted)
        for (Band& band : m_boostBands)
            band.Reset();
    m_boosted = boosted;
}

} // namespace rve
