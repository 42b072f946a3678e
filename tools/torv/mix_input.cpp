#include "mix_input.h"

#include "errors.h"
#include "number_text.h"

#include <filesystem>
#include <optional>

namespace {

constexpr double kLeastLevel = -200;
constexpr double kMostLevel = 60;

bool Exists(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

/// Empty when what follows the name is no level, or no level and pan.
std::optional<MixInput> Split(const std::string& argument, size_t nameEnd) {
    const std::string rest = argument.substr(nameEnd + 1);
    const size_t colon = rest.find(':');
    const std::string levelText = rest.substr(0, colon);
    const auto level = levelText.empty() && colon != std::string::npos ? 0.0 : NumberOf(levelText);
    const auto pan = colon == std::string::npos ? 0.0 : NumberOf(rest.substr(colon + 1));
    if (!level || !pan)
        return std::nullopt;
    return MixInput{argument.substr(0, nameEnd), *level, *pan};
}

MixInput Checked(const std::string& argument, const MixInput& input) {
    if (input.level < kLeastLevel || input.level > kMostLevel)
        throw InputError{argument + ": the level must be from -200 to 60 dB"};
    if (input.pan < -1 || input.pan > 1)
        throw InputError{argument + ": the pan must be from -1 (left) to 1 (right)"};
    return input;
}

} // namespace

MixInput ParseMixInput(const std::string& argument) {
    if (Exists(argument))
        return {argument};
    std::optional<MixInput> likely;
    size_t colon = argument.size();
    for (int colons = 0; colons < 2 && colon > 0; ++colons) {
        colon = argument.rfind(':', colon - 1);
        if (colon == std::string::npos || colon == 0)
            break;
        const auto input = Split(argument, colon);
        if (Exists(argument.substr(0, colon))) {
            if (!input)
                throw InputError{argument + ": what follows the file's name is no level and pan, as in " +
                                 argument.substr(0, colon) + ":-6:0.5"};
            return Checked(argument, *input);
        }
        if (input)
            likely = input;
    }
    return likely ? Checked(argument, *likely) : MixInput{argument};
}
