#include "person.h"

#include "fourier.h"
#include "place.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rve {

namespace {

constexpr uint32_t kSeed = 0x1F123BB5;
constexpr float kHighestHarmonic = 0.45F; // of the sample rate
constexpr float kLowestPitch = 10;        // Hz: below it the harmonics stay where they are
constexpr float kHighestVoice = 12000;    // Hz: above it there is noise alone
constexpr float kJitter = 0.004F;         // of a period
constexpr float kShimmer = 0.03F;         // of an amplitude
constexpr float kSwell = 1.26F;           // 2 dB above the middle of its vowel is as loud as a sound becomes
// How much of a cepstrum's deviation a frame has from the one before, and how far the first coefficient strays: a
// quarter of what the models of the recordings say of theirs, higher ones less.
constexpr float kStay = 0.75F;
constexpr float kStray = 0.1F;

// Where a glottal pulse opens, its spectrum has a resonance that runs backwards in time: Doval, d'Alessandro and
// Henrich, "The voice source as a causal/anticausal linear filter", VOQUAL 2003. The recordings' spectra hold its
// amplitudes; its phases are turned round. In fundamentals, for an open quotient of 0.6 and an asymmetry of 0.7:
constexpr float kOpenResonance = 0.83F;
constexpr float kOpenWidth = 0.5F;

} // namespace

void Person::Configure(double rate, bool isStill) {
    m_rate = rate;
    m_isStill = isStill;
    m_hop = rate > 50000 ? 448 : 224;
    m_noisePoints = 2 * m_hop > 512 ? 1024 : 512;
    for (int i = 0; i < 2 * m_hop; ++i)
        m_window[Place(i)] = static_cast<float>(std::sin(std::numbers::pi * (i + 0.5) / (2 * m_hop)));
    for (size_t k = 0; k < m_pulsePhases.size(); ++k) {
        const auto harmonic = static_cast<float>(k);
        const float lag = std::atan2(kOpenWidth * harmonic, kOpenResonance * kOpenResonance - harmonic * harmonic);
        m_pulsePhases[k] = std::polar(1.0F, 2 * lag);
    }
    SharedFourier();
    m_steady.Set({}, {}); // tables of its own are made before the first step
    Begin();
}

void Person::Begin() {
    m_diction.Reset();
    m_isFirst = true;
    m_untilFrame = 0;
    m_noise.fill(0);
    m_noiseAt = 0;
    m_phase = 0;
    m_jitter = m_shimmer = m_shimmerTo = 1;
    m_random.Reset(kSeed);
    m_cycleRandom.Reset(kSeed * 3);
    m_stirRandom.Reset(kSeed * 5);
    m_stirred.fill(0);
}

void Person::Move(Time now, int samples, float f0, const Colour& colour, const Timeline& timeline,
                  const VoiceBank& bank, const RecordedPerson& person) {
    const auto step = static_cast<float>(std::min(static_cast<double>(f0), m_rate * kHighestHarmonic) / m_rate);
    if (m_isFirst)
        m_step = step;
    m_stepSlope = (step - m_step) / static_cast<float>(samples);
    if (m_untilFrame <= 0) {
        if (m_isFirst)
            MakeFrame(now, f0, colour, timeline, bank, person);
        MakeFrame(now + static_cast<Time>(m_hop * kTimeBase / m_rate), f0, colour, timeline, bank, person);
        m_isFirst = false;
        m_untilFrame = m_hop;
        m_blend = 0;
        m_blendStep = 1.0F / static_cast<float>(m_hop);
    }
    m_untilFrame -= samples;
}

void Person::MakeFrame(Time at, float f0, const Colour& colour, const Timeline& timeline, const VoiceBank& bank,
                       const RecordedPerson& person) {
    f0 = std::clamp(f0, kLowestPitch, static_cast<float>(m_rate) * kHighestHarmonic);
    SpokenFrame frame = m_diction.At(at, timeline, bank, person);
    if (!m_isStill)
        Stir(frame);
    m_envelope.Set(frame, colour);
    m_voicingFrom = m_voicingTo;
    m_voicingTo = m_envelope.Voicing();
    m_steady.Set(m_diction.Nucleus(), colour);
    const float pace = m_isFirst ? 1.0F : 0.25F;
    m_level += (LevelOn(m_steady, f0) - m_level) * pace;
    // A word that dies away in speech begins much louder than the middle of its vowel, which is held here.
    const float even = std::min(1.0F, kSwell * m_level / LevelOn(m_envelope, f0));
    const float gain = 1 + (even - 1) * m_voicingTo;
    MakeCycle(f0, gain);
    MakeNoise(gain);
    if (m_isFirst)
        m_voicingFrom = m_voicingTo;
}

/// Nobody's tract stands still: from frame to frame the spectrum moves about its mean as the recordings' do.
void Person::Stir(SpokenFrame& frame) {
    const float fresh = kStray * std::sqrt(1 - kStay * kStay);
    for (size_t m = 2; m < m_stirred.size(); ++m) { // level and tilt stay
        m_stirred[m] = m_stirred[m] * kStay + fresh * m_stirRandom.Next();
        frame.cepstrum[m] += m_stirred[m] / (1 + 0.1F * static_cast<float>(m));
    }
}

