#include "glottis.h"

#include <cmath>
#include <iterator>

namespace rve {

namespace {

constexpr int kTableSize = 2048;
constexpr int kHarmonics[] = {1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64, 96, 128, 192, 256, 384, 512};
constexpr float kHighestHarmonic = 0.46F; // cycles a sample

/// One period of the pulse with so many harmonics, and its first value again, for the interpolation.
using Table = std::array<float, kTableSize + 1>;

struct Tables {
    std::array<Table, std::size(kHarmonics)> pulses;

    Tables() {
        constexpr double kTurn = 6.283185307179586;
        std::array<double, kTableSize> sum{};
        int harmonic = 1;
        for (size_t t = 0; t < std::size(kHarmonics); ++t) {
            for (; harmonic <= kHarmonics[t]; ++harmonic)
                for (int i = 0; i < kTableSize; ++i) // phases drift, so that the peak stays low
                    sum[static_cast<size_t>(i)] +=
                        std::sin(kTurn * (harmonic * i % kTableSize) / kTableSize + 0.35 * harmonic) / harmonic;
            for (int i = 0; i <= kTableSize; ++i)
                pulses[t][static_cast<size_t>(i)] = static_cast<float>(sum[static_cast<size_t>(i % kTableSize)] * 0.5);
        }
    }
};

const Tables& AllTables() {
    static const Tables tables;
    return tables;
}

} // namespace

void Glottis::Reset() {
    m_phase = 0;
    m_table = AllTables().pulses[0].data();
    m_step = 0;
}

void Glottis::SetFrequency(float cyclesPerSample) {
    m_step = cyclesPerSample;
    size_t table = 0;
    while (table + 1 < std::size(kHarmonics) &&
           static_cast<float>(kHarmonics[table + 1]) * cyclesPerSample < kHighestHarmonic)
        ++table;
    m_table = AllTables().pulses[table].data();
}

float Glottis::Next() {
    m_phase += m_step;
    m_phase -= m_phase >= 1.0F ? 1.0F : 0.0F;
    const float place = m_phase * kTableSize;
    const int index = static_cast<int>(place);
    const float fraction = place - static_cast<float>(index);
    return m_table[index] + (m_table[index + 1] - m_table[index]) * fraction;
}

} // namespace rve
