#include "mix_source.h"

#include "errors.h"
#include <torv/songs/input_file.h>

#include <torv/audio/sample.h>

#include <algorithm>
#include <cmath>
#include <istream>

using namespace torv::songs;

namespace {

constexpr DWORD kBufferFrames = 16384;
constexpr uint64_t kPlainDataOffset = 44; ///< nothing but format and data before it
constexpr unsigned kMostChannels = 2;
constexpr unsigned kMostWidth = 4;
constexpr uint64_t kMostFrames = 0x3FFFF000; ///< of four bytes each

unsigned WidthOf(const WaveFormat& format) { return (format.bits + 7) / 8; }

[[noreturn]] void Refuse(const std::string& path, const std::string& what, const char* soxOptions) {
    throw InputError{path + ": " + what + "; convert it with: sox " + path + soxOptions + " converted.wav"};
}

void CheckFormat(const std::string& path, const WaveFormat& format) {
    if (format.tag != kPcmTag)
        Refuse(path, "is " + NameOfWaveTag(format.tag) + ", and PCM can be mixed", " -b 16 -e signed-integer");
    if (format.channels == 0 || format.bits == 0 || format.rate == 0 ||
        format.blockBytes != format.channels * WidthOf(format))
        throw InputError{path + ": its format makes no sense (" + std::to_string(format.channels) + " channels of " +
                         std::to_string(format.bits) + " bits, " + std::to_string(format.rate) +
                         " samples a second): export it again"};
    if (format.channels > kMostChannels || WidthOf(format) > kMostWidth)
        Refuse(path,
               "has " + std::to_string(format.channels) + " channels of " + std::to_string(format.bits) +
                   " bits, and two of 32 are the most",
               " -b 16 -c 2");
}

tagMixDownTrack Track(CWaveFile& file, double gain, double level, double pan) {
    return {0, torv::kWholeFile, static_cast<float>(level + CWaveOut::Amplitude2Db(gain)), static_cast<float>(pan),
            &file};
}

} // namespace

MixSource::MixSource(const MixInput& input, const std::string& output) : m_input(input), m_output(output) {
    const std::unique_ptr<std::istream> file = OpenInputFile(input.path);
    const WaveLayout layout = ReadWaveLayout(input.path, *file);
    if (!layout.format || !layout.data)
        throw InputError{input.path + ": has no whole " + (layout.format ? "data" : "format") +
                         " chunk: it is damaged or cut short; export it again"};
    m_format = *layout.format;
    CheckFormat(input.path, m_format);
    m_dataOffset = layout.data->offset;
    const uint64_t frames = layout.data->bytes / m_format.blockBytes;
    if (frames > kMostFrames)
        throw InputError{input.path + ": is so long that its mix would not fit into a wave file; cut it into pieces"};
    m_frames = static_cast<DWORD>(frames);
    m_isStreamed = layout.isStreamed;
    m_isBare = layout.chunks.size() == 2 && m_dataOffset == kPlainDataOffset && !m_isStreamed;
}

bool MixSource::IsPlain() const {
    return m_isBare && m_format.channels == 1 && (m_format.bits == 8 || m_format.bits == 16);
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

void MixSource::CopyChannels() {
    const unsigned channels = m_format.channels;
    for (unsigned channel = 0; channel < channels; ++channel) {
        m_files.push_back(
            std::make_unique<CWaveFile>(CString(m_copies.emplace_back(m_output).GrowingPath()), kBufferFrames));
        m_files.back()->SetWaveFormat(torv::PcmFormat(1, 32, Rate()));
    }
    const std::unique_ptr<std::istream> file = OpenInputFile(m_input.path);
    file->seekg(static_cast<std::streamoff>(m_dataOffset));
    const unsigned width = WidthOf(m_format);
    const size_t unit = m_format.blockBytes;
    std::vector<BYTE> block(kBufferFrames * unit);
    std::vector<float> values(kBufferFrames);
    for (DWORD done = 0; done < m_frames;) {
        const DWORD frames = std::min(m_frames - done, kBufferFrames);
        if (!file->read(reinterpret_cast<char*>(block.data()), static_cast<std::streamsize>(frames * unit)))
            throw InputError{m_input.path + ": cannot be read to its end"};
        for (unsigned channel = 0; channel < channels; ++channel) {
            for (DWORD i = 0; i < frames; ++i)
                values[i] = static_cast<float>(torv::SampleAt(&block[i * unit + channel * width], width));
            m_files[channel]->AppendFrames(reinterpret_cast<const BYTE*>(values.data()), frames);
        }
        done += frames;
    }
}

void MixSource::AddTracks(std::vector<tagMixDownTrack>& tracks) {
    if (!IsPlain() || !OpenPlain())
        CopyChannels();
    if (m_format.channels == 1) {
        tracks.push_back(Track(*m_files[0], 1.0, m_input.level, m_input.pan));
        return;
    }
    // A hard pan doubles its side, so that each half is heard at its own level in the middle; towards one side the law
    // raises that one and lowers the other.
    const double q = (m_input.pan + 1) * 0.5;
    tracks.push_back(Track(*m_files[0], 1 - q, m_input.level, -1));
    tracks.push_back(Track(*m_files[1], q, m_input.level, 1));
}
