#pragma once

#include "platform/temp_folder.h"
#include "torv/audio/wave_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using Bytes = std::vector<BYTE>;

/// A path in a folder of its own, gone with its holder.
class ScratchPath {
public:
    explicit ScratchPath(const char* name = "wave.wav") : m_path(m_folder.Path(name)) {}

    CString Text() const { return CString(m_path); }
    bool Exists() const { return std::filesystem::exists(m_path); }
    /// Whether nothing else was left in the folder.
    bool IsAlone() const {
        using Iterator = std::filesystem::directory_iterator;
        return std::distance(Iterator(Parent()), Iterator()) == (Exists() ? 1 : 0);
    }
    std::filesystem::path Parent() const { return std::filesystem::path(m_path).parent_path(); }
    Bytes Content() const {
        std::ifstream file(m_path, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    void Write(const Bytes& bytes) const {
        std::ofstream file(m_path, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

private:
    TempFolder m_folder;
    std::string m_path;
};

/// The file's header for `dataBytes` of 16-bit mono at 44100 Hz, followed by the data.
inline Bytes MonoFile(const Bytes& data) {
    const auto low = static_cast<BYTE>(data.size());
    Bytes file{'R', 'I',  'F',  'F',  static_cast<BYTE>(low + 36),
               0,   0,    0,    'W',  'A',
               'V', 'E', // lengths below 220
               'f', 'm',  't',  ' ',  16,
               0,   0,    0,    1,    0,
               1,   0,    0x44, 0xAC, 0,
               0,   0x88, 0x58, 1,    0, // 44100 frames, 88200 bytes a second
               2,   0,    16,   0,    'd',
               'a', 't',  'a',  low,  0,
               0,   0};
    for (const BYTE byte : data)
        file.push_back(byte);
    return file;
}

inline WAVEFORMATEX Format(WORD channels, WORD bits) {
    const auto align = static_cast<WORD>(channels * bits / 8);
    return {WAVE_FORMAT_PCM, channels, 44100, 44100u * align, align, bits, 0};
}
