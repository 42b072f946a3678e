#pragma once

#include "torv/songs/export.h"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace torv::songs {

/// A chunk of a wave file.
struct WaveChunk {
    std::string id;      ///< four printable characters
    uint64_t offset = 0; ///< of its data in the file
    uint32_t stated = 0; ///< bytes, as its header says
    uint64_t bytes = 0;  ///< that are there
};

/// What its format chunk says.
struct WaveFormat {
    unsigned tag;            ///< of an extensible format the one that it stands for
    unsigned channels;       ///< samples a frame
    uint32_t rate;           ///< Hz
    uint32_t bytesPerSecond; ///< as stated, for compressed waves the mean
    unsigned blockBytes;     ///< of uncompressed samples a frame
    unsigned bits;           ///< of a sample, 0 where the format has none
};
constexpr unsigned kPcmTag = 1; ///< whole numbers

/// What a wave file is made of, as its headers tell it. Of several chunks of a kind the first one counts.
struct WaveLayout {
    std::vector<WaveChunk> chunks;        ///< all of them, in the file's order
    std::optional<WaveFormat> format;     ///< none: there is no whole format chunk
    std::optional<WaveChunk> data;        ///< none: there is no data chunk
    std::optional<uint32_t> statedFrames; ///< a compressed wave's "fact"
    bool isStreamed = false; ///< its writer could not tell the data's size: they are taken to reach to the file's end
};

/// Reads the headers of a wave file and passes over what they head, from the stream's beginning on. Chunks that lie
/// about their size end at the file's end. Throws SongError, which names `path`, for what is no wave file.
TORV_SONGS_API WaveLayout ReadWaveLayout(const std::string& path, std::istream& file);

/// The usual name of a format's tag, or its number.
TORV_SONGS_API std::string NameOfWaveTag(unsigned tag);

} // namespace torv::songs
