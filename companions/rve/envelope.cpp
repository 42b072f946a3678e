#include "envelope.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rve {

namespace {

constexpr float kTop = 7600; ///< Hz: above it the recording ends

/// Cosines and sines of the warped frequencies, one row a coefficient.
struct WarpedWaves {
    std::array<std::array<float, 257>, bank::kCoefficients> cosines, sines;
    std::array<float, 257> tilt; ///< decibels for a tilt of one

    WarpedWaves() {
        for (size_t i = 0; i < 257; ++i) {
            const double w = std::numbers::pi * static_cast<double>(i) / 256;
            const double a = bank::kAlpha;
            const double warped = w + 2 * std::atan(a * std::sin(w) / (1 - a * std::cos(w)));
            for (size_t m = 0; m < bank::kCoefficients; ++m) {
                cosines[m][i] = static_cast<float>(std::cos(static_cast<double>(m) * warped));
                sines[m][i] = static_cast<float>(std::sin(static_cast<double>(m) * warped));
            }
            const double hz = 31.25 * static_cast<double>(i);
            // From 400 Hz to 3 kHz, in octaves, and hardly more above.
            tilt[i] =
                static_cast<float>(std::clamp(std::log2(std::max(hz, 1.0) / 400) / std::log2(3000.0 / 400), 0.0, 1.25));
        }
    }
};

const WarpedWaves& Waves() {
    static const WarpedWaves waves;
    return waves;
}

constexpr float kPerDecibel = 0.1151293F; // natural logarithm

/// exp for levels, within a part in 10,000: by the exponent's bits and a polynomial of what is left of it.
float Exp(float x) { return std::exp2(x * 1.442695F); }

} // namespace

void Colour::Approach(const Colour& target, float pace) {
    const auto move = [pace](float& value, float to) { value += (to - value) * pace; };
    for (size_t f = 0; f < frequency.size(); ++f) {
        move(frequency[f], target.frequency[f]);
        move(width[f], target.width[f]);
        move(decibels[f], target.decibels[f]);
    }
    move(size, target.size);
    move(tilt, target.tilt);
    move(breath, target.breath);
    move(hiss, target.hiss);
    lowest = target.lowest;
}

void Envelope::Set(const SpokenFrame& frame, const Colour& colour) {
    const WarpedWaves& waves = Waves();
    m_log.fill(frame.cepstrum[0]);
    m_phase.fill(0);
    for (size_t m = 1; m < frame.cepstrum.size(); ++m) {
        const float c = frame.cepstrum[m];
        const float* const cosines = waves.cosines[m].data();
        const float* const sines = waves.sines[m].data();
        for (size_t i = 0; i < kPoints; ++i) {
            m_log[i] += c * cosines[i];
            m_phase[i] -= c * sines[i];
        }
    }
    // Bands blend into each other over an octave's third.
    for (size_t i = 0; i < kPoints; ++i) {
        const float hz = static_cast<float>(i) * kSpacing;
        float strength = frame.strength[0];
        for (size_t b = 0; b + 1 < frame.strength.size(); ++b) {
            const float edge = bank::kBandEdges[b];
            const float share = std::clamp((hz - 0.8F * edge) / (0.4F * edge), 0.0F, 1.0F);
            strength += (frame.strength[b + 1] - frame.strength[b]) * share;
        }
        m_strength[i] = std::clamp(strength, 0.0F, 1.0F);
    }
    if (colour.tilt != 0)
        for (size_t i = 0; i < kPoints; ++i)
            m_log[i] += colour.tilt * kPerDecibel * waves.tilt[i];
    for (size_t f = 0; f < colour.width.size(); ++f) {
        if (std::abs(colour.width[f] - 1) < 1e-3F && std::abs(colour.decibels[f]) < 1e-2F)
            continue;
        // What a resonance of the common width gains near its place when it becomes as wide as this, and a hill there.
        const float width = 60 + 0.05F * frame.formants[f];
        const float half = width * width / 4;
        const float other = half * colour.width[f] * colour.width[f];
        for (size_t i = 0; i < kPoints; ++i) {
            const float away = static_cast<float>(i) * kSpacing - frame.formants[f];
            m_log[i] += 0.5F * std::log((away * away + half) / (away * away + other)) +
                        colour.decibels[f] * kPerDecibel / (1 + away * away / (4 * width * width));
        }
    }
    m_log[kPoints] = m_log[kPoints - 1];
    m_phase[kPoints] = m_phase[kPoints - 1];
    m_strength[kPoints] = m_strength[kPoints - 1];
    m_top = 0;
    for (int i = 0; i < 32; ++i) // 6.6 to 7.6 kHz
        m_top += m_log[static_cast<size_t>(static_cast<int>(kTop / kSpacing) - i)] / 32;
    m_voicing = frame.voicing;
    m_breath = colour.breath;
    m_hiss = colour.hiss;

    m_size = colour.size;
    float last = 0, lastTo = 0;
    for (size_t f = 0; f < frame.formants.size(); ++f) {
        const float shift = f < frame.shift.size() ? std::exp2(frame.shift[f]) : 1.0F;
        float hz = frame.formants[f] * shift * colour.frequency[f];
        if (f == 0)
            hz = std::max(hz, colour.lowest / colour.size);
        m_to[f + 1] = std::max(frame.formants[f], lastTo + 80);
        m_from[f + 1] = std::max(hz, last + 120);
        last = m_from[f + 1];
        lastTo = m_to[f + 1];
    }
    m_from[0] = m_to[0] = 0;
    m_to[kMostPlaces - 1] = 8000;
    m_from[kMostPlaces - 1] = std::max(8000.0F, last + 500);
}

