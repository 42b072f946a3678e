#include "mix.h"

#include "describe.h"
#include "errors.h"
#include "file_identity.h"
#include "messages.h"
#include "mix_input.h"
#include "mix_source.h"
#include "output_file.h"

#include <torv/torv.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <deque>
#include <filesystem>

namespace {

constexpr uint64_t kStereoFrameBytes = 4;

std::string Text(size_t number) { return std::to_string(number); }

std::vector<MixInput> ParseInputs(const MixOptions& options) {
    std::vector<MixInput> inputs;
    std::vector<std::string> paths;
    for (const std::string& argument : options.inputs)
        paths.push_back(inputs.emplace_back(ParseMixInput(argument)).path);
    RefuseOverwriting(paths, {{"--output", options.output}});
    return inputs;
}

std::deque<MixSource> OpenSources(const std::vector<MixInput>& inputs, const MixOptions& options) {
    std::deque<MixSource> sources;
    size_t tracks = 0;
    for (const MixInput& input : inputs) {
        const MixSource& source = sources.emplace_back(input, options.output);
        const MixSource& first = sources.front();
        if (source.Rate() != first.Rate())
            throw InputError{source.Path() + ": has " + Text(source.Rate()) + " samples a second, but " + first.Path() +
                             " has " + Text(first.Rate()) + "; convert it with: sox " + source.Path() + " -r " +
                             Text(first.Rate()) + " converted.wav"};
        if (source.IsStreamed())
            Remark(options.quiet,
                   source.Path() + ": its header does not tell how long it is; it is read to the file's end");
        tracks += source.Tracks();
    }
    if (tracks > static_cast<size_t>(torv::kMixerTracks))
        throw InputError{"these are " + Text(tracks) + " tracks (a stereo file counts as two), and " +
                         Text(torv::kMixerTracks) +
                         " is the most: mix some of them first, then their mix with the rest"};
    return sources;
}

/// The mixer writes whole blocks: what is behind the longest track is cut off.
void CutTo(const char* path, DWORD frames) {
    CWaveFile wave(path);
    WAVEFORMATEX format{};
    wave.GetWaveFormat(format);
    wave.SetLength(static_cast<ULONGLONG>(frames) * format.nBlockAlign);
    wave.Close();
}

/// The mixer does not tell why it failed.
bool HasRoomFor(const char* path, DWORD frames) {
    std::error_code error;
    const auto space = std::filesystem::space(std::filesystem::path(path).parent_path(), error);
    return error || space.available > kStereoFrameBytes * frames;
}

void WarnOfWrapping(const CWaveOut& mixer) {
    if (mixer.GetWrappedFrames() == 0)
        return;
    const double excess = std::floor(CWaveOut::Amplitude2Db(mixer.GetPeakLevel()) * 10) / 10 + 0.1;
    char advice[80];
    std::snprintf(advice, sizeof advice, "lower every level by %.1f dB, as in FILE:%.1f", excess, -excess);
    const DWORD frames = mixer.GetWrappedFrames();
    Remark(false,
           Text(frames) + (frames == 1 ? " frame" : " frames") + " passed full scale and will crackle: " + advice);
}

} // namespace

void Mix(const MixOptions& options) {
    const auto begin = std::chrono::steady_clock::now();
    const std::vector<MixInput> inputs = ParseInputs(options);
    std::deque<MixSource> sources = OpenSources(inputs, options);
    const DWORD rate = sources.front().Rate();
    OutputFile mixed(options.output);
    DWORD frames = 0;
    CWaveOut mixer;
    try {
        std::vector<tagMixDownTrack> tracks;
        for (MixSource& source : sources) {
            source.AddTracks(tracks);
            frames = std::max(frames, source.Frames());
        }
        if (!mixer.AudioMixDown(mixed.GrowingPath(), tracks.data(), static_cast<int>(tracks.size()),
                                static_cast<int>(rate)))
            FailToWrite(options.output, !HasRoomFor(mixed.GrowingPath(), frames), {});
        CutTo(mixed.GrowingPath(), frames);
    } catch (const CFileException& error) {
        mixed.Fail(error);
    }
    mixed.Commit();
    WarnOfWrapping(mixer);
    if (options.quiet)
        return;
    const double seconds = rate ? static_cast<double>(frames) / rate : 0;
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::fprintf(SummaryStream(options.output), "%zu files, %s, %.0f x real time: %s\n", options.inputs.size(),
                 ClockText(seconds).c_str(), elapsed > 0 ? seconds / elapsed : 0.0, options.output.c_str());
}
