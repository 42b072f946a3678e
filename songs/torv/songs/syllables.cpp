#include "torv/songs/syllables.h"

#include <torv/lyrics/lyric_object.h>
#include <torv/platform/language.h>
#include <torv/platform/text.h>

#include <cctype>
#include <cstring>

namespace torv::songs {

namespace {

unsigned char Byte(const char* text) { return static_cast<unsigned char>(*text); }
bool IsHalfWidthKana(const char* text) { return Byte(text) >= 0xA1 && Byte(text) <= 0xDF; }
/// Small ones, the long mark and the voice marks go with the kana before.
bool IsHalfWidthTail(const char* text) {
    return (Byte(text) >= 0xA7 && Byte(text) <= 0xAE) || Byte(text) == 0xB0 || Byte(text) == 0xDE || Byte(text) == 0xDF;
}

/// Where the syllable ends that a Western text begins with.
const char* WesternEnd(const char* text) {
    const bool isDouble = torv::IsLeadByte932(Byte(text));
    const char* end = text;
    char last;
    do {
        last = *end;
        end = torv::NextChar932(end);
    } while (*end && last != '-' && torv::IsLeadByte932(Byte(end)) == isDouble &&
             torv::NextChar932(end) - text <= torv::kMaxSyllableText);
    return end;
}

/// The library takes half-width kana for halves of double-byte characters.
const char* HalfWidthEnd(const char* text) {
    do
        ++text;
    while (IsHalfWidthTail(text));
    return text;
}

/// Double-byte signs begin with 81, but for marks that repeat or lengthen a kana. Western punctuation in a Western text
/// is the converter's.
bool IsSign(const char* text, int language) {
    if (torv::IsLeadByte932(Byte(text)))
        return Byte(text) == 0x81 && (Byte(text + 1) < 0x52 || Byte(text + 1) > 0x5B);
    if (Byte(text) < 0x80)
        return language == torv::kJapanese && std::ispunct(Byte(text)) && *text != '-';
    return Byte(text) >= 0xA1 && Byte(text) <= 0xA5;
}

bool IsAllSigns(const std::string& syllable, int language) {
    for (const char* text = syllable.c_str(); *text; text = torv::NextChar932(text))
        if (!IsSign(text, language))
            return false;
    return true;
}

const char* SyllableEnd(const char* text, int language) {
    if (language == torv::kEnglish)
        return WesternEnd(text);
    if (IsHalfWidthKana(text))
        return HalfWidthEnd(text);
    CString ignored;
    const char* const end = CLyricObject::SyllabicateLyric(ignored, text, language);
    return end != text ? end : text + std::strlen(text);
}

} // namespace

std::vector<std::string> CutIntoSyllables(const std::string& text, int language) {
    std::vector<std::string> syllables;
    const char* rest = text.c_str();
    do {
        const char* const end = *rest ? SyllableEnd(rest, language) : rest;
        std::string syllable(rest, end);
        syllable.erase(syllable.find_last_not_of(' ') + 1);
        if (!syllable.empty() && !IsAllSigns(syllable, language))
            syllables.push_back(std::move(syllable));
        for (rest = end; *rest == ' ';)
            ++rest;
    } while (*rest);
    if (syllables.empty())
        syllables.emplace_back("-");
    return syllables;
}

} // namespace torv::songs
