#include "sound_format.h"

#include "coded_sound.h"
#include "errors.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace {

std::string InSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string EndingOf(const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension().string();
    return ending.empty() ? ending : InSmallLetters(ending.substr(1));
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : ", ") + text;
    return all;
}

} // namespace

std::string EndingFor(const std::string& path, const SoundOptions& options) {
    std::string ending = options.format.empty() ? EndingOf(path) : InSmallLetters(options.format);
    if (ending.empty() || ending == "wav" || ending == "wave")
        return "wav";
    const std::vector<std::string> coded = CodedEndings();
    if (std::find(coded.begin(), coded.end(), ending) != coded.end())
        return ending;
    const std::string what = options.format.empty() ? path + ": \"." + ending : "--format \"" + ending;
    if (coded.empty())
        throw WrongUse{what + "\" cannot be written: " + WhyNothingIsCoded() + "; .wav can"};
    throw WrongUse{what + "\" is no kind of sound that can be written; there are wav, " + Joined(coded)};
}
