#include "spectral_shape.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

constexpr size_t kPoints = 257; // 31.25 Hz apart
constexpr double kSpacing = rve::bank::kRate / 2 / (kPoints - 1);

/// Cosines of the warped frequencies, one row a point.
using Waves = std::array<std::array<double, rve::bank::kCoefficients>, kPoints>;

Waves MakeWaves() {
    Waves waves{};
    for (size_t i = 0; i < kPoints; ++i) {
        const double w = std::numbers::pi * static_cast<double>(i) / (kPoints - 1);
        const double alpha = rve::bank::kAlpha;
        const double warped = w + 2 * std::atan(alpha * std::sin(w) / (1 - alpha * std::cos(w)));
        for (size_t m = 0; m < waves[i].size(); ++m)
            waves[i][m] = std::cos(static_cast<double>(m) * warped);
    }
    return waves;
}

/// The natural logarithm of the spectrum from 0 to half the rate.
std::array<double, kPoints> LogSpectrum(const Cepstrum& cepstrum) {
    static const Waves waves = MakeWaves();
    std::array<double, kPoints> spectrum{};
    for (size_t i = 0; i < kPoints; ++i)
        for (size_t m = 0; m < cepstrum.size(); ++m)
            spectrum[i] += cepstrum[m] * waves[i][m];
    return spectrum;
}

double Power(const Cepstrum& cepstrum) {
    double power = 0;
    for (const double level : LogSpectrum(cepstrum))
        power += std::exp(2 * level);
    return power;
}

} // namespace

void Contrast(Cepstrum& cepstrum, const Cepstrum& mean, float factor) {
    for (size_t m = 1; m < cepstrum.size(); ++m)
        cepstrum[m] = mean[m] + factor * (cepstrum[m] - mean[m]);
}

void Sharpen(Cepstrum& cepstrum, float amount) {
    const double before = Power(cepstrum);
    for (size_t m = 2; m < cepstrum.size(); ++m)
        cepstrum[m] *= 1 + amount;
    cepstrum[0] += static_cast<float>(0.5 * std::log(before / Power(cepstrum)));
}

std::array<float, rve::bank::kFormants> FormantsOf(const Cepstrum& cepstrum,
                                                   const std::array<float, rve::bank::kFormants>& expected) {
    const std::array<double, kPoints> spectrum = LogSpectrum(cepstrum);
    std::array<double, kPoints> bend{}; // how sharply it turns down: at a peak, or at a shoulder
    for (size_t i = 2; i + 2 < kPoints; ++i)
        bend[i] = 2 * spectrum[i] - spectrum[i - 2] - spectrum[i + 2];
    std::vector<double> places;
    for (size_t i = 3; i + 3 < kPoints; ++i) {
        const double hz = static_cast<double>(i) * kSpacing;
        if (hz > 180 && hz < 5500 && bend[i] > 0.01 && bend[i] > bend[i - 1] && bend[i] >= bend[i + 1])
            places.push_back(hz);
    }
    // The cheapest way to give every formant a place of its own; one without a place stays where it is expected.
    std::array<float, rve::bank::kFormants> best = expected;
    double least = 1e9;
    const auto assign = [&](auto& self, size_t formant, size_t from, double cost,
                            std::array<float, rve::bank::kFormants>& chosen) -> void {
        if (cost >= least)
            return;
        if (formant == chosen.size()) {
            least = cost;
            best = chosen;
            return;
        }
        const float lower = formant > 0 ? chosen[formant - 1] + 150 : 0;
        chosen[formant] = std::max(expected[formant], lower);
        self(self, formant + 1, from, cost + 0.35, chosen);
        for (size_t i = from; i < places.size(); ++i) {
            if (places[i] < lower)
                continue;
            chosen[formant] = static_cast<float>(places[i]);
            self(self, formant + 1, i + 1, cost + std::abs(std::log(places[i] / expected[formant])), chosen);
        }
    };
    std::array<float, rve::bank::kFormants> chosen{};
    assign(assign, 0, 0, 0, chosen);
    return best;
}