/// RMS of a sound, its harmonics and as much of its noise as lies around each.
float Person::LevelOn(const Envelope& sound, float f0) {
    float power = 0;
    const int count = static_cast<int>(4000 / f0);
    for (int harmonic = 1; harmonic <= count; ++harmonic) {
        const float hz = static_cast<float>(harmonic) * f0;
        const float voice = sound.VoiceLevelAt(hz);
        const float noise = sound.NoiseLevelAt(hz), between = sound.NoiseLevelAt(hz - f0 / 2);
        power += voice * voice + (noise * noise + between * between) / 2;
    }
    return std::max(std::sqrt(power * 2 * f0 / static_cast<float>(bank::kRate)), 1e-3F);
}

/// A pulse train through the recording's filter has, at its rate of 16 kHz and with the power of white noise, harmonics
/// of this amplitude times the spectrum's.
void Person::MakeCycle(float f0, float gain) {
    m_newest ^= 1;
    const auto newest = Place(m_newest);
    const float highest = std::min(static_cast<float>(m_rate) * kHighestHarmonic, std::max(kHighestVoice, f0 * 1.5F));
    const int harmonics = std::clamp(static_cast<int>(highest / f0), 1, 255);
    const int points = harmonics < 128 ? 1024 : 2048;
    const float unit = gain * 2 * std::sqrt(f0 / static_cast<float>(bank::kRate));
    std::fill_n(m_spectrum.begin(), points / 2, std::complex<float>());
    const float edge = highest * 0.9F;
    for (int k = 1; k <= harmonics; ++k) {
        const float hz = f0 * static_cast<float>(k);
        const float fade = hz > edge ? std::max(0.0F, (highest - hz) / (highest - edge)) : 1.0F;
        const std::complex<float> voice = m_envelope.VoiceAt(hz) * (unit * fade);
        const std::complex<float> pulse = m_pulsePhases[Place(k)];
        m_spectrum[Place(k)] = {voice.real() * pulse.real() - voice.imag() * pulse.imag(),
                                voice.real() * pulse.imag() + voice.imag() * pulse.real()};
    }
    float* const cycle = m_cycles[newest].data();
    SharedFourier().ToSignal(m_spectrum.data(), points, cycle + 1);
    cycle[0] = cycle[points];
    cycle[points + 1] = cycle[1];
    cycle[points + 2] = cycle[2];
    m_points[newest] = points;
}

/// Noise of the frame's spectrum, faded in over one hop and out over the next, where the next frame's comes in.
void Person::MakeNoise(float gain) {
    for (int i = 0; i < m_hop; ++i)
        m_noise[Place(i)] = m_noise[Place(i + m_hop)];
    const float spacing = static_cast<float>(m_rate) / static_cast<float>(m_noisePoints);
    // White noise of the recording's density: at a higher rate it is stronger, as there is more of it.
    const auto unit = gain * static_cast<float>(std::sqrt(m_rate / bank::kRate) * std::sqrt(6.0) /
                                                std::sqrt(static_cast<double>(m_noisePoints)));
    for (int k = 0; k < m_noisePoints / 2; ++k) {
        const float hz = spacing * static_cast<float>(k);
        const float level = k == 0 || hz > 20000 ? 0 : m_envelope.NoiseLevelAt(hz) * unit;
        m_spectrum[Place(k)] = {m_random.Next() * level, m_random.Next() * level};
    }
    SharedFourier().ToSignal(m_spectrum.data(), m_noisePoints, m_signal.data());
    for (int i = 0; i < m_hop; ++i) {
        m_noise[Place(i)] += m_signal[Place(i)] * m_window[Place(i)];
        m_noise[Place(i + m_hop)] = m_signal[Place(i + m_hop)] * m_window[Place(i + m_hop)];
    }
    m_noiseAt = 0;
}

float Person::Next() {
    m_step += m_stepSlope;
    m_phase += static_cast<double>(m_step * m_jitter);
    if (m_phase >= 1) {
        m_phase -= 1;
        if (!m_isStill) {
            m_jitter = 1 + kJitter * m_cycleRandom.Next();
            m_shimmerTo = 1 + kShimmer * m_cycleRandom.Next();
        }
    }
    m_shimmer += (m_shimmerTo - m_shimmer) * 0.01F;
    m_blend = std::min(m_blend + m_blendStep, 1.0F);
    const auto read = [this](size_t which) {
        const float place = static_cast<float>(m_phase) * static_cast<float>(m_points[which]);
        const int at = std::min(static_cast<int>(place), m_points[which] - 1);
        const float x = place - static_cast<float>(at);
        const float* const y = m_cycles[which].data() + at; // y[1] is the point itself
        const float c1 = 0.5F * (y[2] - y[0]);
        const float c2 = y[0] - 2.5F * y[1] + 2 * y[2] - 0.5F * y[3];
        const float c3 = 0.5F * (y[3] - y[0]) + 1.5F * (y[1] - y[2]);
        return ((c3 * x + c2) * x + c1) * x + y[1];
    };
    const float before = read(Place(m_newest ^ 1));
    const float now = read(Place(m_newest));
    const float voice = (before + (now - before) * m_blend) * m_shimmer;
    // Breath comes in puffs while the glottis opens and shuts.
    const float voicing = m_voicingFrom + (m_voicingTo - m_voicingFrom) * m_blend;
    const float open = 2 * std::abs(static_cast<float>(m_phase) - 0.5F); // 1 at the pulse
    const float puff = 1 + voicing * (0.45F + 1.05F * open - 1);
    const float noise = m_noiseAt < m_hop ? m_noise[Place(m_noiseAt++)] : 0;
    return voice + noise * puff;
}

} // namespace rve
