#include "torv/songs/sound_curves.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace torv::songs {

namespace {

constexpr double kWindow = 0.04;       ///< seconds of sound that one point looks at; three periods of a low E
constexpr double kReach = 0.1;         ///< seconds by which a singer may be early or late
constexpr double kDeviation = 5;       ///< keys to both sides of the expected ones: less than an octave in all
constexpr double kLeastLikeness = 0.7; ///< correlation with what was one period before
constexpr double kClearlyMore = 0.03;  ///< two periods are nearly as like as one
constexpr double kLeastLevel = -60;    ///< dB: what is softer has no pitch that one hears

double RatioOfKeys(double keys) { return std::pow(2, keys / 12); }

struct KeyRange {
    int lowest;
    int highest;
};

/// The keys that are expected around a time, which only goes on.
class Expectation {
public:
    explicit Expectation(const std::vector<ExpectedKey>& keys) : m_keys(keys) {}
    std::optional<KeyRange> At(double seconds) {
        while (m_first < m_keys.size() && m_keys[m_first].end + kReach < seconds)
            ++m_first;
        std::optional<KeyRange> range;
        for (size_t i = m_first; i < m_keys.size() && m_keys[i].start - kReach <= seconds; ++i) {
            const int key = m_keys[i].key;
            range = range ? KeyRange{std::min(range->lowest, key), std::max(range->highest, key)} : KeyRange{key, key};
        }
        return range;
    }

private:
    const std::vector<ExpectedKey>& m_keys;
    size_t m_first = 0;
};

/// How much a sound is like itself some samples later, -1..1.
class Likeness {
public:
    Likeness(const int16_t* sound, size_t count) : m_sound(sound), m_count(count) {}
    double Later(size_t lag) const {
        double product = 0;
        double here = 0;
        double there = 0;
        for (const int16_t* x = m_sound; x != m_sound + m_count; ++x) {
            const double a = *x;
            const double b = x[lag];
            product += a * b;
            here += a * a;
            there += b * b;
        }
        return product / std::sqrt(here * there + 1);
    }

private:
    const int16_t* m_sound;
    size_t m_count;
};

/// The period in samples within these limits after which the sound is most like itself; between samples by a parabola.
std::optional<double> PeriodOf(const Likeness& likeness, double shortest, double longest) {
    const auto first = static_cast<size_t>(std::max(shortest, 2.0));
    const auto last = static_cast<size_t>(longest) + 1;
    double before = likeness.Later(first - 1);
    double now = likeness.Later(first);
    double best = kLeastLikeness - kClearlyMore;
    std::optional<double> period;
    for (size_t lag = first; lag <= last; ++lag) {
        const double after = likeness.Later(lag + 1);
        if (now > best + kClearlyMore && now >= before && now > after) {
            best = now;
            period = static_cast<double>(lag) + 0.5 * (before - after) / (before - 2 * now + after);
        }
        before = now;
        now = after;
    }
    return period;
}

float LevelOf(const int16_t* sound, size_t count) {
    double sum = 0;
    for (const int16_t* x = sound; x != sound + count; ++x)
        sum += static_cast<double>(*x) * *x;
    const double level = 10 * std::log10(sum / static_cast<double>(count) / (32768.0 * 32768.0) + 1e-12);
    return std::max(static_cast<float>(level), kSilence);
}

} // namespace

SoundCurves MeasureSound(const std::vector<int16_t>& samples, unsigned rate, const std::vector<ExpectedKey>& keys) {
    SoundCurves curves;
    Expectation expectation(keys);
    const double toKeyZero = 440 * RatioOfKeys(-69); // Hz
    const auto window = static_cast<size_t>(kWindow * rate);
    const auto count = static_cast<size_t>(static_cast<double>(samples.size()) / (kCurveStep * rate)) + 1;
    for (size_t i = 0; i < count && !samples.empty(); ++i) {
        const double seconds = static_cast<double>(i) * kCurveStep;
        const auto centre = std::min(static_cast<size_t>(seconds * rate), samples.size() - 1);
        const size_t from = centre - std::min(centre, window / 2);
        const size_t until = std::min(from + window, samples.size());
        curves.level.push_back(LevelOf(samples.data() + from, until - from));
        curves.pitch.push_back(std::numeric_limits<float>::quiet_NaN());
        const std::optional<KeyRange> range = expectation.At(seconds);
        if (!range || curves.level.back() < kLeastLevel)
            continue;
        const double longest = rate / (toKeyZero * RatioOfKeys(range->lowest - kDeviation));
        const double shortest = rate / (toKeyZero * RatioOfKeys(range->highest + kDeviation));
        const auto reach = static_cast<size_t>(longest) + 3; // beyond the window, half of it to each side
        if (centre < (window + reach) / 2 || centre + (window + reach) / 2 + 1 > samples.size())
            continue;
        const Likeness likeness(samples.data() + centre - (window + reach) / 2, window);
        if (const auto period = PeriodOf(likeness, shortest, longest))
            curves.pitch.back() = static_cast<float>(12 * std::log2(rate / *period / toKeyZero));
    }
    return curves;
}

} // namespace torv::songs
