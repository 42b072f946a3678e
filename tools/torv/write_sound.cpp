#include "write_sound.h"

#include "output_file.h"
#include "sound_writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

using torv::songs::SoundSource;

namespace {

constexpr size_t kBlock = 1024; // frames: what is made and written of them at a time stays in the cache
constexpr double kFullScale = 32767.0 / 32768.0;

/// Four at a time, as each maximum waits for the one before it.
double PeakOf(const std::vector<double>& samples, size_t count) {
    std::array<double, 4> peaks{};
    for (size_t i = 0; i < count; ++i)
        peaks[i % 4] = std::max(peaks[i % 4], std::abs(samples[i]));
    return *std::max_element(peaks.begin(), peaks.end());
}

double FindPeak(SoundSource& source) {
    std::vector<double> block(kBlock * source.Channels());
    double peak = 0;
    source.Rewind();
    while (const size_t frames = source.Read(block.data(), kBlock))
        peak = std::max(peak, PeakOf(block, frames * source.Channels()));
    return peak;
}

/// What the samples are multiplied with.
double ScaleFor(SoundSource& source, const SoundOptions& options, Overload overload) {
    if (!options.normalize && overload == Overload::IsCut)
        return 1;
    const double peak = FindPeak(source);
    const double most = std::min(std::pow(10.0, options.normalize.value_or(0) / 20), kFullScale);
    return peak > most || (options.normalize && peak > 0) ? most / peak : 1;
}

} // namespace

WrittenSound WriteSound(SoundSource& source, const std::string& path, const SoundOptions& options, Overload overload) {
    OutputFile file(path);
    const auto writer =
        MakeSoundWriter(file, path, {EndingFor(path, options), options.bits, source.Channels(), source.Rate()});
    const double scale = ScaleFor(source, options, overload);
    WrittenSound written;
    written.decibels = 20 * std::log10(scale);
    source.Rewind();
    std::vector<double> block(kBlock * source.Channels());
    while (const size_t frames = source.Read(block.data(), kBlock)) {
        const size_t samples = frames * source.Channels();
        written.peak = std::max(written.peak, PeakOf(block, samples));
        if (scale != 1)
            for (size_t i = 0; i < samples; ++i)
                block[i] *= scale;
        writer->Append(block.data(), frames);
        written.frames += frames;
    }
    writer->Finish();
    file.Commit();
    written.cutFrames = writer->CutFrames();
    written.seconds = source.Rate() ? static_cast<double>(written.frames) / source.Rate() : 0;
    return written;
}
