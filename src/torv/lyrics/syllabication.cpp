// How a lyric's text is cut into syllables. Any byte of 0x80 and more counts as the lead byte of a double-byte
// character here, half-width kana included: editors cut lyrics so.
#include "torv/lyrics/lyric_object.h"

#include <iterator>
#include <new>

namespace {

constexpr unsigned char kFirstDoubleByte = 0x80;

/// Small kana and their full size, hiragana then katakana: a, i, u, e, o, ya, yu, yo. The small tsu is no part of it.
constexpr unsigned short kSmallKana[][2] = {{0x829F, 0x82A0}, {0x82A1, 0x82A2}, {0x82A3, 0x82A4}, {0x82A5, 0x82A6},
                                            {0x82A7, 0x82A8}, {0x82E1, 0x82E2}, {0x82E3, 0x82E4}, {0x82E5, 0x82E6},
                                            {0x8340, 0x8341}, {0x8342, 0x8343}, {0x8344, 0x8345}, {0x8346, 0x8347},
                                            {0x8348, 0x8349}, {0x8383, 0x8384}, {0x8385, 0x8386}, {0x8387, 0x8388}};
static_assert(std::size(kSmallKana) == 16);

bool IsSingleByte(char c) { return static_cast<unsigned char>(c) < kFirstDoubleByte; }

/// The double-byte character at `text`; 0 for a single byte, the end, or a lead byte that the text ends with.
unsigned int DoubleByteAt(const char* text) {
    if (IsSingleByte(text[0]) || !text[1])
        return 0;
    return static_cast<unsigned int>(static_cast<unsigned char>(text[0]) << 8 | static_cast<unsigned char>(text[1]));
}

/// The full size of a small kana; 0 for any other character.
unsigned int FullSize(unsigned int character) {
    for (const auto& pair : kSmallKana)
        if (pair[0] == character)
            return pair[1];
    return 0;
}

/// A syllable, and how many bytes of the lyric it was.
struct Cut {
    char text[torv::kMaxSyllableText];
    int length;
    int taken;
};

/// Bytes of one sort, at most a syllable's worth, as far as one that `last` names, which is part of it.
Cut CutRun(const char* lyric, bool singleBytes, char last) {
    Cut cut = {};
    while (lyric[cut.taken] && IsSingleByte(lyric[cut.taken]) == singleBytes && cut.taken < torv::kMaxSyllableText) {
        const char c = lyric[cut.taken++];
        cut.text[cut.length++] = c;
        if (c == last)
            break;
    }
    return cut;
}

Cut CutJapanese(const char* lyric) {
    if (IsSingleByte(*lyric))
        return CutRun(lyric, true, ' ');
    const unsigned int first = DoubleByteAt(lyric);
    if (first == 0)
        return {{lyric[0]}, 1, 1}; // a lone lead byte
    if (const unsigned int full = FullSize(first))
        return {{static_cast<char>(full >> 8), static_cast<char>(full & 0xFF)}, 2, 2};
    if (FullSize(DoubleByteAt(lyric + 2)))
        return {{lyric[0], lyric[1], lyric[2], lyric[3]}, 4, 4};
    return {{lyric[0], lyric[1]}, 2, 2};
}

Cut CutEnglish(const char* lyric) {
    const bool singleBytes = IsSingleByte(*lyric);
    return CutRun(lyric, singleBytes, singleBytes ? '-' : '\0');
}

const char* Append(CString& syllable, const char* lyric, Cut (*cutOff)(const char*)) {
    if (!lyric || !*lyric)
        return lyric;
    const Cut cut = cutOff(lyric);
    try {
        syllable += CString(cut.text, cut.length);
        return lyric + cut.taken;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace

const char* CLyricObject::SyllabicateLyric(CString& syllable, const char* lyric, int language) {
    syllable.Empty();
    return language == torv::kJapanese  ? SyllabicateLyricJpn(syllable, lyric)
           : language == torv::kEnglish ? SyllabicateLyricEng(syllable, lyric)
                                        : lyric;
}

const char* CLyricObject::SyllabicateLyricJpn(CString& syllable, const char* lyric) {
    return Append(syllable, lyric, CutJapanese);
}

const char* CLyricObject::SyllabicateLyricEng(CString& syllable, const char* lyric) {
    return Append(syllable, lyric, CutEnglish);
}

int CLyricObject::IsVowel(const char* text) {
    const unsigned int character = text && *text ? DoubleByteAt(text) : 0;
    return IsHiraVowel(character) || IsKanaVowel(character);
}

int CLyricObject::IsHiraVowel(unsigned int character) {
    switch (character) {
    case 0x82A0: // a
    case 0x82A2: // i
    case 0x82A4: // u
    case 0x82A6: // e
    case 0x82A8: // o
    case 0x82F1: // n
    case 0x815B: // the long mark
        return 1;
    default:
        return 0;
    }
}

int CLyricObject::IsKanaVowel(unsigned int character) {
    switch (character) {
    case 0x8341: // a
    case 0x8343: // i
    case 0x8345: // u
    case 0x8347: // e
    case 0x8349: // o
    case 0x8393: // n
        return 1;
    default:
        return 0;
    }
}
