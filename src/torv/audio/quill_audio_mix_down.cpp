#include "torv/audio/quill_audio.h"

#include "torv/audio/gain.h"
#include "torv/audio/sample.h"
#include "torv/audio/wave_out.h"
#include "torv/platform/or_zero.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr DWORD kBlockFrames = 16384;
constexpr DWORD kMixBlockBytes = 0x100000;
constexpr int kLeastBits = 16;
constexpr DWORD kMostWidth = 4;

/// A track while it is mixed. Leaves the buffer's cursor where it was.
struct Track {
    CWaveBuffer& buffer;
    CFile file;         ///< closed when the data are in memory
    DWORD fileOffset{}; ///< of the data
    DWORD position;     ///< the buffer's cursor
    DWORD unit;
    DWORD channels{};
    DWORD next{}; ///< frame
    DWORD end{};
    torv::StereoGain gain;
    bool isBroken = false;

    explicit Track(CWaveBuffer& source)
        : buffer(source), position(source.GetIndex()), unit(source.GetSampleUnitSize()) {}
    Track(const Track&) = delete;
    Track& operator=(const Track&) = delete;
    ~Track() { buffer.SeekTo(position); }

    void SetRegion(const __tagMixDownTrack& track, DWORD bytes) {
        const DWORD frames = bytes / unit;
        end = track.end ? std::min(track.end, frames) : frames;
        next = std::min(track.start, end);
    }

    void SetGain(const __tagMixDownTrack& track) {
        const double volume = torv::ValidVolume(CWaveOut::Db2Amplitude(track.volume));
        gain = torv::GainsAt(volume, volume, torv::ValidPan(track.pan));
    }

    bool Read(char* bytes, DWORD frames) {
        const DWORD from = next * unit; // inside what 32 bits can tell, for its end is
        if (file.m_hFile == CFile::hFileNull)
            return buffer.SeekTo(from) == from && buffer.Read(bytes, frames * unit) == frames * unit;
        try {
            file.Seek(static_cast<LONGLONG>(fileOffset) + from, CFile::begin);
            return file.Read(bytes, frames * unit) == frames * unit;
        } catch (const CFileException&) {
            return false;
        }
    }

    /// Adds its next frames, at most those of the sums.
    void AddTo(std::vector<torv::StereoGain>& sums, std::vector<char>& area) {
        const DWORD frames = std::min(end - next, static_cast<DWORD>(sums.size()));
        area.resize(static_cast<size_t>(frames) * unit);
        isBroken = !Read(area.data(), frames);
        if (isBroken)
            return;
        const DWORD width = unit / channels;
        const auto* at = reinterpret_cast<const BYTE*>(area.data());
        for (DWORD i = 0; i < frames; ++i, at += unit) {
            sums[i].left += torv::SampleAt(at, width) * gain.left;
            sums[i].right += torv::SampleAt(at + (channels - 1) * width, width) * gain.right;
        }
        next += frames;
    }
};

} // namespace

int CxQuillAudio::AudioMixDown(const char* path, __tagMixDownTrack* tracks, int count) {
    return path && tracks && count > 0 ? torv::OrZero([&] { return MixInto(path, tracks, count); }) : 0;
}

int CxQuillAudio::MixInto(const char* path, const __tagMixDownTrack* tracks, int count) {
    std::vector<std::unique_ptr<Track>> mixed;
    DWORD frames = 0;
    int bits = kLeastBits;
    for (const __tagMixDownTrack* track = tracks; track != tracks + count; ++track) {
        if (!track->buffer || track->buffer->GetSampleRate() != tracks[0].buffer->GetSampleRate())
            return 0;
        auto& one = *mixed.emplace_back(std::make_unique<Track>(*track->buffer));
        WAVEFORMATEX format;
        track->buffer->MakeWaveFormat(format);
        one.channels = format.nChannels;
        if (one.channels > 2 || one.unit / one.channels > kMostWidth)
            return 0;
        CHUNK_INFO place;
        if (!FindData(*track->buffer, one.file, place))
            return 0;
        one.fileOffset = place.offset;
        one.SetRegion(*track, place.size);
        one.SetGain(*track);
        frames = std::max(frames, one.end - one.next);
        bits = std::max(bits, static_cast<int>(one.unit / one.channels * 8));
    }

    CWaveBuffer mix;
    if (!mix.Create(kMixBlockBytes))
        return 0;
    mix.SetWaveInfo(2, bits, tracks[0].buffer->GetSampleRate());
    const DWORD unit = mix.GetSampleUnitSize();
    std::vector<torv::StereoGain> sums;
    std::vector<char> area;
    std::vector<BYTE> block;
    for (DWORD left = frames; left > 0; left -= static_cast<DWORD>(sums.size())) {
        sums.assign(std::min(left, kBlockFrames), {0.0, 0.0});
        for (const auto& track : mixed)
            track->AddTo(sums, area);
        if (std::any_of(mixed.begin(), mixed.end(), [](const auto& track) { return track->isBroken; }))
            return 0;
        block.resize(sums.size() * unit);
        for (size_t i = 0; i < sums.size(); ++i)
            torv::StoreFrame(&block[i * unit], 2, unit,
                             {torv::SampleOf(sums[i].left, bits), torv::SampleOf(sums[i].right, bits)});
        if (mix.AddSample(block.data(), static_cast<DWORD>(sums.size())) != sums.size())
            return 0;
    }
    mixed.clear(); // their files may be the one that is written
    return SaveNew(path, &mix);
}
