#pragma once

#include "bank_format.h"

#include <array>

/// A mel-cepstrum's spectrum, as far as a bank's builder needs it.
using Cepstrum = std::array<float, rve::bank::kCoefficients>;

/// The formants' peaks made sharper by the share `amount`, at the same power: what averaging over many recorded frames
/// has flattened. Koishida, Tokuda, Kobayashi and Imai, "CELP coding based on mel-cepstral analysis", ICASSP 1995.
void Sharpen(Cepstrum& cepstrum, float amount);

/// What tells the spectrum from the `mean` of its voice becomes `factor` times as much; the first coefficient, its
/// level, stays.
void Contrast(Cepstrum& cepstrum, const Cepstrum& mean, float factor);

/// The first formants' places in Hz, of all peaks and shoulders of the spectrum those nearest to where they are
/// expected, in order.
std::array<float, rve::bank::kFormants> FormantsOf(const Cepstrum& cepstrum,
                                                   const std::array<float, rve::bank::kFormants>& expected);
