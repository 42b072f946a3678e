#include "sound_reader.h"

#include "coded_sound.h"
#include "errors.h"
#include "input.h"

#include <torv/songs/wave_reader.h>

#include <istream>

namespace {

bool IsWave(std::istream& file) {
    char id[4] = "";
    file.read(id, sizeof id);
    file.clear();
    file.seekg(0);
    return std::string(id, sizeof id) == "RIFF";
}

/// Owns the stream that another reader reads.
class OpenedSound : public SoundReader {
public:
    OpenedSound(std::unique_ptr<std::istream> file, std::unique_ptr<SoundReader> reader)
        : m_file(std::move(file)), m_reader(std::move(reader)) {
        m_rate = m_reader->Rate();
        m_channels = m_reader->Channels();
        m_frames = m_reader->Frames();
        m_kind = m_reader->Kind();
        m_isStreamed = m_reader->IsStreamed();
    }
    size_t Read(double* frames, size_t count) override { return m_reader->Read(frames, count); }
    void Rewind() override { m_reader->Rewind(); }

private:
    std::unique_ptr<std::istream> m_file;
    std::unique_ptr<SoundReader> m_reader;
};

} // namespace

std::unique_ptr<SoundReader> OpenSound(const std::string& path) {
    std::unique_ptr<std::istream> file = OpenInput(path);
    const std::string name = NameOfInput(path);
    std::unique_ptr<SoundReader> reader;
    std::string reason = "is no sound file that can be read" + ButPlainWaves() + "; export it as .wav";
    if (IsWave(*file))
        reader = torv::songs::OpenWave(name, *file, reason);
    if (!reader) {
        file->clear();
        file->seekg(0);
        reader = OpenCodedSound(*file);
    }
    if (!reader)
        throw InputError{name + ": " + reason};
    return std::make_unique<OpenedSound>(std::move(file), std::move(reader));
}
