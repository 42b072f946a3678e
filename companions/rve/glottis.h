#pragma once

#include <array>
#include <cstdint>

namespace rve {

/// The voice's source: a pulse train without any harmonic above what the sample rate can hold, and breath.
class Glottis {
public:
    void Reset();
    /// Frequency in cycles a sample from here on.
    void SetFrequency(float cyclesPerSample);
    /// The next sample, about -1..1, with a spectrum that falls by 6 dB an octave.
    float Next() {
        m_phase += m_step;
        m_phase -= m_phase >= 1.0F ? 1.0F : 0.0F;
        const float place = m_phase * kTableSize;
        const int index = static_cast<int>(place);
        const float fraction = place - static_cast<float>(index);
        return m_table[index] + (m_table[index + 1] - m_table[index]) * fraction;
    }
    /// 0..1: how open the glottis is, which lets breath through.
    float Openness() const { return 1.0F - m_phase; }

    static constexpr int kTableSize = 4096; ///< values in a period of the pulse

private:
    const float* m_table = nullptr;
    float m_phase = 0; ///< 0..1
    float m_step = 0;
};

/// White noise, -1..1, the same for the same seed.
class Noise {
public:
    void Reset(uint32_t seed) { m_state = seed ? seed : 1; }
    float Next() {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return static_cast<float>(static_cast<int32_t>(m_state)) * (1.0F / 2147483648.0F);
    }

private:
    uint32_t m_state = 1;
};

} // namespace rve
