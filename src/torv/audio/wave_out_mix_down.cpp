// Rendering the mix into a wave file.
#include "torv/audio/mix_pass.h"
#include "torv/audio/sample.h"
#include "torv/audio/wave_out.h"
#include "torv/platform/new_file.h"
#include "torv/platform/or_zero.h"
#include "torv/platform/replaced_file.h"

#include <algorithm>
#include <vector>

namespace {

constexpr DWORD kBlockFrames = 1024;
constexpr DWORD kFileBufferFrames = 16384;

} // namespace

int CWaveOut::AudioMixDown(const char* path, tagMixDownTrack* tracks, int count) {
    return MixIntoFile(path, nullptr, tracks, count);
}

int CWaveOut::AudioMixDown(const char* path, tagMixDownTrack* tracks, int count, int rate) {
    WAVEFORMATEX format = m_WaveFormat;
    if (rate <= 0 && tracks && count > 0 && tracks->file)
        tracks->file->GetWaveFormat(format);
    const DWORD hertz = rate > 0 ? static_cast<DWORD>(rate) : format.nSamplesPerSec;
    format = torv::PcmFormat(m_wOutputChannels, m_WaveFormat.wBitsPerSample, hertz);
    return MixIntoFile(path, &format, tracks, count);
}

/// A null format is the one that a new file has.
int CWaveOut::MixIntoFile(const char* path, const WAVEFORMATEX* format, const tagMixDownTrack* tracks, int count) {
    if (!path || count < 0 || count > torv::kMixerTracks || (count > 0 && !tracks) || !IsWaveOutStopped() ||
        FirstTrack() >= 0)
        return 0;
    const tagMixDownTrack* const end = tracks + count;
    if (std::any_of(tracks, end, [](const tagMixDownTrack& track) { return !track.file; }))
        return 0;
    for (const tagMixDownTrack* track = tracks; track != end; ++track) {
        CWaveFile& file = *track->file;
        file.SetPlayDuration(track->start, track->end == torv::kWholeFile ? file.GetTotalSamples() : track->end);
        const double gain = Db2Amplitude(track->volume);
        file.SetAmplitudes(gain, gain, track->pan);
        RegisterTrack(&file, -1);
    }
    SeekTracks(0, 0);
    const int isDone = torv::OrZero([&] { return RenderMix(path, format); });
    for (int slot = 0; slot < torv::kMixerTracks; ++slot)
        UnregisterTrack(slot);
    return isDone;
}

int CWaveOut::RenderMix(const char* path, const WAVEFORMATEX* format) {
    try {
        torv::ReplacedFile file(torv::NewFilePath(path));
        if (!file.IsOpen())
            return 0;
        CWaveFile mix(kFileBufferFrames);
        mix.OpenExisting(file.Path());
        if (format)
            mix.SetWaveFormat(*format);
        torv::MixPass pass;
        mix.GetWaveFormat(pass.format);
        pass.frames = kBlockFrames;
        pass.isMono = m_wOutputChannels == 1;
        if (const CWaveFile* const master = GetTrack(pass.masterTrack))
            pass.starts[0] = pass.starts[1] = master->GetCurrentPlayPointer();
        std::vector<BYTE> block(static_cast<size_t>(kBlockFrames) * pass.format.nBlockAlign);
        bool isGood = true;
        while (isGood && MixOut(block.data(), pass))
            isGood = !pass.hasFailed && mix.AppendFrames(block.data(), kBlockFrames);
        PublishPeak(pass);
        if (!isGood || pass.hasFailed)
            return 0;
        mix.Close();
        return file.Commit();
    } catch (const CException&) {
        return 0; // the disk is full, or there is no such folder
    }
}
