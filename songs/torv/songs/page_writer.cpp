#include "torv/songs/page_source.h"
#include "torv/songs/performance_json.h"
#include "torv/songs/report_writers.h"

#include <algorithm>
#include <cmath>

namespace torv::songs {

namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned kWaveHeader = 44;

std::string Base64(const std::string& bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (size_t k = 0; k < 4; ++k)
            text += i + k <= bytes.size() ? kDigits[group >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

/// A 16-bit wave file; the samples' channels take turns.
std::string WaveFile(const std::vector<int16_t>& samples, unsigned rate, unsigned channels) {
    std::string bytes;
    const auto size = static_cast<uint32_t>(samples.size() * 2);
    bytes.reserve(kWaveHeader + size);
    const auto put = [&bytes](uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            bytes += static_cast<char>(value >> 8 * i);
    };
    bytes += "RIFF";
    put(kWaveHeader - 8 + size, 4);
    bytes += "WAVEfmt ";
    put(16, 4);
    put(1, 2);
    put(channels, 2);
    put(rate, 4);
    put(rate * channels * 2, 4);
    put(channels * 2, 2);
    put(16, 2);
    bytes += "data";
    put(size, 4);
    for (const int16_t sample : samples)
        put(static_cast<uint16_t>(sample), 2);
    return bytes;
}

/// All parts as they are heard together, left and right in turn.
std::vector<int16_t> MixOf(const std::vector<PerformedPart>& parts, size_t frames) {
    std::vector<int16_t> mix(2 * frames);
    for (size_t i = 0; i < frames; ++i) {
        double left = 0;
        double right = 0;
        for (const PerformedPart& part : parts)
            if (i < part.sound.samples.size()) {
                left += part.sound.left * part.sound.samples[i];
                right += part.sound.right * part.sound.samples[i];
            }
        mix[2 * i] = static_cast<int16_t>(std::clamp(std::round(left), -32768.0, 32767.0));
        mix[2 * i + 1] = static_cast<int16_t>(std::clamp(std::round(right), -32768.0, 32767.0));
    }
    return mix;
}

/// Each part's sound, the mix of all, or none, as the page's size allows.
void AddSound(const std::vector<PerformedPart>& parts, size_t mostSound, Json& data) {
    size_t samples = 0;
    size_t frames = 0;
    unsigned rate = 0;
    for (const PerformedPart& part : parts) {
        samples += part.sound.samples.size();
        frames = std::max(frames, part.sound.samples.size());
        rate = std::max(rate, part.sound.rate);
    }
    data["soundRate"] = rate;
    data["soundLeftOut"] = 4 * frames > mostSound && 2 * samples > mostSound;
    if (2 * samples <= mostSound) {
        for (size_t i = 0; i < parts.size(); ++i) {
            const KeptSound& sound = parts[i].sound;
            if (!sound.samples.empty())
                data["parts"][i]["sound"] = {{"left", sound.left},
                                             {"right", sound.right},
                                             {"wave", Base64(WaveFile(sound.samples, sound.rate, 1))}};
        }
    } else if (4 * frames <= mostSound) {
        data["mix"] = Base64(WaveFile(MixOf(parts, frames), rate, 2));
    }
}

} // namespace

std::string ToPage(const Performance& performance, size_t mostSound) {
    Json data = DescribeAsJson(performance);
    AddSound(performance.parts, mostSound, data);
    std::string page(kPageBeforeData);
    // In JSON these stand in texts only, where a browser could take them for the data's end.
    for (const char c : data.dump(-1, ' ', false, Json::error_handler_t::replace))
        if (c == '<')
            page += "\\u003c";
        else
            page += c;
    return page.append(kPageAfterData);
}

} // namespace torv::songs
