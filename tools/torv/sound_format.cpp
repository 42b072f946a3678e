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

bool IsWave(const std::string& ending) { return ending == "wav" || ending == "wave"; }

bool IsCoded(const std::string& ending) {
    const std::vector<std::string> coded = CodedEndings();
    return std::find(coded.begin(), coded.end(), ending) != coded.end();
}

} // namespace

bool HasSoundEnding(const std::string& path) { return IsWave(EndingOf(path)) || IsCoded(EndingOf(path)); }

std::string EndingFor(const std::string& path, const SoundOptions& options) {
    std::string ending = options.format.empty() ? EndingOf(path) : InSmallLetters(options.format);
    if (ending.empty() || IsWave(ending))
        return "wav";
    if (IsCoded(ending))
        return ending;
    const std::vector<std::string> coded = CodedEndings();
    const std::string what = options.format.empty() ? path + ": \"." + ending : "--format \"" + ending;
    if (coded.empty())
        throw WrongUse{what + "\" cannot be written: " + WhyNothingIsCoded() + "; .wav can"};
    throw WrongUse{what + "\" is no kind of sound that can be written; there are wav, " + Joined(coded)};
}
