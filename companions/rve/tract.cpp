#include "tract.h"

#include <algorithm>
#include <cmath>

namespace rve {

namespace {

constexpr float kNoseBandwidth = 100;
constexpr float kUpperEnd = 0.4F; // of the sample rate
constexpr float kUpperBandwidth = 150;
constexpr float kUpperWidening = 0.04F;
constexpr float kFading = 20;

} // namespace

void Antiresonator::Set(const Poles& zeros) {
    m_b = zeros.b;
    m_c = zeros.c;
    m_a = 1 / (1 - m_b - m_c);
}

void Band::Set(const Poles& poles) {
    m_b = poles.b;
    m_c = poles.c;
    m_a = (1 - poles.radius * poles.radius) / 2;
}

void VocalTract::Reset() {
    m_chain.Reset();
    m_upper.Reset();
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
    for (int upper = 0; upper < kUpper; ++upper) {
        // Towards half the rate they widen until nothing is left of them: one that goes beyond leaves without a click.
        const float beyond = std::max(hz - kUpperEnd * rate, 0.0F);
        m_upper.Set(upper, PolesAt(hz, kUpperBandwidth + kUpperWidening * hz + kFading * beyond, rate));
        hz += apart;
    }
}

void VocalTract::SetNose(float hz, float notchHz, float rate) {
    m_upper.Set(kNose, PolesAt(hz, kNoseBandwidth, rate));
    m_notch.Set(PolesAt(notchHz, kNoseBandwidth, rate));
}

double VocalTract::GainSquared(double cosine) const {
    double above = m_notch.GainSquared(cosine);
    double below = 1;
    m_upper.MultiplyGainSquared(kNose, cosine, above, below);
    for (int formant = 0; formant < kFormants; ++formant)
        m_chain.MultiplyGainSquared(formant, cosine, above, below);
    return above / below; // the upper resonances add little to the low harmonics that are asked for
}

void VocalTract::SetBoost(int formant, float gain) {
    m_boosts[Place(formant)] = gain - 1;
    const bool boosted =
        std::any_of(m_boosts.begin(), m_boosts.end(), [](float boost) { return std::abs(boost) > 1e-4F; });
    if (boosted && !m_boosted)
        for (Band& band : m_boostBands)
            band.Reset();
    m_boosted = boosted;
}

void VocalTract::Run(float* samples, int count) {
    m_upper.Run(samples, count); // first: the formants soften what their moving does
    for (int i = 0; i < count; ++i)
        samples[i] = m_notch.Next(samples[i]);
    m_chain.Run(samples, count);
    if (!m_boosted)
        return;
    for (int i = 0; i < count; ++i) {
        float y = samples[i];
        for (size_t formant = 0; formant < kFormants; ++formant)
            y += m_boosts[formant] * m_boostBands[formant].Next(samples[i]);
        samples[i] = y;
    }
}

} // namespace rve
