#include "torv/songs/wave_reader.h"

#include "torv/songs/song_error.h"
#include "torv/songs/wave_layout.h"

#include <torv/audio/sample.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <istream>
#include <vector>

namespace torv::songs {

namespace {

constexpr unsigned kFloatTag = 3;
constexpr unsigned kMostWidth = 4; // bytes

constexpr size_t kBufferBytes = 32768; // or one frame

unsigned WidthOf(const WaveFormat& format) { return (format.bits + 7) / 8; }

double FloatAt(const BYTE* bytes) { return torv::ScaleValue(torv::LoadValue(bytes, kMostWidth), 32, 1.0); }

/// What SampleAt(at, 2) is, in a form that the compiler takes several of at once: most files have such values.
double ShortAt(const BYTE* at) {
    static_assert(std::endian::native == std::endian::little, "samples are read as they lie in memory");
    SHORT value;
    std::memcpy(&value, at, sizeof value);
    return value / 32768.0;
}

template <unsigned width, class Value>
void Widen(const BYTE* bytes, size_t count, double* samples, Value valueAt) {
    for (size_t i = 0; i < count; ++i)
        samples[i] = valueAt(bytes + i * width);
}

/// Values as they lie in a file. The width is known to each loop, as it runs over every sample there is.
void Widen(const WaveFormat& format, const BYTE* bytes, size_t count, double* samples) {
    if (format.tag == kFloatTag)
        return Widen<4>(bytes, count, samples, FloatAt);
    switch (WidthOf(format)) {
    case 1:
        return Widen<1>(bytes, count, samples, [](const BYTE* at) { return torv::SampleAt(at, 1); });
    case 2:
        return Widen<2>(bytes, count, samples, ShortAt);
    case 3:
        return Widen<3>(bytes, count, samples, [](const BYTE* at) { return torv::SampleAt(at, 3); });
    default:
        return Widen<4>(bytes, count, samples, [](const BYTE* at) { return torv::SampleAt(at, 4); });
    }
}

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
        m_unread = m_frames;
        m_begin = m_end = 0;
    }

    size_t Read(double* frames, size_t count) override {
        size_t done = 0;
        for (size_t piece; done < count && (piece = std::min(count - done, FramesAtHand())) > 0; done += piece) {
            Widen(m_format, m_bytes.data() + m_begin, piece * m_format.channels, frames + done * m_format.channels);
            m_begin += piece * m_format.blockBytes;
        }
        return done;
    }

private:
    /// Reads on when there are none.
    size_t FramesAtHand() {
        if (m_begin == m_end) {
            const size_t most = std::max<size_t>(kBufferBytes / m_format.blockBytes, 1);
            const auto frames = static_cast<size_t>(std::min<uint64_t>(most, m_unread));
            m_bytes.resize(most * m_format.blockBytes);
            m_begin = 0;
            m_end = frames * m_format.blockBytes;
            if (!m_file.read(reinterpret_cast<char*>(m_bytes.data()), static_cast<std::streamsize>(m_end)))
                throw SongError(m_path + ": cannot be read to its end");
            m_unread -= frames;
        }
        return (m_end - m_begin) / m_format.blockBytes;
    }

    const std::string m_path;
    std::istream& m_file;
    const WaveFormat m_format;
    const uint64_t m_dataOffset;
    uint64_t m_unread = 0; ///< frames
    std::vector<BYTE> m_bytes;
    size_t m_begin = 0; ///< of the bytes that are still to come
    size_t m_end = 0;
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
