#include "torv/songs/wave_layout.h"

#include "torv/songs/song_error.h"

#include <algorithm>
#include <array>
#include <istream>

namespace torv::songs {

namespace {

constexpr uint32_t kUnknownSize = 0xFFFFFFFF;
constexpr unsigned kExtensible = 0xFFFE; // the tag that counts stands behind the usual fields
constexpr uint64_t kHeaderBytes = 8;
constexpr uint64_t kFormBytes = 12; // "RIFF", size, "WAVE"
constexpr uint64_t kLeastFormatBytes = 16;
constexpr uint64_t kKindOffset = 24;

struct TagName {
    unsigned tag;
    const char* name;
};
constexpr TagName kTagNames[] = {
    {kPcmTag, "PCM"},    {2, "MS ADPCM"},    {3, "float"},   {6, "A-law"},  {7, "mu-law"},
    {0x11, "IMA ADPCM"}, {0x31, "GSM 6.10"}, {0x50, "MPEG"}, {0x55, "MP3"}, {0x161, "WMA"},
};

bool IsPrintable(int c) { return c >= ' ' && c <= '~'; }

template <size_t Size>
struct Header {
    std::array<unsigned char, Size> values{};
    uint64_t count = 0; ///< that are there

    uint32_t Number(size_t at, size_t size) const {
        uint32_t value = 0;
        for (size_t i = 0; i < size; ++i)
            value |= static_cast<uint32_t>(values[at + i]) << 8 * i;
        return value;
    }
    std::string Text(size_t at) const {
        std::string text(values.begin() + static_cast<std::ptrdiff_t>(at),
                         values.begin() + static_cast<std::ptrdiff_t>(at + 4));
        std::replace_if(
            text.begin(), text.end(), [](char c) { return !IsPrintable(c); }, '?');
        return text;
    }
};

template <size_t Size>
Header<Size> ReadAt(std::istream& file, uint64_t offset, uint64_t most = Size) {
    Header<Size> bytes;
    file.clear();
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(reinterpret_cast<char*>(bytes.values.data()),
              static_cast<std::streamsize>(std::min<uint64_t>(most, Size)));
    bytes.count = static_cast<uint64_t>(std::max<std::streamsize>(file.gcount(), 0));
    return bytes;
}

uint64_t LengthOf(std::istream& file) {
    file.clear();
    file.seekg(0, std::ios::end);
    return static_cast<uint64_t>(std::max<std::streamoff>(file.tellg(), 0));
}

std::optional<WaveFormat> ReadFormat(std::istream& file, const WaveChunk& chunk) {
    if (chunk.bytes < kLeastFormatBytes)
        return std::nullopt;
    const auto bytes = ReadAt<kKindOffset + 2>(file, chunk.offset, chunk.bytes);
    const unsigned tag = bytes.Number(0, 2);
    return WaveFormat{tag == kExtensible && bytes.count > kKindOffset + 1 ? bytes.Number(kKindOffset, 2) : tag,
                      bytes.Number(2, 2),
                      bytes.Number(4, 4),
                      bytes.Number(8, 4),
                      bytes.Number(12, 2),
                      bytes.Number(14, 2)};
}

/// Whether the data's size is one that a writer puts there who does not know it yet.
bool IsStreamed(const WaveChunk& data, uint64_t riffEnd, uint64_t length) {
    const uint64_t left = length - data.offset;
    if (data.stated > 0)
        return data.stated > left;
    return left > 0 && (riffEnd <= data.offset || riffEnd == kHeaderBytes + kUnknownSize);
}

} // namespace

WaveLayout ReadWaveLayout(const std::string& path, std::istream& file) {
    const uint64_t length = LengthOf(file);
    const auto form = ReadAt<kFormBytes>(file, 0);
    if (form.count < kFormBytes || form.Text(0) != "RIFF" || form.Text(8) != "WAVE")
        throw SongError(path + ": is no wave file");
    const uint64_t riffEnd = kHeaderBytes + form.Number(4, 4);
    WaveLayout layout;
    for (uint64_t at = kFormBytes; at + kHeaderBytes <= length;) {
        const auto header = ReadAt<kHeaderBytes>(file, at);
        if (!IsPrintable(header.values[0]))
            break; // padding or rubbish at the end
        WaveChunk chunk{header.Text(0), at + kHeaderBytes, header.Number(4, 4), 0};
        chunk.bytes = std::min<uint64_t>(chunk.stated, length - chunk.offset);
        if (chunk.id == "data" && !layout.data) {
            layout.isStreamed = IsStreamed(chunk, riffEnd, length);
            if (layout.isStreamed)
                chunk.bytes = length - chunk.offset;
            layout.data = chunk;
        } else if (chunk.id == "fmt " && !layout.format) {
            layout.format = ReadFormat(file, chunk);
        } else if (chunk.id == "fact" && !layout.statedFrames && chunk.bytes >= 4) {
            layout.statedFrames = ReadAt<4>(file, chunk.offset).Number(0, 4);
        }
        at = chunk.offset + chunk.bytes;
        // An odd chunk is padded by most programs, and by this library's format is not.
        if (chunk.bytes % 2 == 1 && at < length && !IsPrintable(ReadAt<1>(file, at).values[0]))
            ++at;
        layout.chunks.push_back(std::move(chunk));
    }
    return layout;
}

std::string NameOfWaveTag(unsigned tag) {
    const auto* const found =
        std::find_if(std::begin(kTagNames), std::end(kTagNames), [tag](const TagName& row) { return row.tag == tag; });
    return found != std::end(kTagNames) ? found->name : "format " + std::to_string(tag);
}

} // namespace torv::songs
