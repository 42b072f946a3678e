#pragma once

#include "diction.h"
#include "envelope.h"
#include "glottis.h"

#include <array>
#include <complex>
#include <cstdint>

namespace rve {

/// A recorded person's voice: harmonics of the score's pitch and noise under the spectra of the person's sounds.
class Person {
public:
    /// A still one's periods are all alike: for measuring what the rest of the engine does.
    void Configure(double rate, bool isStill);
    /// Out of silence.
    void Begin();
    /// Once every `ticksEvery` samples: the pitch from here on, and, when it is time, the next frame. `bank` is open.
    void Move(Time now, int samples, float f0, const Colour& colour, const Timeline& timeline, const VoiceBank& bank,
              const RecordedPerson& person);
    /// RMS that the vowel that is being sung has on this pitch, as it comes from Next.
    float NucleusLevel() const { return m_level; }
    float Next();

private:
    static constexpr int kMostPoints = 2048;
    static constexpr int kMostNoise = 1024;

    void MakeFrame(Time at, float f0, const Colour& colour, const Timeline& timeline, const VoiceBank& bank,
                   const RecordedPerson& person);
    void Stir(SpokenFrame& frame);
    void MakeCycle(float f0, float gain);
    void MakeNoise(float gain);
    static float LevelOn(const Envelope& sound, float f0);

    double m_rate = 44100;
    bool m_isStill = false;
    int m_hop = 224, m_noisePoints = 512;
    std::array<float, kMostNoise> m_window{};
    Diction m_diction;
    Envelope m_envelope, m_steady;
    bool m_isFirst = true;
    int m_untilFrame = 0;
    // One period of the voice, from the frame before and of this one.
    std::array<std::array<float, kMostPoints + 4>, 2> m_cycles{};
    std::array<int, 2> m_points = {1024, 1024};
    int m_newest = 0;
    float m_blend = 0, m_blendStep = 0;
    std::array<float, kMostNoise> m_noise{}; ///< what is still to sound of the noise
    int m_noiseAt = 0;
    float m_voicingFrom = 0, m_voicingTo = 0;
    double m_phase = 0;
    float m_step = 0, m_stepSlope = 0;
    float m_jitter = 1, m_shimmer = 1, m_shimmerTo = 1;
    float m_level = 1;
    Noise m_random, m_cycleRandom, m_stirRandom;
    std::array<float, bank::kCoefficients> m_stirred{};
    std::array<std::complex<float>, kMostPoints / 2> m_spectrum{};
    std::array<float, kMostPoints> m_signal{};
    std::array<std::complex<float>, 256> m_pulsePhases{}; ///< of the glottal pulse, by harmonic
};

} // namespace rve
