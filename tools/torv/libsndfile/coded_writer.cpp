#include "coded_sound.h"

#include "errors.h"
#include "sound_file.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr unsigned kFloatBits = 32;

/// Kinds that are compressed with loss: how many bits a sample has is no question there.
constexpr struct {
    const char* ending;
    int format;
} kLossy[] = {
    {"ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
    {"oga", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
    {"opus", SF_FORMAT_OGG | SF_FORMAT_OPUS},
    {"mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III},
};
/// Other endings that people use.
constexpr struct {
    const char* ending;
    int format;
} kAliases[] = {{"aif", SF_FORMAT_AIFF}, {"snd", SF_FORMAT_AU}};

/// Kinds that need more than one file, or whose bytes tell nothing of themselves.
bool IsUnfit(int major) { return major == SF_FORMAT_SD2 || major == SF_FORMAT_RAW || major == SF_FORMAT_WAVEX; }

struct Kind {
    std::string ending;
    int format;
    bool isLossy;
};

bool CanBeWritten(int format, const SoundFormat& wanted) {
    SF_INFO info{};
    info.channels = static_cast<int>(wanted.channels);
    info.samplerate = static_cast<int>(wanted.rate);
    info.format = format;
    return sf_format_check(&info) != 0;
}

std::vector<Kind> Kinds() {
    std::vector<Kind> kinds;
    for (const auto& row : kLossy)
        if (CanBeWritten(row.format, {{}, 16, 1, 48000}))
            kinds.push_back({row.ending, row.format, true});
    int count = 0;
    sf_command(nullptr, SFC_GET_FORMAT_MAJOR_COUNT, &count, sizeof count);
    for (int i = 0; i < count; ++i) {
        SF_FORMAT_INFO info{};
        info.format = i;
        sf_command(nullptr, SFC_GET_FORMAT_MAJOR, &info, sizeof info);
        const std::string ending = info.extension ? info.extension : "";
        const auto isTaken = [&](const Kind& kind) { return kind.ending == ending; };
        if (ending.empty() || ending == "wav" || IsUnfit(info.format) ||
            std::any_of(kinds.begin(), kinds.end(), isTaken) || !CanBeWritten(info.format | SF_FORMAT_PCM_16, {}))
            continue;
        kinds.push_back({ending, info.format, false});
        for (const auto& alias : kAliases)
            if (alias.format == info.format)
                kinds.push_back({alias.ending, info.format, false});
    }
    return kinds;
}

int SubtypeFor(unsigned bits) {
    return bits == 16 ? SF_FORMAT_PCM_16 : bits == 24 ? SF_FORMAT_PCM_24 : SF_FORMAT_FLOAT;
}

/// The library writes into an output file as if that were a file of its own.
class CodedWriter : public SoundWriter {
public:
    CodedWriter(OutputFile& file, std::string path, const SoundFormat& format, int libraryFormat, bool isLossy)
        : m_file(file), m_path(std::move(path)), m_format(format), m_isWhole(!isLossy && format.bits != kFloatBits) {
        SF_INFO info{};
        info.channels = static_cast<int>(format.channels);
        info.samplerate = static_cast<int>(format.rate);
        info.format = libraryFormat;
        SF_VIRTUAL_IO calls{};
        calls.get_filelen = [](void* self) { return Of(self).m_length; };
        calls.seek = [](sf_count_t offset, int whence, void* self) { return Of(self).Seek(offset, whence); };
        calls.read = [](void*, sf_count_t, void*) { return sf_count_t{0}; };
        calls.write = [](const void* bytes, sf_count_t count, void* self) { return Of(self).Put(bytes, count); };
        calls.tell = [](void* self) { return Of(self).m_place; };
        m_sound.reset(sf_open_virtual(&calls, SFM_WRITE, &info, this));
        if (!m_sound)
            throw WrongUse{m_path + ": ." + format.ending + " cannot be written at " + std::to_string(format.rate) +
                           " samples a second; choose another --rate, or .wav"};
        sf_command(m_sound.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    }

    void Append(const double* frames, size_t count) override {
        const size_t samples = count * m_format.channels;
        const auto wanted = static_cast<sf_count_t>(count);
        sf_count_t written = 0;
        if (m_isWhole) {
            m_whole.clear();
            for (size_t frame = 0; frame < count; ++frame) {
                bool isCut = false;
                for (unsigned channel = 0; channel < m_format.channels; ++channel)
                    m_whole.push_back(WholeSample(*frames++, m_format.bits, isCut) * (1 << (32 - m_format.bits)));
                m_cutFrames += isCut;
            }
            written = sf_writef_int(m_sound.get(), m_whole.data(), wanted);
        } else {
            m_floats.assign(frames, frames + samples);
            written = sf_writef_float(m_sound.get(), m_floats.data(), wanted);
        }
        if (written != wanted)
            Fail();
    }

    void Finish() override {
        if (sf_close(m_sound.release()) != 0)
            Fail();
        if (m_hasFailed)
            m_file.Commit(); // which tells why
    }

private:
    static CodedWriter& Of(void* self) { return *static_cast<CodedWriter*>(self); }

    [[noreturn]] void Fail() {
        if (m_hasFailed)
            m_file.Commit(); // which tells why
        FailToWrite(m_path, false, m_sound ? sf_strerror(m_sound.get()) : "");
    }

    // Nothing is thrown through the library.
    sf_count_t Put(const void* bytes, sf_count_t count) noexcept {
        if (m_hasFailed || !m_file.TryWrite(bytes, static_cast<size_t>(count))) {
            m_hasFailed = true;
            return 0;
        }
        m_place += count;
        m_length = std::max(m_length, m_place);
        return count;
    }
    sf_count_t Seek(sf_count_t offset, int whence) noexcept {
        const sf_count_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? m_place : m_length;
        if (from + offset < 0 || !m_file.TrySeek(static_cast<uint64_t>(from + offset)))
            return -1;
        return m_place = from + offset;
    }

    OutputFile& m_file;
    const std::string m_path;
    const SoundFormat m_format;
    const bool m_isWhole; ///< its samples are whole numbers
    bool m_hasFailed = false;
    sf_count_t m_place = 0;
    sf_count_t m_length = 0;
    std::vector<int> m_whole;
    std::vector<float> m_floats;
    SoundFile m_sound; ///< writes until it is closed: goes before the others
};

} // namespace

std::vector<std::string> CodedEndings() {
    std::vector<std::string> endings;
    for (const Kind& kind : Kinds())
        endings.push_back(kind.ending);
    return endings;
}

std::string WhyNothingIsCoded() { return "libsndfile writes nothing here"; }

std::unique_ptr<SoundWriter> MakeCodedWriter(OutputFile& file, const std::string& path, const SoundFormat& format) {
    for (const Kind& kind : Kinds()) {
        if (kind.ending != format.ending)
            continue;
        const int whole = kind.isLossy ? kind.format : kind.format | SubtypeFor(format.bits);
        if (!kind.isLossy && !CanBeWritten(whole, format))
            throw WrongUse{path + ": ." + kind.ending + " cannot hold " + std::to_string(format.channels) +
                           (format.channels == 1 ? " channel" : " channels") + " of " + std::to_string(format.bits) +
                           " bits; choose other --bits, or .wav"};
        return std::make_unique<CodedWriter>(file, path, format, whole, kind.isLossy);
    }
    throw WrongUse{path + ": \"." + format.ending + "\" is no kind of sound that can be written"};
}
