#include "part_choice.h"

#include "errors.h"
#include "number_text.h"

#include <torv/songs/nearest_names.h>

#include <charconv>

using namespace torv::songs;

namespace {

constexpr double kLeastLevel = -60;
constexpr double kMostLevel = 24;

[[noreturn]] void Fail(const std::string& text) {
    throw WrongUse{"--part \"" + text +
                   "\": write NAME or NUMBER, then who sings it, how loud in dB and where from -1 (left) to 1, as in "
                   "Alto=Alice:-3:0.5"};
}

double ReadNumber(const std::string& text, const std::string& number, double least, double most) {
    const std::optional<double> value = NumberOf(number);
    if (!value || *value < least || *value > most)
        Fail(text);
    return *value;
}

size_t FindPart(const std::string& wanted, const Song& song) {
    std::vector<std::string> names;
    for (const Part& part : song.parts)
        names.push_back(part.name);
    if (const auto found = FindName(names, wanted))
        return *found;
    size_t number = 0;
    const char* const end = wanted.data() + wanted.size();
    const auto [at, error] = std::from_chars(wanted.data(), end, number);
    if (error == std::errc() && at == end && number >= 1 && number <= song.parts.size())
        return number - 1;
    throw WrongUse{song.source + ": there is no part \"" + wanted + "\"; it has " + ListParts(song) +
                   (names.size() > 1 ? ": " + SuggestNames(names, wanted) : "")};
}

} // namespace

PartChoice ReadPartChoice(const std::string& text, const Song& song) {
    const size_t equals = text.find('=');
    PartChoice choice{FindPart(text.substr(0, equals), song), {}, 0, {}};
    if (equals == std::string::npos)
        return choice;
    std::vector<std::string> fields;
    for (size_t at = equals + 1;;) {
        const size_t colon = text.find(':', at);
        fields.push_back(text.substr(at, colon - at));
        if (colon == std::string::npos)
            break;
        at = colon + 1;
    }
    if (fields.size() > 3)
        Fail(text);
    choice.voice = fields[0];
    if (fields.size() > 1 && !fields[1].empty())
        choice.decibels = ReadNumber(text, fields[1], kLeastLevel, kMostLevel);
    if (fields.size() > 2)
        choice.pan = ReadNumber(text, fields[2], -1, 1);
    return choice;
}

std::string ListParts(const Song& song) {
    std::string text;
    for (size_t i = 0; i < song.parts.size(); ++i)
        text += (i ? ", " : "") + std::to_string(i + 1) +
                (song.parts[i].name.empty() ? "" : " \"" + song.parts[i].name + "\"");
    return text;
}
