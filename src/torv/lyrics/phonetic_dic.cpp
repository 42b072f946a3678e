#include "torv/lyrics/phonetic_dic.h"

#include "torv/platform/language.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

using Cell = char[16];

constexpr Cell kJapaneseSymbols[] = {"a",  "i",  "M",  "e",  "o",                // vowels
                                     "n",  "J",  "m",  "N",  "m'", "N'",  "N\\", // syllabic nasals and nasals
                                     "g",  "g'", "d",  "d'", "b",  "b'",  "z",    "Z",  "h\\", "dz",
                                     "dZ", "4",  "4'", "j",  "w",  "k",   "k'",   "t",  "t'",  "p",
                                     "p'", "s",  "S",  "h",  "C",  "p\\", "p\\'", "ts", "tS", // other consonants
                                     "*in"};
constexpr size_t kFirstNasal = 5;
constexpr size_t kFirstConsonant = 12;
constexpr size_t kFirstSymbol = 41;
static_assert(std::size(kJapaneseSymbols) == 42);

constexpr Cell kEnglishSymbols[] = {"@",  "V",  "e",  "I",  "i:", "{",  "O:", "Q",  "U",  "u:", "@r",
                                    "eI", "aI", "OI", "@U", "aU", "I@", "e@", "U@", "O@", "Q@", // vowels and diphthongs
                                    "p",  "t",  "k",  "tS", "f",  "T",  "s",  "S",  "h",  "ph", "th",
                                    "kh", "w",  "j",  "b",  "d",  "dZ", "v",  "D",  "z",  "Z",  "m",
                                    "n",  "N",  "r",  "l",  "g",  "bh", "dh", "gh", "l0", "hv", "Asp"};
constexpr size_t kEnglishVowels = 21;
static_assert(std::size(kEnglishSymbols) == 54);

constexpr Cell kEnglishBeforeVowel[] = {"m", "n", "N", "l0"};
constexpr Cell kSymbols[] = {"*in", "@", "V", "e", "I"};

/// Whether the text is one of the cells [first, last).
int IsIn(const Cell* first, const Cell* last, const char* text) {
    return text && std::any_of(first, last, [text](const Cell& cell) { return std::strcmp(cell, text) == 0; });
}

} // namespace

CxPhoneticDic::~CxPhoneticDic() = default;

int CxPhoneticDic::GetDicSize(int language) {
    return static_cast<int>(language == torv::kJapanese ? std::size(kJapaneseSymbols) : std::size(kEnglishSymbols));
}

const char* CxPhoneticDic::GetSAMPAString(unsigned int index, int language) {
    if (language == torv::kJapanese && index < std::size(kJapaneseSymbols))
        return kJapaneseSymbols[index];
    if (language == torv::kEnglish && index < std::size(kEnglishSymbols))
        return kEnglishSymbols[index];
    return nullptr;
}

int CxPhoneticDic::IsConsonant(const char* phoneme, const char* next, int language) {
    return language == torv::kJapanese  ? IsConsonantJpn(phoneme)
           : language == torv::kEnglish ? IsConsonantEng(phoneme, next)
                                        : 0;
}

int CxPhoneticDic::Verify(const char* phoneme, int language) { return IsConsonant(phoneme, nullptr, language); }

int CxPhoneticDic::IsVowelJpn(const char* phoneme) {
    return IsIn(kJapaneseSymbols, kJapaneseSymbols + kFirstNasal, phoneme);
}

int CxPhoneticDic::IsSyllabicNasalJpn(const char* phoneme) {
    return IsIn(kJapaneseSymbols + kFirstNasal, kJapaneseSymbols + kFirstConsonant, phoneme);
}

int CxPhoneticDic::IsConsonantJpn(const char* phoneme) {
    return IsIn(kJapaneseSymbols + kFirstNasal, kJapaneseSymbols + kFirstSymbol, phoneme);
}

int CxPhoneticDic::IsSymbolJpn(const char* phoneme) { return IsIn(std::begin(kSymbols), std::end(kSymbols), phoneme); }

const char* CxPhoneticDic::ExtractConsonantJpn(CString& consonant, const char* syllable) {
    const char* vowel = syllable;
    while (vowel && *vowel && !IsVowelJpn(vowel))
        ++vowel;
    if (!vowel || !*vowel)
        return nullptr;
    Cell head = {}; // a text that fills it is longer than any consonant
    torv::CopyText(head, std::min(sizeof head, static_cast<size_t>(vowel - syllable) + 1), syllable);
    const bool isConsonant = IsConsonantJpn(head);
    consonant = isConsonant ? head : "";
    return isConsonant ? vowel : nullptr;
}

int CxPhoneticDic::IsConsonantEng(const char* phoneme, const char* next) {
    if (!phoneme || IsNoEditCACharaEng(phoneme))
        return 0;
    return !IsNoEditCACharaWoVowelEng(phoneme) || IsNoEditCACharaEng(next);
}

int CxPhoneticDic::IsNoEditCACharaEng(const char* phoneme) {
    return IsIn(kEnglishSymbols, kEnglishSymbols + kEnglishVowels, phoneme) ||
           (phoneme && std::strcmp(phoneme, "Asp") == 0);
}

int CxPhoneticDic::IsNoEditCACharaWoVowelEng(const char* phoneme) {
    return IsIn(std::begin(kEnglishBeforeVowel), std::end(kEnglishBeforeVowel), phoneme);
}
