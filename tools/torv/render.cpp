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
constexpr double kFullScale = 32767.0 / 32768.0;
constexpr int kNoLoop = 0;

DWORD Frames(DWORD milliseconds, DWORD rate) {
    return static_cast<DWORD>(static_cast<uint64_t>(milliseconds) * rate / 1000);
}

DWORD Sample16(double value, bool& isCut) {
    const double scaled = std::round(value * 32768.0);
    const double cut = std::clamp(scaled, -32768.0, 32767.0);
    isCut = isCut || cut != scaled;
    return static_cast<WORD>(static_cast<SHORT>(cut));
}

} // namespace

struct Rendering::SungWave {
    explicit SungWave(const std::string& output) : file(output), wave(file.GrowingPath()) {}
    OutputFile file; ///< never committed
    CWaveFile wave;
};

struct Rendering::Block {
    std::array<float, kBlock> left;
    std::array<float, kBlock> right;
    DWORD frames = 0;
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

/// The next frames of all parts together; false behind the longest one.
bool Rendering::Read(Block& block) {
    std::array<float, kBlock> left;
    std::array<float, kBlock> right;
    block.left.fill(0);
    block.right.fill(0);
    block.frames = 0;
    for (SungWave& sung : m_waves) {
        const DWORD frames = sung.wave.ReadFramesForPlay(left.data(), right.data(), kBlock, kNoLoop);
        for (DWORD i = 0; i < frames; ++i) {
            block.left[i] += left[i];
            block.right[i] += right[i];
        }
        block.frames = std::max(block.frames, frames);
    }
    return block.frames > 0;
}

double Rendering::FindPeak(const std::vector<PartLevel>& levels) {
    Rewind(levels);
    double peak = 0;
    for (Block block; Read(block);)
        for (DWORD i = 0; i < block.frames; ++i)
            peak = std::max<double>({peak, std::abs(block.left[i]), std::abs(block.right[i])});
    return peak;
}

RenderResult Rendering::Mix(const std::string& path, const std::vector<PartLevel>& levels) {
    OutputFile finished(path);
    RenderResult result;
    try {
        const double peak = m_waves.size() > 1 ? FindPeak(levels) : 0.0;
        const double scale = peak > kFullScale ? kFullScale / peak : 1.0;
        result.lowered = -20 * std::log10(scale);
        CWaveFile wave(finished.GrowingPath());
        WAVEFORMATEX format{};
        m_waves.front().wave.GetWaveFormat(format);
        format.nChannels = m_options.stereo ? 2 : 1;
        format.nBlockAlign = static_cast<WORD>(format.nChannels * 2);
        format.nAvgBytesPerSec = format.nBlockAlign * format.nSamplesPerSec;
        wave.SetWaveFormat(format);
        Rewind(levels);
        for (Block block; Read(block);)
            for (DWORD i = 0; i < block.frames; ++i) {
                bool isCut = false;
                const DWORD left = Sample16(block.left[i] * scale, isCut);
                wave.AppendSample(left, m_options.stereo ? Sample16(block.right[i] * scale, isCut) : left);
                result.clippedFrames += isCut;
            }
        result.seconds = static_cast<double>(wave.GetTotalSamples()) / format.nSamplesPerSec;
        wave.Close();
    } catch (const CFileException& error) {
        finished.Fail(error);
    }
    finished.Commit();
    return result;
}

std::vector<KeptSound> Rendering::Keep(const std::vector<PartLevel>& levels, double lowered) {
    std::vector<KeptSound> sounds;
    Rewind(levels);
    std::array<float, kBlock> left;
    std::array<float, kBlock> right;
    for (size_t i = 0; i < m_waves.size(); ++i) {
        SoundKeeper keeper(m_options.rate);
        const auto scale = static_cast<float>(std::pow(10, -lowered / 20) / 2); // of both sides' sum
        while (const DWORD frames = m_waves[i].wave.ReadFramesForPlay(left.data(), right.data(), kBlock, kNoLoop))
            for (DWORD frame = 0; frame < frames; ++frame)
                keeper.Add(scale * (left[frame] + right[frame]));
        sounds.push_back(keeper.Take());
        sounds.back().left = 1 - levels[i].pan;
        sounds.back().right = 1 + levels[i].pan;
    }
    return sounds;
}
