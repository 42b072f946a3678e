#include "describe.h"

#include "input_file.h"
#include "midi_song.h"

#include <algorithm>
#include <cstdio>

namespace {

bool BeginsWith(const std::vector<unsigned char>& bytes, const char* id) {
    return bytes.size() >= 4 && std::equal(id, id + 4, bytes.begin());
}

std::string TextOf(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// A value a line; what is nested stands indented below its name.
void Print(const Json& json, int depth) {
    for (const auto& [name, value] : json.items()) {
        const std::string indent(static_cast<size_t>(depth) * 2, ' ');
        if (!value.is_structured()) {
            std::printf("%s%s: %s\n", indent.c_str(), name.c_str(), TextOf(value).c_str());
            continue;
        }
        if (value.empty())
            continue;
        std::printf("%s%s:\n", indent.c_str(), name.c_str());
        if (value.is_object()) {
            Print(value, depth + 1);
            continue;
        }
        int number = 0;
        for (const Json& item : value) {
            std::printf("%s  %d:", indent.c_str(), ++number);
            const bool isFlat =
                std::none_of(item.begin(), item.end(), [](const Json& part) { return part.is_structured(); });
            if (isFlat) {
                for (const auto& [part, content] : item.items())
                    std::printf(" %s %s%s", part.c_str(), TextOf(content).c_str(),
                                part == std::prev(item.end()).key() ? "" : ",");
                std::printf("\n");
            } else {
                std::printf("\n");
                Print(item, depth + 2);
            }
        }
    }
}

} // namespace

std::string ClockText(double seconds) {
    char text[32];
    const int minutes = static_cast<int>(seconds / 60);
    std::snprintf(text, sizeof text, "%d:%04.1f", minutes, seconds - 60.0 * minutes);
    return text;
}

void Describe(const std::string& path, bool json) {
    std::vector<unsigned char> bytes = ReadInputFile(path);
    Json about;
    if (BeginsWith(bytes, "RIFF"))
        about = DescribeWave(path, bytes);
    else if (BeginsWith(bytes, "MThd"))
        about = DescribeMidi(path, bytes);
    else
        throw InputError{path + ": neither a standard MIDI file nor a wave file"};
    if (json)
        std::printf("%s\n", about.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
    else
        Print(about, 0);
}
