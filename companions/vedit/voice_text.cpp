#include "voice_text.h"

#include "failure.h"

#include <algorithm>
#include <sstream>

namespace vedit {

namespace {

constexpr int kMost = 127;
constexpr const char* kName = "Name"; // of the voice, as a person reads it
constexpr const char* kBlanks = " \t\r";

const char* Label(const std::string& setting) { return setting == DBM_VOICE_NAME ? kName : setting.c_str(); }

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(kBlanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// As it stands on one line. A name may hold any bytes, and is left alone as long as its line is.
std::string Shown(std::string value) {
    std::replace_if(
        value.begin(), value.end(), [](char each) { return each == '\n' || each == '\r'; }, '?');
    return Trimmed(value);
}

bool IsParameterValue(const std::string& text) {
    return !text.empty() && text.size() <= 3 && text.find_first_not_of("0123456789") == std::string::npos &&
           std::stoi(text) <= kMost;
}

} // namespace

std::string Write(const Settings& settings) {
    std::string text = "# A voice's name and parameters. What stands behind the = may be changed: values go from 0 to\n"
                       "# 127, and 64 is neutral. Lines that are removed leave their setting as it is. Close the\n"
                       "# editor without saving to change nothing.\n";
    for (const auto& [name, value] : settings)
        text += std::string(Label(name)) + " = " + Shown(value) + "\n";
    return text;
}

Settings ReadChanges(const std::string& text, const Settings& settings) {
    Settings changes;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        line = Trimmed(line);
        if (line.empty() || line.front() == '#')
            continue;
        const size_t equals = line.find('=');
        Require(equals != std::string::npos, VEDIT_BAD_INPUT);
        const std::string label = Trimmed(line.substr(0, equals));
        const std::string value = Trimmed(line.substr(equals + 1));
        const auto setting = std::find_if(settings.begin(), settings.end(),
                                          [&](const auto& each) { return label == Label(each.first); });
        Require(setting != settings.end(), VEDIT_BAD_INPUT);
        Require(setting->first == DBM_VOICE_NAME ? !value.empty() || Shown(setting->second).empty()
                                                 : IsParameterValue(value),
                VEDIT_BAD_INPUT);
        if (value != Shown(setting->second))
            changes.emplace_back(setting->first, value);
    }
    return changes;
}

} // namespace vedit
