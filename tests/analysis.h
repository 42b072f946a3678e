#pragma once

// Measurements of sound that share nothing with the engine.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

inline std::vector<double> Part(const std::vector<double>& sound, double fromMs, double toMs, double rate = 44100) {
    const auto at = [&](double ms) { return std::min(sound.size(), static_cast<size_t>(ms * rate / 1000)); };
    return {sound.begin() + static_cast<std::ptrdiff_t>(at(fromMs)),
            sound.begin() + static_cast<std::ptrdiff_t>(at(toMs))};
}

inline double Rms(const std::vector<double>& sound) {
    double sum = 0;
    for (const double x : sound)
        sum += x * x;
    return sound.empty() ? 0 : std::sqrt(sum / static_cast<double>(sound.size()));
}

inline double Db(double ratio) { return 20 * std::log10(ratio); }

/// Fundamental near `about` Hz (within a few per cent): the autocorrelation over as many periods as fit, and a parabola
/// through its peak; first over one period, then over more and more, so that no period is miscounted.
inline double PitchOf(const std::vector<double>& sound, double about, double rate = 44100) {
    double used = 0; // as much of the sound as says enough about a few periods
    const auto correlation = [&](int lag) {
        double product = 0, a = 0, b = 0;
        for (const double *x = sound.data(), *end = x + static_cast<size_t>(used); x + lag < end; ++x) {
            product += x[0] * x[lag];
            a += x[0] * x[0];
            b += x[lag] * x[lag];
        }
        return product / std::sqrt(a * b + 1e-30);
    };
    const double most = 0.5 * static_cast<double>(sound.size()) * about / rate;
    double hz = about;
    for (int periods = 1; periods <= std::max(1.0, most); periods *= 3) {
        const double centre = periods * rate / hz;
        used = std::min(static_cast<double>(sound.size()), 8 * centre);
        const double reach = periods == 1 ? centre * 0.2 : rate / hz * 0.3;
        int best = static_cast<int>(centre - reach);
        double highest = -2;
        for (int lag = std::max(best, 2); lag <= static_cast<int>(centre + reach) + 1; ++lag)
            if (const double value = correlation(lag); value > highest) {
                highest = value;
                best = lag;
            }
        const double left = correlation(best - 1), right = correlation(best + 1);
        const double bend = left - 2 * highest + right;
        hz = periods * rate / (best + (bend < 0 ? (left - right) / (2 * bend) : 0));
    }
    return hz;
}

inline double Cents(double hz, double reference) { return 1200 * std::log2(hz / reference); }
inline double HzOf(double note) { return 440 * std::pow(2, (note - 69) / 12); }

/// Amplitude of one frequency, Hann window: Goertzel's recurrence, and the window's cosine by another.
inline double Tone(const std::vector<double>& sound, double hz, double rate = 44100) {
    const auto n = static_cast<double>(sound.size());
    const double turn = 2 * std::numbers::pi * hz / rate, windowTurn = 2 * std::numbers::pi / n;
    const double bend = 2 * std::cos(turn), windowBend = 2 * std::cos(windowTurn);
    double last = 0, before = 0, window = 1, windowBefore = std::cos(windowTurn);
    for (const double *x = sound.data(), *end = x + sound.size(); x != end; ++x) {
        const double now = (0.5 - 0.5 * window) * *x + bend * last - before;
        before = last;
        last = now;
        const double windowNext = windowBend * window - windowBefore;
        windowBefore = window;
        window = windowNext;
    }
    return 4 * std::hypot(last - before * std::cos(turn), before * std::sin(turn)) / n;
}

/// RMS of a band, by tones 40 Hz apart.
inline double Band(const std::vector<double>& sound, double from, double to) {
    double sum = 0;
    for (double hz = from; hz < to; hz += 40) {
        const double tone = Tone(sound, hz);
        sum += tone * tone / 2;
    }
    return std::sqrt(sum);
}

/// The largest second difference, which a click stands out in.
inline double Roughness(const std::vector<double>& sound) {
    double worst = 0;
    for (size_t i = 2; i < sound.size(); ++i)
        worst = std::max(worst, std::abs(sound[i] - 2 * sound[i - 1] + sound[i - 2]));
    return worst;
}

/// Where the envelope (2 ms) first passes a share of its later level, in milliseconds.
inline double OnsetOf(const std::vector<double>& sound, double level) {
    for (size_t i = 0; i + 88 < sound.size(); i += 11)
        if (Rms({sound.begin() + static_cast<std::ptrdiff_t>(i), sound.begin() + static_cast<std::ptrdiff_t>(i + 88)}) >
            level)
            return static_cast<double>(i + 44) / 44.1;
    return -1;
}
