#include "torv/songs/wave_reader.h"

#include "torv/songs/song_error.h"
#include "torv/songs/wave_layout.h"

#include <torv/audio/sample.h>

#include <algorithm>
#include <istream>
#include <vector>

namespace torv::songs {

namespace {

constexpr unsigned kFloatTag = 3;
constexpr unsigned kMostWidth = 4; // bytes

unsigned WidthOf(const WaveFormat& format) { return (format.bits + 7) / 8; }

class WaveReader : public SoundReader {
public:
    WaveReader(const std::string& path, std::istream& file, const WaveLayout& layout)
        : m_path(path), m_file(file), m_format(*layout.format), m_dataOffset(layout.data->offset) {
        m_rate = m_format.rate;
        m_channels = m_format.channels;
        m_frames = layout.data->bytes / m_format.blockBytes;
        m_kind = "wave file";
        m_isStreamed = layout.isStreamed;
        WaveReader::Rewind();
    }

    void Rewind() override {
        m_file.clear();
        m_file.seekg(static_cast<std::streamoff>(m_dataOffset));
        m_left = m_frames;
    }

    size_t Read(double* frames, size_t count) override {
        const auto now = static_cast<size_t>(std::min<uint64_t>(count, m_left));
        m_bytes.resize(now * m_format.blockBytes);
        if (!m_file.read(reinterpret_cast<char*>(m_bytes.data()), static_cast<std::streamsize>(m_bytes.size())))
            throw SongError(m_path + ": cannot be read to its end");
        const unsigned width = WidthOf(m_format);
        const BYTE* at = m_bytes.data();
        for (size_t i = 0; i < now * m_format.channels; ++i, at += width)
            frames[i] = m_format.tag == kFloatTag ? torv::ScaleValue(torv::LoadValue(at, width), 32, 1.0)
                                                  : torv::SampleAt(at, width);
        m_left -= now;
        return now;
    }

private:
    const std::string m_path;
    std::istream& m_file;
    const WaveFormat m_format;
    const uint64_t m_dataOffset;
    uint64_t m_left = 0; ///< frames
    std::vector<BYTE> m_bytes;
};

} // namespace

std::unique_ptr<SoundReader> OpenWave(const std::string& path, std::istream& file, std::string& reason) {
    const WaveLayout layout = ReadWaveLayout(path, file);
    if (!layout.format || !layout.data)
        throw SongError(path + ": has no whole " + (layout.format ? "data" : "format") +
                        " chunk: it is damaged or cut short; export it again");
    const WaveFormat& format = *layout.format;
    if (format.tag != kPcmTag && !(format.tag == kFloatTag && format.bits == 32)) {
        reason = "is " + NameOfWaveTag(format.tag) + ", which cannot be read here; convert it with: sox " + path +
                 " -b 16 -e signed-integer converted.wav";
        return nullptr;
    }
    if (format.channels == 0 || format.bits == 0 || format.rate == 0 || WidthOf(format) > kMostWidth ||
        format.blockBytes != format.channels * WidthOf(format))
        throw SongError(path + ": its format makes no sense (" + std::to_string(format.channels) +
                        (format.channels == 1 ? " channel" : " channels") + " of " + std::to_string(format.bits) +
                        " bits, " + std::to_string(format.rate) + " samples a second): export it again");
    return std::make_unique<WaveReader>(path, file, layout);
}

} // namespace torv::songs
