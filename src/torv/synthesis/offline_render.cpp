#include "torv/synthesis/offline_render.h"

#include "torv/synthesis/step_feeder.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace torv {

namespace {

constexpr DWORD kGuardSamples = 1024; ///< an engine that writes past its capacity writes here
constexpr LONGLONG kStepsPerReport = 16;

bool Append(CWaveFile& file, const short* samples, LONGLONG count) {
    WAVEFORMATEX format;
    file.GetWaveFormat(format);
    if (std::endian::native == std::endian::little && format.nBlockAlign == sizeof *samples && format.nChannels == 1)
        return file.AppendFrames(reinterpret_cast<const BYTE*>(samples), static_cast<DWORD>(count));
    for (LONGLONG i = 0; i < count; ++i)
        if (!file.AppendSample(static_cast<DWORD>(static_cast<LONG>(samples[i]))))
            return false;
    return true;
}

bool RenderSteps(const EngineInstance& engine, StepFeeder& feeder, CWaveFile& file, DWORD rate, DWORD capacity,
                 const std::function<bool()>& report) {
    // A silent step at a rate beyond the known ones can be longer than a frame.
    const auto longestStep = static_cast<DWORD>(AtOutputRate(kStepSamples, rate) + 1);
    std::vector<short> samples(std::max(capacity, longestStep) + kGuardSamples);
    while (!feeder.Finished()) {
        const LONGLONG begin = feeder.Clock();
        const auto& events = feeder.NextStep();
        RVEStepOutput output{capacity, samples.data()};
        if (engine.Step(static_cast<int>(events.size()), events.data(), output) != 0)
            return false;
        LONGLONG count = std::min<DWORD>(output.count, capacity);
        feeder.StepProduced(samples.data(), static_cast<DWORD>(count));
        if (count == 0) { // the clock goes on, so the sound must
            count = AtOutputRate(feeder.Clock(), rate) - AtOutputRate(begin, rate);
            std::fill_n(samples.begin(), count, short{0});
        }
        if (!Append(file, samples.data(), count))
            return false;
        if (feeder.Clock() / kStepSamples % kStepsPerReport == 0 && !report())
            return false;
    }
    return report();
}

} // namespace

bool RenderOffline(EngineInstance& engine, CQuillMidiBuffer& stream, CWaveFile& file, DWORD rate, DWORD capacity,
                   const ProgressHandler& progress) {
    stream.SeekToBegin();
    StepFeeder feeder;
    feeder.Begin(&stream, 0);
    const auto report = [&]() {
        const auto rendered = static_cast<DWORD>(feeder.Clock() * 1000 / kEngineTimeBase);
        const DWORD total = stream.GetLastTime();
        return !progress || progress(std::min(rendered, total), total);
    };
    engine.Start();
    return RenderSteps(engine, feeder, file, rate, capacity, report);
}

} // namespace torv
