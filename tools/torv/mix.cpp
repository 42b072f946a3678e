#include "mix.h"

#include "describe.h"
#include "messages.h"
#include "midi_song.h"
#include "mix_input.h"
#include "mix_source.h"

#include <torv/torv.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace {

std::string Text(size_t number) { return std::to_string(number); }

std::vector<MixSource> OpenSources(const MixOptions& options) {
    std::vector<MixSource> sources;
    size_t tracks = 0;
    for (const std::string& argument : options.inputs) {
        const MixSource& source = sources.emplace_back(ParseMixInput(argument));
        const MixSource& first = sources.front();
        if (source.Rate() != first.Rate())
            throw InputError{source.Path() + ": has " + Text(source.Rate()) + " samples a second, but " + first.Path() +
                             " has " + Text(first.Rate()) + "; convert it with: sox " + source.Path() + " -r " +
                             Text(first.Rate()) + " converted.wav"};
        tracks += source.Tracks();
    }
    if (tracks > static_cast<size_t>(torv::kMixerTracks))
        throw InputError{"these are " + Text(tracks) + " tracks (a stereo file counts as two), and " +
                         Text(torv::kMixerTracks) +
                         " is the most: mix some of them first, then their mix with the rest"};
    return sources;
}

/// The mixer writes whole blocks: what is behind the longest track is cut off.
void CutTo(const std::string& path, DWORD frames) {
    CWaveFile wave(path.c_str());
    WAVEFORMATEX format{};
    wave.GetWaveFormat(format);
    wave.SetLength(static_cast<ULONGLONG>(frames) * format.nBlockAlign);
    wave.Close();
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
    std::vector<MixSource> sources = OpenSources(options);
    const DWORD rate = sources.front().Rate();
    const ScratchFile mixed(options.output + ".part");
    DWORD frames = 0;
    CWaveOut mixer;
    try {
        std::vector<tagMixDownTrack> tracks;
        for (MixSource& source : sources) {
            source.AddTracks(tracks, options.output);
            frames = std::max(frames, source.Frames());
        }
        if (!mixer.AudioMixDown(mixed.Path().c_str(), tracks.data(), static_cast<int>(tracks.size()),
                                static_cast<int>(rate)))
            throw InputError{options.output + ": cannot be written; check the folder and the free space"};
        sources.clear(); // the output may be one of them
        CutTo(mixed.Path(), frames);
    } catch (const CFileException& error) {
        char reason[256] = "";
        error.GetErrorMessage(reason, sizeof reason);
        throw InputError{options.output + ": cannot be written (" + reason + "); check the folder and the free space"};
    }
    if (!torv::RenameOver(mixed.Path().c_str(), options.output.c_str()))
        throw InputError{options.output + ": cannot be replaced; is it open in another program?"};
    WarnOfWrapping(mixer);
    if (options.quiet)
        return;
    const double seconds = rate ? static_cast<double>(frames) / rate : 0;
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::printf("%zu files, %s, %.0f x real time: %s\n", options.inputs.size(), ClockText(seconds).c_str(),
                elapsed > 0 ? seconds / elapsed : 0.0, options.output.c_str());
}
