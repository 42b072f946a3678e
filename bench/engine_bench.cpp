// One voice of the reference engine, a minute of notes on vowels in steps of 256 samples: a synthetic voice and a
// recorded person. Beside them STK's singing voice, a wave through four formants, which knows no notes' ends, no nose
// and no breath.
#include "bench_file.h"

#include "companions/rve/engine_text.h"
#include "singer.h"

#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#ifdef TORV_HAS_STK
#include <stk/VoicForm.h>
#endif

namespace {

constexpr int kStep = 256;
constexpr int kRate = 44100;
constexpr int kSteps = 60 * kRate / kStep;
constexpr int kStepsANote = 86; // half a second
constexpr int kNoteMs = 499;
constexpr int kKey = 64;
constexpr int kSoprano = 0;
constexpr int kPerson = 96;

/// Loudness over all, 1 the full scale.
class Loudness {
public:
    void Add(double sample) { m_sum += sample * sample; }
    bool IsHeard() const { return std::sqrt(m_sum / (kSteps * kStep)) > 0.01; }

private:
    double m_sum = 0;
};

[[gnu::noinline]] Loudness MeasuredSinger(rve::Singer& singer, const Stream& note) {
    Loudness loudness;
    std::array<int16_t, kStep> samples;
    for (int step = 0; step < kSteps; ++step) {
        const bool begins = step % kStepsANote == 0;
        const uint32_t count = singer.Step(begins ? static_cast<int32_t>(note.Events().size()) : 0,
                                           note.Events().data(), samples.data(), kStep);
        for (uint32_t i = 0; i < count; ++i)
            loudness.Add(samples[i] / 32768.0);
    }
    return loudness;
}

void SingEngine(benchmark::State& state) {
    Stream note;
    note.Value(0x53, static_cast<int>(state.range(0)));
    note.Note(
        {.note = kKey, .startMs = 100, .lengthMs = kNoteMs, .phonemes = "a", .vibratoStart = 40, .vibratoExtent = 40});
    const auto singer = std::make_unique<rve::Singer>();
    singer->Configure(kRate);
    Loudness loudness;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        singer->Reset();
        state.ResumeTiming();
        loudness = MeasuredSinger(*singer, note);
    }
    bench::Expect(state, loudness.IsHeard());
}
BENCHMARK(SingEngine)->Arg(kSoprano)->Arg(kPerson)->Unit(benchmark::kMillisecond);

#ifdef TORV_HAS_STK
/// The wave that it sings with, which is not packed with the library: a pulse of twenty harmonics, 16 bits, big-endian.
void WriteStkWave(const std::filesystem::path& path) {
    std::ofstream file(path, std::ios::binary);
    for (int i = 0; i < 256; ++i) {
        double sample = 0;
        for (int harmonic = 1; harmonic <= 20; ++harmonic)
            sample += std::cos(2 * std::numbers::pi * harmonic * i / 256) / 20;
        const auto value = static_cast<int16_t>(30000 * sample);
        file.put(static_cast<char>(value >> 8)).put(static_cast<char>(value & 0xFF));
    }
}

[[gnu::noinline]] Loudness MeasuredStk(stk::VoicForm& voice) {
    Loudness loudness;
    stk::StkFrames frames(kStep, 1);
    for (int step = 0; step < kSteps; ++step) {
        if (step % kStepsANote == 0)
            voice.noteOn(440 * std::exp2((kKey - 69) / 12.0), 0.8);
        voice.tick(frames);
        for (unsigned i = 0; i < kStep; ++i)
            loudness.Add(frames[i]);
    }
    return loudness;
}

void SingStk(benchmark::State& state) {
    const bench::TemporaryFile wave("impuls20.raw");
    WriteStkWave(wave.Path());
    stk::Stk::setSampleRate(kRate);
    stk::Stk::setRawwavePath(std::filesystem::path(wave.Path()).parent_path().string() + "/");
    stk::VoicForm voice;
    voice.setPhoneme("ahh");
    Loudness loudness;
    for ([[maybe_unused]] auto _ : state)
        loudness = MeasuredStk(voice);
    bench::Expect(state, loudness.IsHeard());
}
BENCHMARK(SingStk)->Unit(benchmark::kMillisecond);
#endif

} // namespace
