#include "torv/songs/part_names.h"

#include <algorithm>

namespace torv::songs {

namespace {

constexpr const char* kSeparators = " \t\r\n/,;&+-.";

std::string InFull(const std::string& name) {
    if (name == "S" || name == "s")
        return "Soprano";
    if (name == "A" || name == "a")
        return "Alto";
    if (name == "T" || name == "t")
        return "Tenor";
    if (name == "B" || name == "b")
        return "Bass";
    return name;
}

std::vector<std::string> WordsOf(const std::string& name) {
    std::vector<std::string> words;
    for (size_t at = name.find_first_not_of(kSeparators); at != std::string::npos;) {
        const size_t end = std::min(name.find_first_of(kSeparators, at), name.size());
        if (const std::string word = name.substr(at, end - at); word != "and" && word != "und")
            words.push_back(InFull(word));
        at = name.find_first_not_of(kSeparators, end);
    }
    return words;
}

} // namespace

std::vector<std::string> NamesOfVoices(const std::string& name, size_t voices) {
    if (voices < 2)
        return std::vector<std::string>(voices, name);
    std::vector<std::string> names = WordsOf(name);
    if (names.size() == 1 && names[0].size() == voices && names[0].find_first_not_of("SATBsatb") == std::string::npos) {
        const std::string letters = names[0];
        names.clear();
        for (const char letter : letters)
            names.push_back(InFull(std::string(1, letter)));
    }
    if (names.size() == voices)
        return names;
    names.assign(1, name);
    for (size_t i = 2; i <= voices; ++i)
        names.push_back(name.empty() ? "" : name + " " + std::to_string(i));
    return names;
}

} // namespace torv::songs
