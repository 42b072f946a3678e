#pragma once

#include "midi_bytes.h"

#include <optional>

/// Wave files, chunk by chunk.
inline FileBytes Little(uint32_t value, int bytes) {
    FileBytes out;
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<unsigned char>(value >> (8 * i)));
    return out;
}

inline FileBytes operator+(FileBytes first, const FileBytes& second) {
    Append(first, second);
    return first;
}

/// Its header may lie about its size. No pad byte follows.
inline FileBytes WaveChunkOf(const std::string& id, const FileBytes& data, std::optional<uint32_t> stated = {}) {
    return FileBytes(id.begin(), id.end()) + Little(stated.value_or(static_cast<uint32_t>(data.size())), 4) + data;
}

inline FileBytes FormatChunk(uint32_t tag, uint32_t channels, uint32_t bits, uint32_t rate) {
    const uint32_t block = channels * bits / 8;
    return WaveChunkOf("fmt ", Little(tag | channels << 16, 4) + Little(rate, 4) + Little(rate * block, 4) +
                                   Little(block | bits << 16, 4));
}

inline FileBytes RiffOf(const FileBytes& chunks, std::optional<uint32_t> stated = {}) {
    return WaveChunkOf("RIFF", FileBytes{'W', 'A', 'V', 'E'} + chunks,
                       stated.value_or(static_cast<uint32_t>(chunks.size() + 4)));
}

inline FileBytes Samples(uint32_t bits, const std::vector<int>& values) {
    FileBytes data;
    for (const int value : values)
        Append(data, Little(static_cast<uint32_t>(value), static_cast<int>(bits / 8)));
    return data;
}

inline FileBytes PcmWave(uint32_t channels, uint32_t bits, uint32_t rate, const std::vector<int>& values) {
    return RiffOf(FormatChunk(1, channels, bits, rate) + WaveChunkOf("data", Samples(bits, values)));
}