/// Where the recording has what shall sound at `hz`.
float Envelope::SourceOf(float hz) const {
    hz /= m_size;
    size_t i = 1;
    while (i < kMostPlaces - 1 && hz > m_from[i])
        ++i;
    return m_to[i - 1] + (m_to[i] - m_to[i - 1]) * (hz - m_from[i - 1]) / (m_from[i] - m_from[i - 1]);
}

float Envelope::LogAt(float source) const {
    const float place = std::min(source, kTop) / kSpacing;
    const auto at = static_cast<size_t>(place);
    const float share = place - static_cast<float>(at);
    return m_log[at] + (m_log[at + 1] - m_log[at]) * share;
}

float Envelope::StrengthAt(float source) const {
    return m_strength[static_cast<size_t>(std::min(source, kTop) / kSpacing)];
}

float Envelope::VoiceLevelAt(float hz) const {
    const float source = SourceOf(hz);
    float level = LogAt(source);
    if (source > kTop) // harmonics fall by 18 dB an octave from the mean level below the edge
        level = std::min(level, m_top) - 2.1F * std::log2(source / kTop);
    return Exp(level) * StrengthAt(source) * m_voicing;
}

std::complex<float> Envelope::VoiceAt(float hz) const {
    const float source = SourceOf(hz);
    const float place = std::min(source, 8000.0F) / kSpacing;
    const auto at = static_cast<size_t>(place);
    const float phase = m_phase[at] + (m_phase[at + 1] - m_phase[at]) * (place - static_cast<float>(at));
    const float level = VoiceLevelAt(hz);
    return {level * std::cos(phase), level * std::sin(phase)};
}

float Envelope::NoiseLevelAt(float hz) const {
    const float source = SourceOf(hz);
    float level = LogAt(source);
    if (source > kTop) { // 4 dB an octave up to 11 kHz, 18 above
        level += (m_top - level) * std::min((source - kTop) / 800, 1.0F);
        level -= 0.46F * std::log2(source / kTop);
        if (source > 11000)
            level -= 1.6F * std::log2(source / 11000);
    }
    const float noise = 1 - StrengthAt(source);
    const float voiced = std::min(noise * m_breath, 1.0F);
    return Exp(level) * (noise * m_hiss + (voiced - noise * m_hiss) * m_voicing);
}

} // namespace rve
