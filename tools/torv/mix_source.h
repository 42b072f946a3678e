#pragma once

#include "mix_input.h"
#include "scratch_file.h"

#include <torv/audio/quill_audio.h>
#include <torv/audio/wave_out.h>

#include <memory>
#include <string>
#include <vector>

/// A PCM wave file as the mixer's tracks. The mixer reads plain mono files of 8 and 16 bits; any other one is first
/// copied, as floats, into a mono file for each of its channels.
class MixSource {
public:
    /// Throws InputError for what cannot be read or is no PCM wave, for more than two channels, and for what makes more
    /// than a wave file can hold.
    explicit MixSource(const MixInput& input);

    const std::string& Path() const { return m_input.path; }
    DWORD Rate() const { return m_format.nSamplesPerSec; }
    DWORD Frames() const { return m_frames; }
    size_t Tracks() const { return m_format.nChannels; }
    /// Opens the files, and makes them beside `output` where they are needed. They stay open, and are there, as long as
    /// this object. Throws CFileException when one cannot be written.
    void AddTracks(std::vector<tagMixDownTrack>& tracks, const std::string& output);

private:
    bool IsPlain() const;
    bool OpenPlain();
    void CopyChannels(const std::string& output, size_t firstTrack);

    MixInput m_input;
    WAVEFORMATEX m_format{};
    CHUNK_INFO m_data{};
    bool m_isBare = false; ///< nothing but format and data, where the mixer expects them
    DWORD m_frames = 0;
    std::vector<ScratchFile> m_copies; // outlive the files
    std::vector<std::unique_ptr<CWaveFile>> m_files;
};
