#include "render.h"

#include "errors.h"
#include "loudness_meter.h"
#include "output_file.h"
#include "sound_writer.h"

#include <torv/songs/engine_stream.h>
#include <torv/songs/synthesis.h>
#include <torv/torv.h>

#include <algorithm>
#include <array>
#include <cmath>

using namespace torv::songs;

namespace {

constexpr DWORD kBlock = 1024;   // frames
constexpr DWORD kWindow = 16384; // frames that are written at a time
constexpr int kNoLoop = 0;
constexpr float kHardlyHeard = 0.0005F; // -66 dB

DWORD Frames(DWORD milliseconds, DWORD rate) {
    return static_cast<DWORD>(static_cast<uint64_t>(milliseconds) * rate / 1000);
}

} // namespace

struct Rendering::SungWave {
    explicit SungWave(const std::string& output) : file(output), wave(kWindow) {
        wave.OpenExisting(file.GrowingPath());
    }
    OutputFile file; ///< never committed
    CWaveFile wave;
};

/// All parts at their levels.
class Rendering::Together : public SoundSource {
public:
    Together(Rendering& rendering, const MixLevels& levels) : m_rendering(rendering), m_levels(levels) {
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
        longest = std::max(longest, AddBand(left, right, longest > 0 ? longest : most));
        for (DWORD i = 0; i < longest; ++i) {
            *frames++ = left[i];
            if (m_channels == 2)
                *frames++ = right[i];
        }
        return longest;
    }

private:
    DWORD AddBand(std::array<float, kBlock>& left, std::array<float, kBlock>& right, DWORD most) {
        if (!m_rendering.m_band)
            return 0;
        std::array<double, 2 * kBlock> frames;
        const size_t got = m_rendering.m_band->Read(frames.data(), most);
        const double gain = m_levels.band * m_rendering.m_bandBalance;
        for (size_t i = 0; i < got; ++i) {
            left[i] += static_cast<float>(gain * frames[2 * i]);
            right[i] += static_cast<float>(gain * frames[2 * i + 1]);
        }
        return static_cast<DWORD>(got);
    }

    Rendering& m_rendering;
    const MixLevels& m_levels;
};

Rendering::Rendering(const Score& score, const std::string& output, const RenderOptions& options,
                     const std::function<void(double, double)>& progress)
    : m_options(options), m_leadFrames(Frames(score.leadMilliseconds, options.rate)), m_output(output) {
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
    if (options.leadIn)
        m_leadIn = static_cast<DWORD>(std::lround(*options.leadIn * options.rate));
    else if (options.from == 0)
        m_leadIn = FramesBeforeFile();
}

/// From the first sound of any part to the file's beginning, in whole milliseconds.
DWORD Rendering::FramesBeforeFile() {
    DWORD first = m_leadFrames;
    std::array<float, kBlock> left, right;
    for (SungWave& sung : m_waves) {
        sung.wave.SetAmplitudes(1, 1, 0);
        sung.wave.SetPlayDuration(0, first);
        sung.wave.SeekPlayPointer(0, 0);
        for (DWORD at = 0; const DWORD got = sung.wave.ReadFramesForPlay(left.data(), right.data(), kBlock, kNoLoop);
             at += got) {
            const auto* const sound = std::find_if(left.begin(), left.begin() + got,
                                                   [](float sample) { return std::abs(sample) > kHardlyHeard; });
            if (sound == left.begin() + got)
                continue;
            first = at + static_cast<DWORD>(sound - left.begin());
            break;
        }
    }
    const uint64_t milliseconds = (uint64_t{1000} * (m_leadFrames - first) + m_options.rate - 1) / m_options.rate;
    return Frames(static_cast<DWORD>(milliseconds), m_options.rate);
}

Rendering::~Rendering() = default;

void Rendering::Rewind(const MixLevels& levels) {
    for (size_t i = 0; i < m_waves.size(); ++i) {
        CWaveFile& wave = m_waves[i].wave;
        const DWORD total = wave.GetTotalSamples();
        const DWORD from = m_leadFrames + Frames(m_options.from, m_options.rate);
        const DWORD start = from > m_leadIn ? from - m_leadIn : 0;
        wave.SetPrePostBlanks(m_leadIn > from ? m_leadIn - from : 0, 0);
        const DWORD end = m_options.to ? m_leadFrames + Frames(m_options.to, m_options.rate) : total;
        wave.SetAmplitudes(levels.parts[i].gain, levels.parts[i].gain, levels.parts[i].pan);
        wave.SetPlayDuration(std::min(start, total), std::min(end, total));
        wave.SeekPlayPointer(0, 0);
    }
    if (m_band)
        m_band->Rewind();
}

void Rendering::AddBand(SoundSource& band, const MixLevels& levels) {
    Together voices(*this, levels);
    const double loudness = LoudnessOf(voices);
    auto file = std::make_unique<OutputFile>(m_output);
    const auto writer = MakeSoundWriter(*file, m_output, {"wav", 32, band.Channels(), band.Rate()});
    std::vector<double> block(band.Channels() * kBlock);
    band.Rewind();
    while (const size_t frames = band.Read(block.data(), kBlock))
        writer->Append(block.data(), frames);
    writer->Finish();
    auto kept = OpenSound(file->GrowingPath());
    const double own = LoudnessOf(*kept);
    m_bandBalance = own > 0 && loudness > 0 ? loudness / own : 1;
    m_bandFile = std::move(file);
    m_band = std::move(kept);
}

WrittenSound Rendering::Mix(const std::string& path, const MixLevels& levels, const SoundOptions& sound) {
    Together together(*this, levels);
    return WriteSound(together, path, sound, m_waves.size() > 1 || m_band ? Overload::IsLowered : Overload::IsCut);
}

std::vector<KeptSound> Rendering::Keep(const MixLevels& levels, double decibels) {
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
        sounds.back().left = 1 - levels.parts[i].pan;
        sounds.back().right = 1 + levels.parts[i].pan;
    }
    if (m_band) {
        SoundKeeper keeper(m_options.rate);
        const double scale = levels.band * m_bandBalance * std::pow(10, decibels / 20) / 2;
        std::vector<double> block(2 * kBlock);
        while (const size_t frames = m_band->Read(block.data(), kBlock))
            for (size_t frame = 0; frame < frames; ++frame)
                keeper.Add(static_cast<float>(scale * (block[2 * frame] + block[2 * frame + 1])));
        sounds.push_back(keeper.Take());
    }
    return sounds;
}
