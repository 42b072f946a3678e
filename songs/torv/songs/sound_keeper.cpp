#include "torv/songs/sound_keeper.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace torv::songs {

namespace {

constexpr unsigned kWantedRate = 22050;
constexpr unsigned kHalfLobes = 12; ///< of the filter, to each side
constexpr double kCutoff = 0.92;    ///< of the lower rate's half

/// A low pass for the lower rate: sinc under a Hann window, with a sum of 1.
std::vector<float> LowPass(unsigned step) {
    if (step == 1)
        return {1.0F};
    const int half = static_cast<int>(kHalfLobes * step);
    std::vector<float> weights;
    for (int i = -half; i <= half; ++i) {
        const double x = std::numbers::pi * i * kCutoff / step;
        const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * i / (half + 1));
        weights.push_back(static_cast<float>((i == 0 ? 1.0 : std::sin(x) / x) * window));
    }
    const float sum = std::accumulate(weights.begin(), weights.end(), 0.0F);
    for (float& weight : weights)
        weight /= sum;
    return weights;
}

} // namespace

SoundKeeper::SoundKeeper(unsigned rate)
    : m_rate(rate), m_step(std::max(rate / kWantedRate, 1U)), m_weights(LowPass(m_step)),
      m_latest(2 * m_weights.size()), m_untilNext(m_weights.size() / 2 + 1) {}

void SoundKeeper::Add(float sample) {
    m_latest[m_place] = m_latest[m_place + m_weights.size()] = sample;
    m_place = (m_place + 1) % m_weights.size();
    if (--m_untilNext == 0)
        Keep();
}

void SoundKeeper::Keep() {
    const double sum = std::inner_product(m_weights.begin(), m_weights.end(),
                                          m_latest.begin() + static_cast<std::ptrdiff_t>(m_place), 0.0);
    m_kept.samples.push_back(static_cast<int16_t>(std::clamp(std::round(sum * 32768), -32768.0, 32767.0)));
    m_untilNext = m_step;
}

KeptSound SoundKeeper::Take() {
    for (size_t i = 0; i < m_weights.size() / 2; ++i)
        Add(0);
    m_kept.rate = m_rate / m_step;
    return std::exchange(m_kept, {});
}

} // namespace torv::songs
