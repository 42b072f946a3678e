#include "torv/songs/lyric_text.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace torv::songs {

namespace {

using std::string_view;

constexpr string_view kDigits = "0123456789";
constexpr size_t kLongestHeading = 60; // bytes

/// In small letters; those with accents as UTF-8 has them, in octal digits where a letter follows that is a hexadecimal
/// one.
constexpr string_view kNames[] = {
    "verse",       "verses",     "vers",           "vs",      "chorus",        "pre-chorus",    "prechorus",
    "post-chorus", "refrain",    "refrains",       "bridge",  "intro",         "outro",         "interlude",
    "solo",        "tutti",      "instrumental",   "coda",    "strophe",       "stanza",        "couplet",
    "strofa",      "ritornello", "estribillo",     "estrofa", "coro",          "refr\xC3\xA1n", "refr\xC3\xA3o",
    "kehrvers",    "kehrreim",   "refr\xC3\xA4ng", "refreng", "omkv\303\244de"};

/// "2", "2nd", "II", "x2": what stands beside a heading's name.
bool IsCount(string_view word) {
    if (word.starts_with('x'))
        word.remove_prefix(1);
    if (!word.empty() && word.find_first_not_of("ivx") == string_view::npos)
        return true;
    const size_t end = std::min(word.find_first_not_of(kDigits), word.size());
    const string_view rest = word.substr(end);
    return end > 0 && (rest.empty() || rest == "x" || rest == "st" || rest == "nd" || rest == "rd" || rest == "th");
}

/// The name of a heading and what counts it, without brackets and colon.
bool IsNameOfHeading(string_view text) {
    if (text.size() > kLongestHeading)
        return false;
    bool hasName = false;
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of(" .,&/\t"), text.size());
        std::string word(text.substr(0, end));
        std::transform(word.begin(), word.end(), word.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        text.remove_prefix(std::min(end + 1, text.size()));
        if (word.empty() || IsCount(word))
            continue;
        const size_t digits = word.find_first_of(kDigits); // "verse1"
        if (std::find(std::begin(kNames), std::end(kNames), string_view(word).substr(0, digits)) == std::end(kNames))
            return false;
        hasName = true;
    }
    return hasName;
}

string_view WithoutBlanks(string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The bytes of the marked heading that a text begins with; 0 for none.
size_t SizeOfHeading(string_view text) {
    if (text.empty())
        return 0;
    const bool isRound = text.front() == '(';
    if (isRound || text.front() == '[') {
        const size_t end = text.find(isRound ? ')' : ']');
        if (end == string_view::npos || !IsNameOfHeading(text.substr(1, end - 1)))
            return 0;
        return end + (text.substr(end + 1).starts_with(':') ? 2 : 1);
    }
    const size_t colon = text.find(':');
    return colon != string_view::npos && IsNameOfHeading(text.substr(0, colon)) ? colon + 1 : 0;
}

} // namespace

bool IsHeading(string_view text) {
    text = WithoutBlanks(text);
    return IsNameOfHeading(text) || (!text.empty() && SizeOfHeading(text) == text.size());
}

std::string WithoutHeading(string_view text) {
    string_view rest = text;
    while (const size_t size = SizeOfHeading(WithoutBlanks(rest)))
        rest = WithoutBlanks(WithoutBlanks(rest).substr(size));
    return std::string(rest);
}

std::string WithoutNumber(string_view text) {
    const size_t end = text.find_first_not_of(kDigits);
    if (end == 0 || end == string_view::npos || (text[end] != '.' && text[end] != ')'))
        return std::string(text);
    const size_t begin = text.find_first_not_of(" \xC2\xA0", end + 1);
    return std::string(begin == string_view::npos ? text : text.substr(begin));
}

std::string WithPlainHyphens(string_view text) {
    constexpr string_view kHyphens[] = {"\xE2\x80\x90", "\xE2\x80\x91", "\xE2\x80\x93",
                                        "\xC2\xAD",     "\xE2\x88\x92", "\xEF\xBC\x8D"};
    std::string plain(text);
    for (const string_view hyphen : kHyphens) {
        if (plain.size() > hyphen.size() && plain.ends_with(hyphen))
            plain.replace(plain.size() - hyphen.size(), hyphen.size(), "-");
        if (plain.size() > hyphen.size() && plain.starts_with(hyphen))
            plain.replace(0, hyphen.size(), "-");
    }
    return plain;
}

} // namespace torv::songs
