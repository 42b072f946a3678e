#include "sound_object.h"

#include <bit>
#include <cmath>
#include <span>

namespace torv::c {

namespace {

using Bytes = std::span<const unsigned char>;

constexpr uint32_t kWhole = 1;
constexpr uint32_t kReal = 3;
constexpr uint32_t kExtensible = 0xFFFE; // its own tag stands behind

uint32_t Number(Bytes bytes, size_t at, size_t width) {
    uint32_t number = 0;
    for (size_t i = 0; i < width; ++i)
        number |= static_cast<uint32_t>(bytes[at + i]) << (8 * i);
    return number;
}

bool IsNamed(Bytes bytes, size_t at, const char* name) {
    return std::equal(name, name + 4, bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

struct Layout {
    Bytes format;
    Bytes data;
};

/// The two chunks that matter; a size that runs past the file ends there, as in a file that was streamed.
Layout FindChunks(Bytes bytes) {
    Layout layout;
    if (bytes.size() < 12 || !IsNamed(bytes, 0, "RIFF") || !IsNamed(bytes, 8, "WAVE"))
        return layout;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const size_t size = std::min<size_t>(Number(bytes, at + 4, 4), bytes.size() - at - 8);
        const Bytes content = bytes.subspan(at + 8, size);
        if (IsNamed(bytes, at, "fmt "))
            layout.format = content;
        if (IsNamed(bytes, at, "data") && layout.data.empty())
            layout.data = content;
        at += 8 + size + size % 2;
    }
    return layout;
}

float SampleAt(Bytes bytes, size_t at, size_t width, bool isReal) {
    const uint32_t bits = Number(bytes, at, width);
    if (isReal) {
        const auto real = std::bit_cast<float>(bits);
        return std::isfinite(real) ? real : 0.0F;
    }
    if (width == 1)
        return (static_cast<float>(bits) - 128) / 128;
    const auto whole = static_cast<int32_t>(bits << (32 - 8 * width));
    return static_cast<float>(whole / 2147483648.0);
}

} // namespace

std::unique_ptr<SoundObject> ReadWave(const std::vector<unsigned char>& bytes, const std::string& path) {
    const Layout layout = FindChunks(bytes);
    const auto refuse = [&path](const char* what) { throw Failure{TORV_FILE_ERROR, path + ": " + what}; };
    if (layout.format.size() < 16)
        refuse("is no wave file, or is damaged: export it again");
    const uint32_t channels = Number(layout.format, 2, 2);
    const uint32_t rate = Number(layout.format, 4, 4);
    const size_t width = (Number(layout.format, 14, 2) + 7) / 8;
    uint32_t tag = Number(layout.format, 0, 2);
    if (tag == kExtensible && layout.format.size() >= 26)
        tag = Number(layout.format, 24, 2);
    const bool isReal = tag == kReal && width == 4;
    if (rate == 0 || channels < 1 || channels > 2 || width < 1 || width > 4 || (tag != kWhole && !isReal))
        refuse("has a format that cannot be read: save it with one or two channels as PCM of 8 to 32 bits or as "
               "32-bit floats");
    auto sound = std::make_unique<SoundObject>(rate, channels);
    const size_t samples = layout.data.size() / (channels * width) * channels;
    sound->samples.reserve(samples);
    for (size_t i = 0; i < samples; ++i)
        sound->samples.push_back(SampleAt(layout.data, i * width, width, isReal));
    return sound;
}

} // namespace torv::c
