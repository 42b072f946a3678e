#include "tract.h"

#include <algorithm>
#include <cmath>

namespace rve {

namespace {

constexpr float kPi = 3.14159265F;
constexpr float kHighest = 0.47F; // of the sample rate: a formant beyond it could not be held
constexpr float kNoseBandwidth = 100;
constexpr float kUpperEnd = 0.4F; // of the sample rate
constexpr float kUpperBandwidth = 150;
constexpr float kUpperWidening = 0.04F;
constexpr float kFading = 20;

} // namespace

void Resonator::Set(float hz, float bandwidth, float rate) {
    const float frequency = std::min(hz / rate, kHighest);
    const float radius = std::exp(-kPi * bandwidth / rate);
    m_c = -radius * radius;
    m_b = 2 * radius * std::cos(2 * kPi * frequency);
    m_a = 1 - m_b - m_c;
}

void Antiresonator::Set(float hz, float bandwidth, float rate) {
    const float frequency = std::min(hz / rate, kHighest);
    const float radius = std::exp(-kPi * bandwidth / rate);
    m_c = -radius * radius;
    m_b = 2 * radius * std::cos(2 * kPi * frequency);
    m_a = 1 / (1 - m_b - m_c);
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
    for (Resonator& upper : m_upper)
        upper.Reset();
    m_nose.Reset();
    m_notch.Reset();
    for (Band& band : m_boostBands)
        band.Reset();
    m_boosts.fill(0);
    m_upperHz = m_upperApart = 0;
    m_boosted = false;
}

void VocalTract::SetUpper(float hz, float apart, float rate) {
    if (std::abs(hz - m_upperHz) < 0.5F && std::abs(apart - m_upperApart) < 0.1F)
        return; // they stay where they are, nearly always
    m_upperHz = hz;
    m_upperApart = apart;
    for (Resonator& upper : m_upper) {
        // Towards half the rate they widen until nothing is left of them: one that goes beyond leaves without a click.
        const float beyond = std::max(hz - kUpperEnd * rate, 0.0F);
        upper.Set(hz, kUpperBandwidth + kUpperWidening * hz + kFading * beyond, rate);
        hz += apart;
    }
}

void VocalTract::SetNose(float hz, float notchHz, float rate) {
    m_nose.Set(hz, kNoseBandwidth, rate);
    m_notch.Set(notchHz, kNoseBandwidth, rate);
}

double VocalTract::GainSquared(double cosine) const {
    double gain = m_nose.GainSquared(cosine) * m_notch.GainSquared(cosine);
    for (const Resonator& formant : m_chain)
        gain *= formant.GainSquared(cosine);
    return gain; // the upper resonances add little to the low harmonics that are asked for
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
