#include "render.h"

#include "errors.h"
#include "output_file.h"

#include <torv/songs/engine_stream.h>
#include <torv/songs/synthesis.h>
#include <torv/torv.h>

#include <algorithm>
#include <array>
#include <cmath>

using namespace torv::songs;

namespace {

constexpr DWORD kBlock = 1024; // frames
constexpr int kNoLoop = 0;

DWORD Frames(DWORD milliseconds, DWORD rate) {
    return static_cast<DWORD>(static_cast<uint64_t>(milliseconds) * rate / 1000);
}

} // namespace

struct Rendering::SungWave {
    explicit SungWave(const std::string& output) : file(output), wave(file.GrowingPath()) {}
    OutputFile file; ///< never committed
    CWaveFile wave;
};

/// All parts at their levels.
class Rendering::Together : public SoundSource {
public:
    Together(Rendering& rendering, const std::vector<PartLevel>& levels) : m_rendering(rendering), m_levels(levels) {
        m_rate = rendering.m_options.rate;
        m_channels = rendering.m_options.stereo ? 2 : 1;
    }
    void Rewind() override { m_rendering.Rewind(m_levels); }

    size_t Read(double* frames, size_t count) override {
        const auto most = static_cast<DWORD>(std::min<size_t>(count, kBlock));
        std::array<float, kBlock> left, right, partLeft, partRight;
        left.fill(0);
        right.fill(0);
        DWORD longest = 0;
        for (SungWave& sung : m_rendering.m_waves) {
            const DWORD got = sung.wave.ReadFramesForPlay(partLeft.data(), partRight.data(), most, kNoLoop);
            for (DWORD i = 0; i < got; ++i) {
                left[i] += partLeft[i];
                right[i] += partRight[i];
            }
            longest = std::max(longest, got);
        }
        for (DWORD i = 0; i < longest; ++i) {
            *frames++ = left[i];
            if (m_channels == 2)
                *frames++ = right[i];
        }
        return longest;
    }

private:
    Rendering& m_rendering;
    const std::vector<PartLevel>& m_levels;
};

Rendering::Rendering(const Score& score, const std::string& output, const RenderOptions& options,
                     const std::function<void(double, double)>& progress)
    : m_options(options), m_leadFrames(Frames(score.leadMilliseconds, options.rate)) {
    std::vector<std::unique_ptr<CQuillMidiBuffer>> streams;
    std::vector<SingJob> jobs;
    try {
        for (const ScorePart& part : score.parts) {
            streams.push_back(MakeEngineStream(score, part, options.presend));
            jobs.push_back({streams.back().get(), &m_waves.emplace_back(output).wave});
        }
        SingStreams(jobs, options.rate, progress);
    } catch (const CFileException& error) {
        OutputFile::Fail(output, error);
    }
}

Rendering::~Rendering() = default;

void Rendering::Rewind(const std::vector<PartLevel>& levels) {
    for (size_t i = 0; i < m_waves.size(); ++i) {
        CWaveFile& wave = m_waves[i].wave;
        const DWORD total = wave.GetTotalSamples();
        const DWORD start = m_leadFrames + Frames(m_options.from, m_options.rate);
        const DWORD end = m_options.to ? m_leadFrames + Frames(m_options.to, m_options.rate) : total;
        wave.SetAmplitudes(levels[i].gain, levels[i].gain, levels[i].pan);
        wave.SetPlayDuration(std::min(start, total), std::min(end, total));
        wave.SeekPlayPointer(0, 0);
    }
}

WrittenSound Rendering::Mix(const std::string& path, const std::vector<PartLevel>& levels, const SoundOptions& sound) {
    Together together(*this, levels);
    return WriteSound(together, path, sound, m_waves.size() > 1 ? Overload::IsLowered : Overload::IsCut);
}

std::vector<KeptSound> Rendering::Keep(const std::vector<PartLevel>& levels, double decibels) {
    std::vector<KeptSound> sounds;
    Rewind(levels);
    std::array<float, kBlock> left;
    std::array<float, kBlock> right;
    for (size_t i = 0; i < m_waves.size(); ++i) {
        SoundKeeper keeper(m_options.rate);
        const auto scale = static_cast<float>(std::pow(10, decibels / 20) / 2); // of both sides' sum
        while (const DWORD frames = m_waves[i].wave.ReadFramesForPlay(left.data(), right.data(), kBlock, kNoLoop))
            for (DWORD frame = 0; frame < frames; ++frame)
                keeper.Add(scale * (left[frame] + right[frame]));
        sounds.push_back(keeper.Take());
        sounds.back().left = 1 - levels[i].pan;
        sounds.back().right = 1 + levels[i].pan;
    }
    return sounds;
}
