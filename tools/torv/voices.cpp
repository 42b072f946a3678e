#include "voices.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iterator>

namespace {

/// The reference engine's programs, by number.
constexpr const char* kVoices[] = {"soprano", "tenor", "child", "bass"};
constexpr int kMostPrograms = 128;

} // namespace

std::optional<int> VoiceProgram(const std::string& name) {
    const auto voice = std::find(std::begin(kVoices), std::end(kVoices), name);
    if (voice != std::end(kVoices))
        return static_cast<int>(voice - std::begin(kVoices));
    const bool isNumber = !name.empty() && name.size() <= 3 &&
                          std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c); });
    const int number = isNumber ? std::atoi(name.c_str()) : -1;
    return number >= 0 && number < kMostPrograms ? std::optional<int>(number) : std::nullopt;
}

std::string VoiceNames() {
    std::string names;
    for (const char* voice : kVoices)
        names += (names.empty() ? "" : ", ") + std::string(voice);
    return names;
}
