#include "describe.h"

#include "coded_sound.h"
#include "errors.h"
#include "input.h"

#include <torv/songs/input_file.h>
#include <torv/songs/midi_data.h>
#include <torv/songs/read_song.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <istream>
#include <iterator>

using namespace torv::songs;

namespace {

constexpr size_t kEnoughToTell = 4096; // bytes

/// Numbers for people: a thousandth is enough.
std::string TextOf(const Json& value) {
    if (value.is_number_float()) {
        char text[64];
        std::snprintf(text, sizeof text, "%.3f", value.get<double>());
        std::string number = text;
        number.erase(number.find_last_not_of('0') + 1);
        if (number.back() == '.')
            number.pop_back();
        return number;
    }
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
            if (!item.is_structured()) {
                std::printf(" %s\n", TextOf(item).c_str());
                continue;
            }
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
    const double tenths = std::round(seconds * 10); // before it is parted: no minute has 60.0 seconds
    const double minutes = std::floor(tenths / 600);
    std::snprintf(text, sizeof text, "%.0f:%04.1f", minutes, (tenths - minutes * 600) / 10);
    return text;
}

void Describe(const std::string& path, bool json) {
    const std::unique_ptr<std::istream> file = OpenInput(path);
    const std::string name = NameOfInput(path);
    std::vector<unsigned char> beginning;
    AppendBytes(*file, kEnoughToTell, beginning);
    file->clear();
    file->seekg(0);
    if (beginning.empty())
        throw InputError{name + ": is empty"};
    Json about;
    if (IsMidi(beginning)) {
        about = DescribeMidi(name, ReadSongBytes(*file, name));
    } else if (FormatOf(beginning) != SongFormat::Unknown) {
        about = DescribeSong(ReadSong(*file, name));
    } else if (std::string(beginning.begin(), beginning.end()).starts_with("RIFF")) {
        about = DescribeWave(name, *file);
    } else if (const auto sound = OpenCodedSound(*file)) {
        about = DescribeSound(name, *sound);
    } else {
        throw InputError{name +
                         ": neither a song (standard MIDI file, MusicXML, UST) nor a sound file that can be read" +
                         ButPlainWaves()};
    }
    if (json)
        std::printf("%s\n", about.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
    else
        Print(about, 0);
}
