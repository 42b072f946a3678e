#include "describe.h"

#include "midi_song.h"

#include <algorithm>

namespace {

constexpr size_t kFormBytes = 12; // "RIFF", size, "WAVE"
constexpr size_t kHeaderBytes = 8;
constexpr size_t kFormatBytes = 16;
constexpr unsigned kPcm = 1;

using Bytes = std::vector<unsigned char>;

uint32_t Number(const Bytes& bytes, size_t at, size_t size) {
    uint32_t value = 0;
    for (size_t i = 0; i < size; ++i)
        value |= static_cast<uint32_t>(bytes[at + i]) << 8 * i;
    return value;
}

std::string IdText(const Bytes& bytes, size_t at) {
    std::string text(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                     bytes.begin() + static_cast<std::ptrdiff_t>(at + 4));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

} // namespace

Json DescribeWave(const std::string& path, const Bytes& bytes) {
    if (bytes.size() < kFormBytes || IdText(bytes, 8) != "WAVE")
        throw InputError{path + ": not a wave file, though it begins like one"};
    size_t format = 0;
    uint64_t dataBytes = 0;
    Json chunks = Json::array();
    for (size_t at = kFormBytes; bytes.size() - at >= kHeaderBytes;) {
        const std::string id = IdText(bytes, at);
        const size_t stated = Number(bytes, at + 4, 4);
        const size_t data = at + kHeaderBytes;
        const size_t size = std::min(stated, bytes.size() - data);
        chunks.push_back({{"id", id}, {"offset", data}, {"bytes", stated}});
        if (size < stated)
            chunks.back()["missing"] = stated - size;
        if (id == "fmt " && size >= kFormatBytes)
            format = data;
        else if (id == "data")
            dataBytes += size;
        at = data + size;
        // An odd chunk is padded by most programs, and by this library's format is not.
        if (size % 2 == 1 && at < bytes.size() && bytes[at] == 0)
            ++at;
    }
    if (format == 0)
        throw InputError{path + ": has no format chunk, so that its samples cannot be told"};
    const uint32_t tag = Number(bytes, format, 2);
    const uint32_t rate = Number(bytes, format + 4, 4);
    const uint32_t blockBytes = Number(bytes, format + 12, 2);
    const uint64_t frames = blockBytes ? dataBytes / blockBytes : 0;
    const double seconds = rate ? static_cast<double>(frames) / rate : 0;
    Json about;
    about["file"] = path;
    about["kind"] = "wave file";
    about["encoding"] = tag == kPcm ? Json("PCM") : Json(tag);
    about["channels"] = Number(bytes, format + 2, 2);
    about["rate"] = rate;
    about["bits"] = Number(bytes, format + 14, 2);
    about["frames"] = frames;
    about["seconds"] = seconds;
    about["length"] = ClockText(seconds);
    about["chunks"] = chunks;
    return about;
}
