#include "sound_object.h"

#include <torv/songs/input_file.h>
#include <torv/songs/wave_reader.h>

#include <cmath>
#include <istream>

namespace torv::c {

std::unique_ptr<SoundObject> ReadWave(const char* given) {
    constexpr size_t kFrames = 4096; // at a time
    const std::unique_ptr<std::istream> file = songs::OpenInputFile(TakenPath(given));
    const std::string path = given;
    std::string reason;
    const std::unique_ptr<songs::SoundReader> reader = songs::OpenWave(path, *file, reason);
    if (!reader)
        throw Failure{TORV_FILE_ERROR, path + ": " + reason};
    const unsigned channels = reader->Channels();
    if (channels > 2)
        throw Failure{TORV_FILE_ERROR,
                      path + ": has " + std::to_string(channels) + " channels: save it with one or two"};
    auto sound = std::make_unique<SoundObject>(reader->Rate(), channels);
    sound->samples.reserve(static_cast<size_t>(reader->Frames()) * channels);
    std::vector<double> frames(kFrames * channels);
    while (const size_t count = reader->Read(frames.data(), kFrames))
        for (size_t i = 0; i < count * channels; ++i) {
            const auto value = static_cast<float>(frames[i]);
            sound->samples.push_back(std::isfinite(value) ? value : 0.0F);
        }
    return sound;
}

} // namespace torv::c
