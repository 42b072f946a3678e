#include "glottis.h"

#include <cmath>
#include <iterator>

namespace rve {

namespace {

constexpr int kTableSize = Glottis::kTableSize;
constexpr int kHarmonics[] = {1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64, 96, 128, 192, 256, 384, 512};
constexpr float kHighestHarmonic = 0.46F; // cycles a sample

/// One period of the pulse with so many harmonics, and its first value again, for the interpolation.
using Table = std::array<float, kTableSize + 1>;

struct Tables {
    std::array<Table, std::size(kHarmonics)> pulses;

    Tables() {
        constexpr double kTurn = 6.283185307179586;
        std::array<double, kTableSize> sines;
        for (size_t i = 0; i < kTableSize; ++i)
            sines[i] = std::sin(kTurn * static_cast<double>(i) / kTableSize);
        std::array<double, kTableSize> sum{};
        int harmonic = 1;
        for (size_t t = 0; t < std::size(kHarmonics); ++t) {
            for (; harmonic <= kHarmonics[t]; ++harmonic) {
                const double drift = 0.35 * harmonic; // the pulse falls so far before its period ends
                const double sine = std::cos(drift) / harmonic, cosine = std::sin(drift) / harmonic;
                for (size_t i = 0, place = 0; i < kTableSize; ++i) {
                    sum[i] += sine * sines[place] + cosine * sines[(place + kTableSize / 4) % kTableSize];
                    place = (place + static_cast<size_t>(harmonic)) % kTableSize;
                }
            }
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

} // namespace rve
