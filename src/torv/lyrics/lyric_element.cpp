#include "torv/lyrics/lyric_element.h"

#include "torv/lyrics/phonetic_dic.h"
#include "torv/typed_file/typed_file.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr int kPieceBytes = 257;     // a phoneme is read with up to 256 characters, then cut
constexpr int kLongestChain = 65536; // a host's chain that is longer is a circle

tagPhonemeChara MakePhoneme(const char* text) {
    tagPhonemeChara phoneme{};
    torv::CopyText(phoneme.text, sizeof phoneme.text, text);
    return phoneme;
}

} // namespace

namespace torv {

DWORD ShareOf(DWORD length, float share) {
    const double ratio = std::isnan(share) ? 0.0 : std::clamp(static_cast<double>(share), 0.0, 1.0);
    return static_cast<DWORD>(length * ratio);
}

void ReleaseLyricSyllable(tagLyricSyllable* record) {
    if (!record)
        return;
    for (tagPhonemeCharaEx* node = std::exchange(record->firstPhoneme.next, nullptr); node;) {
        tagPhonemeCharaEx* const next = node->next;
        delete node;
        node = next;
    }
}

} // namespace torv

CLyricElement::CLyricElement() = default;
CLyricElement::CLyricElement(CLyricElement* other) : CLyricElement(other ? *other : CLyricElement()) {}
CLyricElement::~CLyricElement() = default;

int CLyricElement::SetDeltaRate(float rate) {
    if (!(rate <= 1.0F))
        return 0;
    m_fDeltaRate = rate;
    return 1;
}

int CLyricElement::SetDeltaRate(DWORD part, DWORD whole) {
    if (whole < part)
        return 0;
    m_fDeltaRate = whole ? static_cast<float>(static_cast<double>(part) / whole) : 0.0F;
    return 1;
}

int CLyricElement::AddPhonemeChara(const char* text) {
    try {
        m_phonemes.push_back(MakePhoneme(text));
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

const char* CLyricElement::GetPhonemeChara(int index) const {
    return Has(index) ? m_phonemes[static_cast<size_t>(index)].text : "";
}

CString CLyricElement::GetPhonemeString() const {
    CString joined;
    for (const tagPhonemeChara& phoneme : m_phonemes) {
        if (&phoneme != &m_phonemes.front())
            joined += ' ';
        joined += phoneme.text;
    }
    return joined;
}

void CLyricElement::SplitPhonemes(const char* phonemes) {
    std::vector<tagPhonemeChara> pieces; // put in place at the end: the text may be one of our own phonemes
    for (const char* rest = phonemes ? phonemes : ""; *rest;) {
        char piece[kPieceBytes];
        rest = CxTypedFile::ExtractString(piece, sizeof piece, rest, ' ');
        if (*piece)
            pieces.push_back(MakePhoneme(piece));
    }
    m_phonemes = std::move(pieces);
}

int CLyricElement::SetPhonemeString(const char* phonemes, int language) {
    try {
        SplitPhonemes(phonemes);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    for (int i = 0; i < GetPhonemeCharaCount(); ++i)
        SetConsonantAdvancement(i, GetDefaultConsonantAdvancement(i, language));
    return 1;
}

int CLyricElement::GetConsonantAdvancement(int index) const {
    return Has(index) ? m_phonemes[static_cast<size_t>(index)].advancement : 0;
}

int CLyricElement::SetConsonantAdvancement(int index, int value) {
    if (!Has(index))
        return 0;
    m_phonemes[static_cast<size_t>(index)].advancement = static_cast<BYTE>(value);
    return 1;
}

int CLyricElement::GetDefaultConsonantAdvancement(int index, int language) const {
    return IsConsonant(index, language) ? torv::kDefaultAdvancement : 0;
}

int CLyricElement::IsConsonant(int index, int language) const {
    if (!Has(index))
        return 0;
    const char* const phoneme = GetPhonemeChara(index);
    if (CxPhoneticDic::IsConsonant(phoneme, nullptr, language))
        return 1;
    // Any other phoneme may be the neighbour, one before it too: in "V m" the m counts.
    for (int other = 0; other < GetPhonemeCharaCount(); ++other)
        if (other != index && CxPhoneticDic::IsConsonant(phoneme, GetPhonemeChara(other), language))
            return 1;
    return 0;
}

int CLyricElement::ConstructParameter(const tagLyricSyllable* record) {
    if (!record)
        return 0;
    try {
        CLyricElement read;
        read.m_strLyric = CString(record->text, static_cast<int>(strnlen(record->text, torv::kMaxSyllableText)));
        read.m_fDeltaRate = record->deltaRate;
        read.m_nEditMark = record->phonemeEditMark;
        int nodes = 0;
        for (const tagPhonemeCharaEx* node = record->firstPhoneme.text[0] ? &record->firstPhoneme : nullptr;
             node && nodes < kLongestChain; node = node->next) {
            read.m_phonemes.push_back(MakePhoneme(node->text));
            read.m_phonemes.back().advancement = node->advancement;
            ++nodes;
        }
        *this = std::move(read);
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CLyricElement::DescribeParameter(tagLyricSyllable* record) const {
    if (!record)
        return 0;
    tagLyricSyllable described;
    std::memset(&described, 0, sizeof described); // gaps that a word size leaves are 0 too
    torv::CopyText(described.text, sizeof described.text, m_strLyric);
    described.deltaRate = m_fDeltaRate;
    described.phonemeEditMark = m_nEditMark;
    tagPhonemeCharaEx* node = &described.firstPhoneme;
    for (const tagPhonemeChara& phoneme : m_phonemes) {
        if (&phoneme != &m_phonemes.front())
            node = node->next = new (std::nothrow) tagPhonemeCharaEx();
        if (!node) {
            torv::ReleaseLyricSyllable(&described);
            return 0;
        }
        std::memcpy(node->text, phoneme.text, sizeof node->text);
        node->advancement = phoneme.advancement;
    }
    std::memcpy(record, &described, sizeof described);
    return 1;
}
