#pragma once

#include "platform/temp_folder.h"
#include "torv/audio/wave_buffer.h"
#include "torv/audio/wave_file.h"

#include <doctest/doctest.h>

#include <initializer_list>
#include <string>
#include <vector>

using Bytes = std::vector<BYTE>;
using Shorts = std::vector<short>;
using namespace std::string_literals;

/// A file in a folder of its own, gone with its holder.
class Scratch {
public:
    explicit Scratch(const std::string& content = "") {
        if (!content.empty())
            Put(content);
    }

    CString Text() const { return CString(m_folder.Path(kName)); }
    bool Exists() const { return m_folder.Has(kName); }
    CString Folder() const { return CString(std::filesystem::path(m_folder.Path(kName)).parent_path().string()); }
    /// Whether nothing else was left in the folder.
    bool IsAlone() const {
        using Iterator = std::filesystem::directory_iterator;
        return std::distance(Iterator(m_folder.Path("")), Iterator()) == (Exists() ? 1 : 0);
    }
    std::string Get() const { return m_folder.Content(kName); }
    void Put(const std::string& content) const { m_folder.File(kName, content); }

private:
    static constexpr const char* kName = "wave.wav";
    TempFolder m_folder;
};

inline std::string Le(ULONGLONG value, int bytes = 4) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * i & 0xFF);
    return text;
}

inline std::string Words(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values)
        text += Le(static_cast<ULONGLONG>(value), 2);
    return text;
}

inline std::string Chunk(const char* id, const std::string& content, bool pad = false) {
    return id + Le(content.size()) + content + (pad && content.size() % 2 ? "\0"s : "");
}

inline std::string Wave(const std::string& chunks) { return Chunk("RIFF", "WAVE" + chunks); }

inline std::string Fmt(DWORD channels, DWORD bits, DWORD rate = 44100) {
    const DWORD unit = channels * ((bits + 7) / 8);
    return Chunk("fmt ", Le(1, 2) + Le(channels, 2) + Le(rate) + Le(rate * unit) + Le(unit, 2) + Le(bits, 2));
}

inline std::string MonoFile(const std::string& data) { return Wave(Fmt(1, 16) + Chunk("data", data)); }

inline WAVEFORMATEX Format(WORD channels, WORD bits) {
    const auto align = static_cast<WORD>(channels * bits / 8);
    return {WAVE_FORMAT_PCM, channels, 44100, 44100u * align, align, bits, 0};
}

/// 16-bit samples from byte `at` on.
template <class Content>
Shorts ShortsIn(const Content& bytes, size_t at = 0) {
    Shorts samples;
    for (size_t i = at; i + 1 < bytes.size(); i += 2)
        samples.push_back(static_cast<short>((bytes[i] & 0xFF) | bytes[i + 1] << 8));
    return samples;
}

/// A buffer in memory.
struct Held : CWaveBuffer {
    Held(int channels, int bits, const std::string& bytes, DWORD rate = 44100, DWORD blockSize = 1000) {
        Create(blockSize);
        SetWaveInfo(channels, bits, rate);
        AddSample(bytes.data(), static_cast<DWORD>(bytes.size()) / GetSampleUnitSize());
    }
    std::string Content() {
        std::string bytes(GetSize(), '\0');
        SeekTo(0);
        CHECK(Read(bytes.data(), GetSize()) == bytes.size());
        return bytes;
    }
};
