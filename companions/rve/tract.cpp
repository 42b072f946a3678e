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
constexpr int kAtOnce = 32;

} // namespace

void Antiresonator::Set(const Poles& zeros) {
    m_b = zeros.b;
    m_c = zeros.c;
    m_a = 1 / (1 - m_b - m_c);
}

void Antiresonator::Run(float* samples, int count) {
    for (int done = 0; done < count; done += kAtOnce) {
        float* const out = samples + done;
        const int some = std::min(count - done, kAtOnce);
        std::array<float, kAtOnce + 2> x{m_x2, m_x1};
        std::copy_n(out, some, x.begin() + 2);
        for (int i = 0; i < some; ++i)
            out[i] = m_a * (x[Place(i + 2)] - m_b * x[Place(i + 1)] - m_c * x[Place(i)]);
        m_x1 = x[Place(some + 1)];
        m_x2 = x[Place(some)];
    }
}

void Band::Set(const Poles& poles) {
    m_b = poles.b;
    m_c = poles.c;
    m_a = (1 - poles.radius * poles.radius) / 2;
}

void VocalTract::Reset() {
    m_chain.Reset();
    m_notch.Reset();
    m_formantSettings.fill({});
    m_noseSetting = m_notchSetting = {};
    for (Band& band : m_boostBands)
        band.Reset();
    m_boosts.fill(0);
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
        m_chain.Set(kNose, PolesAt(hz, kNoseBandwidth, rate));
    if (m_notchSetting.Moves(notchHz, kNoseBandwidth))
        m_notch.Set(PolesAt(notchHz, kNoseBandwidth, rate));
}

/// The upper resonances add little to the low harmonics that are asked for.
VocalTract::Gains VocalTract::GainsSquared(const Gains& cosines) const {
    double above = 1;
    Gains below;
    below.fill(1);
    const auto pass = [&](int stage) {
        const Cascade::Gain gain = m_chain.GainOf(stage);
        above *= gain.above;
        for (size_t i = 0; i < kGains; ++i)
            below[i] *= std::max(gain.below.At(cosines[i]), 1e-12);
    };
    pass(kNose);
    for (int formant = 0; formant < kFormants; ++formant)
        pass(kFirstFormant + formant);
    Gains gains;
    for (size_t i = 0; i < kGains; ++i)
        gains[i] = above * m_notch.GainSquared(cosines[i]) / below[i];
    return gains;
}

void VocalTract::SetBoost(int formant, float gain) {
    if (std::exchange(m_boosts[Place(formant)], gain - 1) == gain - 1)
        return;
    const bool boosted =
        std::any_of(m_boosts.begin(), m_boosts.end(), [](float boost) { return std::abs(boost) > 1e-4F; });
    if (boosted && !m_boosted)
        for (Band& band : m_boostBands)
            band.Reset();
    m_boosted = boosted;
}

void VocalTract::Run(float* samples, int count) {
    m_notch.Run(samples, count);
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
