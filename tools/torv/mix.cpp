#include "mix.h"

#include "describe.h"
#include "errors.h"
#include "file_identity.h"
#include "input.h"
#include "messages.h"
#include "mix_input.h"
#include "output_file.h"
#include "sound_reader.h"
#include "write_sound.h"

#include <torv/audio/gain.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace {

/// A sound at its level and place. A mono one is panned by the library's law; of a stereo one the sides are balanced by
/// it, so that in the middle it is as it was.
struct Placed {
    std::unique_ptr<SoundReader> sound;
    torv::StereoGain gain;
};

template <unsigned channels>
void AddFrames(const double* from, size_t count, const torv::StereoGain& gain, double* to) {
    const double gains[2] = {gain.left, gain.right};
    for (size_t i = 0; i < count; ++i)
        for (unsigned side = 0; side < 2; ++side)
            to[2 * i + side] += gains[side] * from[i * channels + side * (channels - 1)];
}

class MixedSounds : public torv::songs::SoundSource {
public:
    MixedSounds(const std::vector<MixInput>& inputs, bool isQuiet) {
        m_channels = 2;
        for (const MixInput& input : inputs)
            Add(input, NameOfInput(inputs.front().path), isQuiet);
    }

    void Rewind() override {
        for (const Placed& placed : m_sounds)
            placed.sound->Rewind();
    }

    size_t Read(double* frames, size_t count) override {
        std::fill(frames, frames + 2 * count, 0.0);
        size_t longest = 0;
        for (const Placed& placed : m_sounds) {
            const unsigned channels = placed.sound->Channels();
            m_block.resize(count * channels);
            const size_t got = placed.sound->Read(m_block.data(), count);
            if (channels == 2)
                AddFrames<2>(m_block.data(), got, placed.gain, frames);
            else
                AddFrames<1>(m_block.data(), got, placed.gain, frames);
            longest = std::max(longest, got);
        }
        return longest;
    }

private:
    void Add(const MixInput& input, const std::string& first, bool isQuiet) {
        const std::string name = NameOfInput(input.path);
        std::unique_ptr<SoundReader> sound = OpenSound(input.path);
        if (sound->Channels() > 2)
            throw InputError{name + ": has " + std::to_string(sound->Channels()) +
                             " channels, and two are the most; convert it with: sox " + name + " -c 2 converted.wav"};
        if (m_rate == 0)
            m_rate = sound->Rate();
        if (sound->Rate() != m_rate)
            throw InputError{name + ": has " + std::to_string(sound->Rate()) + " samples a second, but " + first +
                             " has " + std::to_string(m_rate) + "; convert it with: sox " + name + " -r " +
                             std::to_string(m_rate) + " converted.wav"};
        if (sound->IsStreamed())
            Remark(isQuiet, name + ": its header does not tell how long it is; it is read to the file's end");
        const double volume = std::pow(10.0, input.level / 20);
        m_sounds.push_back({std::move(sound), torv::GainsAt(volume, volume, input.pan)});
    }

    std::vector<Placed> m_sounds;
    std::vector<double> m_block;
};

void WarnOfCutting(const WrittenSound& written) {
    if (written.cutFrames == 0)
        return;
    const double excess = std::floor(20 * std::log10(written.peak) * 10) / 10 + 0.1;
    char advice[120];
    std::snprintf(advice, sizeof advice, "lower every level by %.1f dB, as in FILE:%.1f, or ask for --normalize",
                  excess, -excess);
    Remark(false, Counted(written.cutFrames, "frame") + " passed full scale and " +
                      (written.cutFrames == 1 ? "is" : "are") + " cut: " + advice);
}

} // namespace

void Mix(const MixOptions& options) {
    const auto begin = std::chrono::steady_clock::now();
    std::vector<MixInput> inputs;
    std::vector<std::string> paths;
    for (const std::string& argument : options.inputs)
        paths.push_back(inputs.emplace_back(ParseMixInput(argument)).path);
    RefuseOverwriting(paths, {{"--output", options.output}});
    EndingFor(options.output, options.sound); // before the work
    MixedSounds mixed(inputs, options.quiet);
    const WrittenSound written = WriteSound(mixed, options.output, options.sound, Overload::IsCut);
    WarnOfCutting(written);
    if (options.quiet)
        return;
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::fprintf(SummaryStream(options.output), "%s, %s, %.0f x real time: %s\n",
                 Counted(inputs.size(), "file").c_str(), ClockText(written.seconds).c_str(),
                 elapsed > 0 ? written.seconds / elapsed : 0.0, NameOfOutput(options.output).c_str());
}
