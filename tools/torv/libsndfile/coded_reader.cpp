#include "coded_sound.h"
#include "sound_file.h"

#include <istream>

namespace {

class CodedReader : public SoundReader {
public:
    explicit CodedReader(std::istream& file) : m_file(file) {
        SF_VIRTUAL_IO calls{};
        calls.get_filelen = [](void* self) { return Of(self).Length(); };
        calls.seek = [](sf_count_t offset, int whence, void* self) { return Of(self).Seek(offset, whence); };
        calls.read = [](void* bytes, sf_count_t count, void* self) { return Of(self).Get(bytes, count); };
        calls.write = [](const void*, sf_count_t, void*) { return sf_count_t{0}; };
        calls.tell = [](void* self) { return static_cast<sf_count_t>(Of(self).m_file.tellg()); };
        SF_INFO info{};
        m_sound.reset(sf_open_virtual(&calls, SFM_READ, &info, this));
        if (!m_sound)
            return;
        m_rate = static_cast<unsigned>(info.samplerate);
        m_channels = static_cast<unsigned>(info.channels);
        m_frames = static_cast<uint64_t>(info.frames);
        SF_FORMAT_INFO about{};
        about.format = info.format & SF_FORMAT_TYPEMASK;
        sf_command(nullptr, SFC_GET_FORMAT_INFO, &about, sizeof about);
        m_kind = about.name ? about.name : "sound file";
    }
    bool IsOpen() const { return m_sound != nullptr; }
    size_t Read(double* frames, size_t count) override {
        return static_cast<size_t>(sf_readf_double(m_sound.get(), frames, static_cast<sf_count_t>(count)));
    }
    void Rewind() override { sf_seek(m_sound.get(), 0, SEEK_SET); }

private:
    static CodedReader& Of(void* self) { return *static_cast<CodedReader*>(self); }

    sf_count_t Length() {
        m_file.clear();
        const auto place = m_file.tellg();
        m_file.seekg(0, std::ios::end);
        const auto length = m_file.tellg();
        m_file.seekg(place);
        return length;
    }
    sf_count_t Seek(sf_count_t offset, int whence) {
        m_file.clear();
        m_file.seekg(offset, whence == SEEK_SET ? std::ios::beg : whence == SEEK_CUR ? std::ios::cur : std::ios::end);
        return m_file.tellg();
    }
    sf_count_t Get(void* bytes, sf_count_t count) {
        m_file.clear();
        m_file.read(static_cast<char*>(bytes), count);
        const auto got = m_file.gcount();
        m_file.clear();
        return got;
    }

    std::istream& m_file;
    SoundFile m_sound;
};

} // namespace

std::unique_ptr<SoundReader> OpenCodedSound(std::istream& file) {
    auto reader = std::make_unique<CodedReader>(file);
    return reader->IsOpen() && reader->Channels() > 0 && reader->Rate() > 0 ? std::move(reader) : nullptr;
}
