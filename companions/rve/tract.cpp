#include "tract.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace rve {

namespace {

constexpr float kNoseBandwidth = 100;
constexpr float kUpperEnd = 0.4F; // of the sample rate
constexpr float kUpperBandwidth = 150;
constexpr float kUpperWidening = 0.04F;
constexpr float kFading = 20;

} // namespace

void Nose::SetResonance(const Poles& poles) {
    m_gain = 1 - poles.b - poles.c;
    m_squared = -poles.c;
}

void Nose::SetNotch(const Poles& zeros) {
    m_notchGain = 1 - zeros.b - zeros.c;
    m_notchSquared = -zeros.c;
}

double Nose::GainSquared(double cosine) const {
    const auto squared = [cosine](double gain, double radiusSquared) {
        return PolynomialSquared(1 - gain + radiusSquared, -radiusSquared).At(cosine) / (gain * gain);
    };
    return squared(m_notchGain, m_notchSquared) / squared(m_gain, m_squared);
}

void Nose::Run(float* samples, int count) {
    const float notch = 1 / m_notchGain;
    float made = m_made, step = m_step;
    for (int i = 0; i < count; ++i) {
        const float before = step;
        step = m_gain * samples[i] + m_squared * step - m_gain * made;
        samples[i] = made + notch * (step - m_notchSquared * before);
        made += step;
    }
    m_made = made;
    m_step = step;
}

void Band::Set(const Poles& poles) {
    m_b = poles.b;
    m_c = poles.c;
    m_a = (1 - poles.radius * poles.radius) / 2;
}

void VocalTract::Reset() {
    m_chain.Reset();
    m_nose.Reset();
    m_formantSettings.fill({});
    m_noseSetting = m_notchSetting = {};
    for (Band& band : m_boostBands)
        band.Reset();
    m_boosts.fill(0);
    m_boostSteps.fill(0);
    m_upperHz = m_upperApart = 0;
    m_boosted = false;
}

bool VocalTract::Setting::Moves(float toHz, float toBandwidth) {
    constexpr float kAudible = 0.02F; // Hz
    if (std::abs(toHz - hz) < kAudible && std::abs(toBandwidth - bandwidth) < kAudible)
        return false;
    *this = {toHz, toBandwidth};
    return true;
}

void VocalTract::Set(int formant, float hz, float bandwidth, float rate) {
    if (!m_formantSettings[Place(formant)].Moves(hz, bandwidth))
        return;
    const Poles poles = PolesAt(hz, bandwidth, rate);
    m_chain.Set(kFirstFormant + formant, poles);
    m_boostBands[Place(formant)].Set(poles);
}

void VocalTract::SetUpper(float hz, float apart, float rate) {
    if (std::abs(hz - m_upperHz) < 0.5F && std::abs(apart - m_upperApart) < 0.1F)
        return; // they stay where they are, nearly always
    m_upperHz = hz;
    m_upperApart = apart;
    for (int upper = 0; upper < kUpper; ++upper) {
        // Towards half the rate they widen until nothing is left of them: one that goes beyond leaves without a click.
        const float beyond = std::max(hz - kUpperEnd * rate, 0.0F);
        m_chain.Set(upper, PolesAt(hz, kUpperBandwidth + kUpperWidening * hz + kFading * beyond, rate));
        hz += apart;
    }
}

void VocalTract::SetNose(float hz, float notchHz, float rate) {
    if (m_noseSetting.Moves(hz, kNoseBandwidth))
        m_nose.SetResonance(PolesAt(hz, kNoseBandwidth, rate));
    if (m_notchSetting.Moves(notchHz, kNoseBandwidth))
        m_nose.SetNotch(PolesAt(notchHz, kNoseBandwidth, rate));
}

/// The upper resonances add little to the low harmonics that are asked for.
VocalTract::Gains VocalTract::GainsSquared(const Gains& cosines) const {
    double above = 1;
    Gains below;
    below.fill(1);
    for (int formant = 0; formant < kFormants; ++formant) {
        const Cascade::Gain gain = m_chain.GainOf(kFirstFormant + formant);
        above *= gain.above;
        for (size_t i = 0; i < kGains; ++i)
            below[i] *= std::max(gain.below.At(cosines[i]), 1e-12);
    }
    Gains gains;
    for (size_t i = 0; i < kGains; ++i)
        gains[i] = above * m_nose.GainSquared(cosines[i]) / below[i];
    return gains;
}

void VocalTract::SetBoost(int formant, float gain, int samples) {
    const float step = (gain - 1 - m_boosts[Place(formant)]) / static_cast<float>(samples);
    if (std::exchange(m_boostSteps[Place(formant)], step) == 0 && step == 0)
        return;
    const auto isHeard = [](float boost) { return std::abs(boost) > 1e-4F; };
    const bool boosted = std::any_of(m_boosts.begin(), m_boosts.end(), isHeard) || isHeard(gain - 1);
    if (boosted && !m_boosted)
        for (Band& band : m_boostBands)
            band.Reset();
    m_boosted = boosted;
}

void VocalTract::Run(float* samples, int count) {
    m_nose.Run(samples, count);
    m_chain.Run(samples, count);
    if (!m_boosted)
        return;
    for (int i = 0; i < count; ++i) {
        float y = samples[i];
        for (size_t formant = 0; formant < kFormants; ++formant) {
            m_boosts[formant] += m_boostSteps[formant];
            y += m_boosts[formant] * m_boostBands[formant].Next(samples[i]);
        }
        samples[i] = y;
    }
}

} // namespace rve
