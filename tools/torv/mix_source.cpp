#include "mix_source.h"

#include "midi_song.h"

#include <torv/audio/sample.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

constexpr DWORD kBufferFrames = 16384;
constexpr DWORD kFormatOffset = 20;
constexpr DWORD kFormatBytes = 16;
constexpr DWORD kDataOffset = 44;
constexpr DWORD kMostWidth = 4;
constexpr DWORD kMostFrames = 0x3FFFF000; ///< of four bytes each

void Load(CxQuillAudio& audio, const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw InputError{path + ": is a folder; name a wave file"};
    if (!std::ifstream(path, std::ios::binary))
        throw InputError{path + ": cannot be opened; check the name and whether you may read it"};
    if (!audio.Load(path.c_str()) || !CxQuillAudio::GetChunkInfo(audio.GetChunkList(), torv::ChunkId("data"), 0))
        throw InputError{path + ": is no PCM wave file; convert it with: sox " + path +
                         " -b 16 -e signed-integer converted.wav"};
}

tagMixDownTrack Track(CWaveFile& file, double gain, double level, double pan) {
    return {0, torv::kWholeFile, static_cast<float>(level + CWaveOut::Amplitude2Db(gain)), static_cast<float>(pan),
            &file};
}

} // namespace

MixSource::MixSource(const MixInput& input) : m_input(input) {
    CxQuillAudio audio;
    Load(audio, input.path);
    audio.GetWaveFormat(m_format);
    const auto& chunks = audio.GetChunkList();
    m_data = *CxQuillAudio::GetChunkInfo(chunks, torv::ChunkId("data"), 0);
    m_frames = audio.GetNumSamples();
    m_isBare = chunks.size() == 2 && chunks[0].id == torv::ChunkId("fmt ") && chunks[0].offset == kFormatOffset &&
               chunks[0].size == kFormatBytes && m_data.offset == kDataOffset;
    if (m_format.nChannels > 2 || (m_format.wBitsPerSample + 7) / 8 > static_cast<int>(kMostWidth))
        throw InputError{input.path + ": has " + std::to_string(m_format.nChannels) + " channels of " +
                         std::to_string(m_format.wBitsPerSample) +
                         " bits, and two of 32 are the most; convert it with: sox " + input.path +
                         " -b 16 -c 2 converted.wav"};
    if (m_frames > kMostFrames)
        throw InputError{input.path + ": is so long that its mix would not fit into a wave file; cut it into pieces"};
}

bool MixSource::IsPlain() const {
    return m_isBare && m_format.nChannels == 1 && (m_format.wBitsPerSample == 8 || m_format.wBitsPerSample == 16);
}

/// False when the mixer will not have the file; it is opened for writing, though nothing is written.
bool MixSource::OpenPlain() {
    try {
        m_files.push_back(std::make_unique<CWaveFile>(CString(m_input.path.c_str()), kBufferFrames));
        return true;
    } catch (const CFileException&) {
        return false;
    }
}

void MixSource::CopyChannels(const std::string& output, size_t firstTrack) {
    const DWORD channels = m_format.nChannels;
    for (DWORD channel = 0; channel < channels; ++channel) {
        m_copies.emplace_back(output + ".track" + std::to_string(firstTrack + channel + 1) + ".part");
        m_files.push_back(std::make_unique<CWaveFile>(CString(m_copies.back().Path().c_str()), kBufferFrames));
        m_files.back()->SetWaveFormat(torv::PcmFormat(1, 32, Rate()));
    }
    CFile file(m_input.path.c_str(), CFile::modeRead | CFile::shareDenyWrite);
    file.Seek(m_data.offset, CFile::begin);
    const DWORD width = (m_format.wBitsPerSample + 7U) / 8;
    const DWORD unit = width * channels;
    std::vector<BYTE> block(static_cast<size_t>(kBufferFrames) * unit);
    std::vector<float> values(kBufferFrames);
    for (DWORD done = 0; done < m_frames;) {
        const DWORD frames = std::min(m_frames - done, kBufferFrames);
        if (file.Read(block.data(), frames * unit) < frames * unit)
            throw InputError{m_input.path + ": cannot be read to its end"};
        for (DWORD channel = 0; channel < channels; ++channel) {
            for (DWORD i = 0; i < frames; ++i)
                values[i] =
                    static_cast<float>(torv::SampleAt(&block[static_cast<size_t>(i) * unit + channel * width], width));
            m_files[channel]->AppendFrames(reinterpret_cast<const BYTE*>(values.data()), frames);
        }
        done += frames;
    }
}

void MixSource::AddTracks(std::vector<tagMixDownTrack>& tracks, const std::string& output) {
    if (!IsPlain() || !OpenPlain())
        CopyChannels(output, tracks.size());
    if (m_format.nChannels == 1) {
        tracks.push_back(Track(*m_files[0], 1.0, m_input.level, m_input.pan));
        return;
    }
    // A hard pan doubles its side, so that each half is heard at its own level in the middle; towards one side the law
    // raises that one and lowers the other.
    const double q = (m_input.pan + 1) * 0.5;
    tracks.push_back(Track(*m_files[0], 1 - q, m_input.level, -1));
    tracks.push_back(Track(*m_files[1], q, m_input.level, 1));
}
