#pragma once

#include "torv/platform/platform.h"

/// The phoneme symbols that the engine accepts, in SAMPA notation, for language 0 (Japanese) and 1 (English). Symbols
/// are compared exactly; for a null phoneme every answer is 0. Results are 1 and 0. An object has no state.
class TORV_API CxPhoneticDic {
public:
    CxPhoneticDic() = default;
    virtual ~CxPhoneticDic();

    /// 42 for Japanese, 54 for every other language.
    static int GetDicSize(int language);
    /// The symbol at an index; null out of range and for any language but these two.
    static const char* GetSAMPAString(unsigned int index, int language);

    /// `next` is the phoneme beside it, or null: some English sounds are consonants only beside a vowel.
    static int IsConsonant(const char* phoneme, const char* next, int language);
    /// IsConsonant without a neighbour.
    static int Verify(const char* phoneme, int language);

    /// For Japanese alone: a i M e o; what ん can be.
    /// @{
    static int IsVowelJpn(const char* phoneme);
    static int IsSyllabicNasalJpn(const char* phoneme);
    /// @}
    static int IsConsonantJpn(const char* phoneme); ///< nasals included
    /// "*in", and four English vowels: hosts mark those as symbols too.
    static int IsSymbolJpn(const char* phoneme);
    /// Splits a syllable into its consonant and the vowel after it, which is returned. Null when there is no vowel at
    /// its end (`consonant` stays as it was) or what stands before is no Japanese consonant (`consonant` is emptied).
    static const char* ExtractConsonantJpn(CString& consonant, const char* syllable);

    /// Any text that is no vowel counts, symbol or not; "m", "n", "N" and "l0" only beside a vowel or "Asp".
    static int IsConsonantEng(const char* phoneme, const char* next);
    /// Vowels, diphthongs and "Asp": their advancement is never edited.
    static int IsNoEditCACharaEng(const char* phoneme);
    /// "m", "n", "N" and "l0", which are consonants only before a vowel.
    static int IsNoEditCACharaWoVowelEng(const char* phoneme);
};
