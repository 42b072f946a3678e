#include "spoken.h"

#include <algorithm>
#include <iterator>

namespace rve {

namespace {

// Symbols that both languages have mean nearly the same; vowels are told apart by their symbols alone.
constexpr Spoken kSpoken[] = {
    {"@", {"ax", nullptr}, false},   {"V", {"ah", nullptr}, false},   {"e", {"eh", nullptr}, false},
    {"I", {"ih", nullptr}, false},   {"i:", {"iy", nullptr}, false},  {"{", {"ae", nullptr}, false},
    {"O:", {"ao", nullptr}, false},  {"Q", {"aa", nullptr}, false},   {"U", {"uh", nullptr}, false},
    {"u:", {"uw", nullptr}, false},  {"@r", {"er", nullptr}, false},  {"eI", {"ey", nullptr}, false},
    {"aI", {"ay", nullptr}, false},  {"OI", {"oy", nullptr}, false},  {"@U", {"ow", nullptr}, false},
    {"aU", {"aw", nullptr}, false},  {"I@", {"ih", "r"}, false},      {"e@", {"eh", "r"}, false},
    {"U@", {"uh", "r"}, false},      {"O@", {"ao", "r"}, false},      {"Q@", {"aa", "r"}, false},
    {"a", {"aa", nullptr}, false},   {"i", {"iy", nullptr}, false},   {"M", {"uw", nullptr}, false},
    {"o", {"ao", nullptr}, false},   {"p", {"p", nullptr}, false},    {"t", {"t", nullptr}, false},
    {"k", {"k", nullptr}, false},    {"ph", {"p", nullptr}, false},   {"th", {"t", nullptr}, false},
    {"kh", {"k", nullptr}, false},   {"b", {"b", nullptr}, false},    {"d", {"d", nullptr}, false},
    {"g", {"g", nullptr}, false},    {"bh", {"b", nullptr}, false},   {"dh", {"d", nullptr}, false},
    {"gh", {"g", nullptr}, false},   {"p'", {"p", nullptr}, true},    {"t'", {"t", nullptr}, true},
    {"k'", {"k", nullptr}, true},    {"b'", {"b", nullptr}, true},    {"d'", {"d", nullptr}, true},
    {"g'", {"g", nullptr}, true},    {"tS", {"ch", nullptr}, false},  {"dZ", {"jh", nullptr}, false},
    {"ts", {"t", "s"}, false},       {"dz", {"d", "z"}, false},       {"f", {"f", nullptr}, false},
    {"v", {"v", nullptr}, false},    {"T", {"th", nullptr}, false},   {"D", {"dh", nullptr}, false},
    {"s", {"s", nullptr}, false},    {"z", {"z", nullptr}, false},    {"S", {"sh", nullptr}, false},
    {"Z", {"zh", nullptr}, false},   {"h", {"hh", nullptr}, false},   {"hv", {"hh", nullptr}, false},
    {"h\\", {"hh", nullptr}, false}, {"C", {"hh", nullptr}, true},    {"p\\", {"f", nullptr}, false},
    {"p\\'", {"f", nullptr}, true},  {"m", {"m", nullptr}, false},    {"n", {"n", nullptr}, false},
    {"N", {"ng", nullptr}, false},   {"m'", {"m", nullptr}, true},    {"J", {"n", nullptr}, true},
    {"N'", {"ng", nullptr}, true},   {"N\\", {"ng", nullptr}, false}, {"w", {"w", nullptr}, false},
    {"j", {"y", nullptr}, false},    {"r", {"r", nullptr}, false},    {"l", {"l", nullptr}, false},
    {"l0", {"l", nullptr}, false},   {"4", {"d", nullptr}, false},    {"4'", {"d", nullptr}, true},
    {"Asp", {"hh", nullptr}, false}, {"*in", {"hh", nullptr}, false}};

template <size_t N>
bool IsOneOf(std::string_view name, const char* const (&names)[N]) {
    return std::any_of(std::begin(names), std::end(names), [name](const char* one) { return name == one; });
}

} // namespace

const Spoken* SpokenAs(const Phoneme& phoneme) {
    const std::string_view symbol(phoneme.symbol);
    const auto* const at = std::find_if(std::begin(kSpoken), std::end(kSpoken),
                                        [symbol](const Spoken& row) { return symbol == row.symbol; });
    return at == std::end(kSpoken) ? nullptr : at;
}

bool IsVowelPhone(std::string_view name) {
    return IsOneOf(name,
                   {"aa", "ae", "ah", "ao", "aw", "ax", "ay", "eh", "er", "ey", "ih", "iy", "ow", "oy", "uh", "uw"});
}
bool IsStopPhone(std::string_view name) { return IsOneOf(name, {"p", "t", "k", "b", "d", "g", "ch", "jh"}); }
bool IsVoicelessStopPhone(std::string_view name) { return IsOneOf(name, {"p", "t", "k", "ch"}); }
bool IsDiphthongPhone(std::string_view name) { return IsOneOf(name, {"aw", "ay", "ey", "ow", "oy"}); }

} // namespace rve
