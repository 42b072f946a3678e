#pragma once

#include "torv/platform/platform.h"

#include <cstddef>
#include <vector>

namespace torv {

/// The advancement that consonants get at first.
inline constexpr int kDefaultAdvancement = 64;
inline constexpr int kMaxPhonemeText = 16;  ///< characters of a phoneme's symbol
inline constexpr int kMaxSyllableText = 32; ///< bytes of a syllable in a host's record

/// The part of `length` that a share gives, cut to whole ticks; a share outside 0..1 or not finite counts as the
/// nearest of the two.
TORV_API DWORD ShareOf(DWORD length, float share);

} // namespace torv

/// One phoneme.
struct tagPhonemeChara {
    char text[torv::kMaxPhonemeText + 1]; ///< NUL-terminated
    BYTE advancement;                     ///< ticks by which a consonant is sung ahead of its note
};
static_assert(sizeof(tagPhonemeChara) == 18 && offsetof(tagPhonemeChara, advancement) == 17);

/// Host record of one phoneme: a node of a chain.
struct tagPhonemeCharaEx {
    BYTE zero[2];                         ///< not looked at, 0 when described
    char text[torv::kMaxPhonemeText + 1]; ///< NUL-terminated
    BYTE advancement;                     ///< as tagPhonemeChara has it
    tagPhonemeCharaEx* next;              ///< null for the last
};
static_assert(offsetof(tagPhonemeCharaEx, text) == 2 && offsetof(tagPhonemeCharaEx, advancement) == 19);
static_assert(sizeof(void*) != 4 || (sizeof(tagPhonemeCharaEx) == 24 && offsetof(tagPhonemeCharaEx, next) == 20));
static_assert(sizeof(void*) != 8 || sizeof(tagPhonemeCharaEx) == 32);

/// Host record of one syllable. A first node without text means that there are no phonemes.
struct tagLyricSyllable {
    BYTE zero1[2];                         ///< not looked at, 0 when described
    char text[torv::kMaxSyllableText + 1]; ///< NUL-terminated, code page 932
    BYTE zero2;                            ///< not looked at, 0 when described
    float deltaRate;                       ///< the syllable's share of the note, 0 to 1
    int phonemeEditMark;                   ///< non-zero: edited by hand
    tagPhonemeCharaEx firstPhoneme;        ///< the chain's head, a part of the record
};
static_assert(offsetof(tagLyricSyllable, text) == 2 && offsetof(tagLyricSyllable, deltaRate) == 36 &&
              offsetof(tagLyricSyllable, phonemeEditMark) == 40);
static_assert(sizeof(void*) != 4 || (sizeof(tagLyricSyllable) == 68 && offsetof(tagLyricSyllable, firstPhoneme) == 44));
static_assert(sizeof(void*) != 8 || sizeof(tagLyricSyllable) == 80);

/// One syllable of a lyric: its text, its share of the note, its phonemes. Indexes out of range read as empty or 0 and
/// write nothing. Null texts are empty. Where memory is refused, what has a result answers 0 and leaves the element as
/// it was; constructors, SetLyricString and the texts that are returned throw std::bad_alloc.
class TORV_API CLyricElement : public CObject {
public:
    /// Without text and phonemes, share 0.
    CLyricElement();
    /// Copies everything; null gives an empty syllable.
    explicit CLyricElement(CLyricElement* other);
    CLyricElement(const CLyricElement&) = default;
    CLyricElement& operator=(const CLyricElement&) = default;
    CLyricElement(CLyricElement&&) noexcept = default;
    CLyricElement& operator=(CLyricElement&&) noexcept = default;
    ~CLyricElement() override;

    /// The syllable's text in code page 932, and its bytes.
    /// @{
    void SetLyricString(const char* text) { m_strLyric = text; }
    CString GetLyricString() const { return m_strLyric; }
    int GetLyricStringLength() const { return m_strLyric.GetLength(); }
    /// @}

    /// 0, and the old rate stays, for a rate above 1 or none at all.
    int SetDeltaRate(float rate);
    /// part / whole; 0 for a part above the whole. 0 of 0 is 0.
    int SetDeltaRate(DWORD part, DWORD whole);
    /// 0 to 1.
    float GetDeltaRate() const { return m_fDeltaRate; }

    /// Appends a phoneme, cut to 16 characters, without an advancement.
    int AddPhonemeChara(const char* text);
    /// The symbol, valid until the phonemes change, and how many there are.
    /// @{
    const char* GetPhonemeChara(int index) const;
    int GetPhonemeCharaCount() const { return static_cast<int>(m_phonemes.size()); }
    /// @}
    /// All phonemes, with single blanks between them.
    CString GetPhonemeString() const;
    /// Replaces the phonemes by the string's, which blanks part; consonants get the default advancement.
    int SetPhonemeString(const char* phonemes, int language);
    /// Ticks at 120 beats a minute (500/480 ms) by which a consonant is sung ahead of its vowel; 0 to 255.
    int GetConsonantAdvancement(int index) const;
    int SetConsonantAdvancement(int index, int value); ///< kept as a byte
    /// 64 for a consonant, 0 for any other phoneme.
    int GetDefaultConsonantAdvancement(int index, int language) const;
    /// Whether the phoneme is a consonant by itself, or beside any other phoneme of the syllable.
    int IsConsonant(int index, int language) const;

    /// Non-zero when a user edited the phonemes by hand.
    int GetPhonemeEditMark() const { return m_nEditMark; }
    /// See GetPhonemeEditMark.
    void SetPhonemeEditMark(int mark) { m_nEditMark = mark; }

    /// From a host's record; 0 for null.
    int ConstructParameter(const tagLyricSyllable* record);
    /// Allocates the nodes after the first with new; free them with torv::ReleaseLyricSyllable.
    int DescribeParameter(tagLyricSyllable* record) const;

private:
    friend class CLyricObject;
    void SplitPhonemes(const char* phonemes);
    void ScaleDeltaRate(float divisor) { m_fDeltaRate /= divisor; }
    bool Has(int index) const { return index >= 0 && static_cast<size_t>(index) < m_phonemes.size(); }

    CString m_strLyric;
    float m_fDeltaRate = 0;
    std::vector<tagPhonemeChara> m_phonemes;
    int m_nEditMark = 0;
};

namespace torv {

/// Frees the chain of a syllable's phonemes but for the first, which is part of the record.
TORV_API void ReleaseLyricSyllable(tagLyricSyllable* record);

} // namespace torv
