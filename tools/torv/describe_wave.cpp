#include "describe.h"

#include "errors.h"

#include <torv/songs/wave_layout.h>

using namespace torv::songs;

namespace {

constexpr unsigned kUncompressed[] = {kPcmTag, 3, 6, 7}; // a block is a frame

bool IsUncompressed(const WaveFormat& format) {
    for (const unsigned tag : kUncompressed)
        if (format.tag == tag)
            return format.blockBytes > 0;
    return false;
}

Json DescribeChunk(const WaveChunk& chunk) {
    Json about{{"id", chunk.id}, {"offset", chunk.offset}, {"bytes", chunk.stated}};
    if (chunk.stated > chunk.bytes)
        about["missing"] = chunk.stated - chunk.bytes;
    return about;
}

} // namespace

Json DescribeWave(const std::string& path, std::istream& file) {
    const WaveLayout layout = ReadWaveLayout(path, file);
    if (!layout.format)
        throw InputError{path + ": has no format chunk, so that its samples cannot be told"};
    const WaveFormat& format = *layout.format;
    const uint64_t dataBytes = layout.data ? layout.data->bytes : 0;
    std::optional<uint64_t> frames;
    if (IsUncompressed(format))
        frames = dataBytes / format.blockBytes;
    else if (layout.statedFrames.value_or(0) > 0)
        frames = *layout.statedFrames;
    std::optional<double> seconds;
    if (frames && format.rate)
        seconds = static_cast<double>(*frames) / format.rate;
    else if (!frames && format.bytesPerSecond)
        seconds = static_cast<double>(dataBytes) / format.bytesPerSecond;
    Json about;
    about["file"] = path;
    about["kind"] = "wave file";
    about["encoding"] = NameOfWaveTag(format.tag);
    about["channels"] = format.channels;
    about["rate"] = format.rate;
    about["bits"] = format.bits;
    if (frames)
        about["frames"] = *frames;
    if (seconds) {
        about["seconds"] = *seconds;
        about["length"] = ClockText(*seconds);
    }
    about["chunks"] = Json::array();
    for (const WaveChunk& chunk : layout.chunks)
        about["chunks"].push_back(DescribeChunk(chunk));
    if (layout.isStreamed)
        about["remark"] = "the header does not tell how long the sound is: it is taken to reach to the file's end";
    return about;
}

Json DescribeSound(const std::string& path, const SoundReader& sound) {
    const double seconds = static_cast<double>(sound.Frames()) / sound.Rate();
    return {
        {"file", path},         {"kind", "sound file"},     {"encoding", sound.Kind()}, {"channels", sound.Channels()},
        {"rate", sound.Rate()}, {"frames", sound.Frames()}, {"seconds", seconds},       {"length", ClockText(seconds)}};
}
