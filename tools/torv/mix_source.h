#pragma once

#include "mix_input.h"
#include "output_file.h"
#include "wave_layout.h"

#include <torv/audio/wave_out.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

/// A PCM wave file as the mixer's tracks. The mixer reads plain mono files of 8 and 16 bits; any other one is first
/// copied, as floats, into a mono file for each of its channels.
class MixSource {
public:
    /// Throws InputError for what cannot be read or is no PCM wave, for more than two channels, and for what makes more
    /// than a wave file can hold.
    MixSource(const MixInput& input, const std::string& output);

    const std::string& Path() const { return m_input.path; }
    DWORD Rate() const { return m_format.rate; }
    DWORD Frames() const { return m_frames; }
    size_t Tracks() const { return m_format.channels; }
    /// Its header did not tell where it ends.
    bool IsStreamed() const { return m_isStreamed; }
    /// Opens the files, and makes them beside the output where they are needed. They stay open, and are there, as long
    /// as this object. Throws InputError, and CFileException when one cannot be written to its end.
    void AddTracks(std::vector<tagMixDownTrack>& tracks);

private:
    bool IsPlain() const;
    bool OpenPlain();
    void CopyChannels();

    MixInput m_input;
    std::string m_output;
    WaveFormat m_format{};
    uint64_t m_dataOffset = 0;
    bool m_isStreamed = false;
    bool m_isBare = false; ///< nothing but format and data, where the mixer expects them
    DWORD m_frames = 0;
    std::deque<OutputFile> m_copies; // never committed; they outlive the files
    std::vector<std::unique_ptr<CWaveFile>> m_files;
};
