#include "torv/lyrics/lyric_object.h"

#include "torv/typed_file/typed_file.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr int kFieldBytes = 257;

CString KeyOf(int index) {
    CString key;
    key.Format("L%d", index);
    return key;
}

} // namespace

namespace torv {

void ReleaseLyricRecord(tagLyricObject* record) {
    if (!record)
        return;
    for (int i = 0; record->syllables && i < record->count; ++i)
        ReleaseLyricSyllable(&record->syllables[i]);
    delete[] record->syllables;
    *record = {};
}

} // namespace torv

CLyricObject::CLyricObject() = default;

CLyricObject::CLyricObject(CLyricObject* other) {
    for (int i = 0; other && i < other->GetElementCount(); ++i)
        AddNewElement(other->GetElementAt(i));
}

CLyricObject::~CLyricObject() = default;

CLyricElement* CLyricObject::AddNewElement() { return AddNewElement(nullptr); }

CLyricElement* CLyricObject::AddNewElement(CLyricElement* model) {
    try {
        return m_elements.emplace_back(std::make_unique<CLyricElement>(model)).get();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int CLyricObject::InsertElementAt(int index, CLyricElement* element) {
    if (!element)
        return 0;
    try {
        const auto place = m_elements.emplace(m_elements.begin() + std::clamp(index, 0, GetElementCount()));
        place->reset(element);
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

CLyricElement* CLyricObject::GetElementAt(int index) const {
    return index >= 0 && index < GetElementCount() ? m_elements[static_cast<size_t>(index)].get() : nullptr;
}

int CLyricObject::RemoveElementAt(int index, int share) {
    const CLyricElement* const element = GetElementAt(index);
    if (!element)
        return 0;
    const float rate = element->GetDeltaRate();
    m_elements.erase(m_elements.begin() + index);
    return share ? ShareDeltaRate(rate) : 1;
}

void CLyricObject::RemoveAll() { m_elements.clear(); }

int CLyricObject::ShareDeltaRate(float rate) {
    const float rest = 1.0F - rate;
    if (rest == 0.0F)
        return 0;
    for (const auto& element : m_elements)
        element->ScaleDeltaRate(rest);
    return 1;
}

int CLyricObject::GetPhonemeEditMark() const {
    return m_elements.empty() ? 0 : m_elements.front()->GetPhonemeEditMark();
}

void CLyricObject::SetPhonemeEditMark(int mark) {
    for (const auto& element : m_elements)
        element->SetPhonemeEditMark(mark);
}

int CLyricObject::VerifyPhonemeEditMark() const {
    return std::all_of(m_elements.begin(), m_elements.end(), [this](const auto& element) {
        return (element->GetPhonemeEditMark() != 0) == (GetPhonemeEditMark() != 0);
    });
}

CString CLyricObject::FormatParameter(const CLyricElement& element) {
    CString value = element.GetLyricString() + "," + element.GetPhonemeString() + "," +
                    torv::FormatReal(element.GetDeltaRate()) + ",";
    for (int i = 0; i < element.GetPhonemeCharaCount(); ++i) {
        CString advancement;
        advancement.Format(i ? ",%d" : "%d", element.GetConsonantAdvancement(i));
        value += advancement;
    }
    return value;
}

void CLyricObject::UnformatParameter(CLyricElement& element, const char* value) {
    char field[kFieldBytes];
    const auto next = [&] {
        value = CxTypedFile::ExtractString(field, sizeof field, value, ',');
        return field;
    };
    element.SetLyricString(next());
    element.SplitPhonemes(next());
    constexpr double kLargest = std::numeric_limits<float>::max(); // a rate beyond a float's range is no cast
    element.m_fDeltaRate = static_cast<float>(std::clamp(torv::ParseReal(next()), -kLargest, kLargest));
    for (int i = 0; i < element.GetPhonemeCharaCount() && *value; ++i)
        element.SetConsonantAdvancement(i, torv::ParseInteger(next()));
}

int CLyricObject::ConstructParameter(CxTypedFile* file, const char* section) {
    if (!file)
        return 0;
    try {
        Elements read;
        for (int i = 0;; ++i) {
            const CString value = file->ReadAt(section, KeyOf(i), nullptr);
            if (value.IsEmpty())
                break;
            UnformatParameter(*read.emplace_back(std::make_unique<CLyricElement>()), value);
        }
        m_elements.insert(m_elements.end(), std::make_move_iterator(read.begin()), std::make_move_iterator(read.end()));
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CLyricObject::DescribeParameter(CxTypedFile* file, const char* section) const {
    if (!file)
        return 0;
    try {
        for (int i = 0; i < GetElementCount(); ++i)
            if (!file->WriteAt(section, KeyOf(i), FormatParameter(*GetElementAt(i))))
                return 0;
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CLyricObject::ConstructParameter(const tagLyricObject* record) {
    if (!record) {
        RemoveAll();
        return 0;
    }
    try {
        Elements read;
        for (int i = 0; record->syllables && i < record->count; ++i)
            if (!read.emplace_back(std::make_unique<CLyricElement>())->ConstructParameter(&record->syllables[i]))
                return 0;
        m_elements = std::move(read);
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CLyricObject::DescribeParameter(tagLyricObject* record) const {
    if (!record)
        return 0;
    tagLyricObject described = {};
    if (!m_elements.empty()) {
        described.syllables = new (std::nothrow) tagLyricSyllable[m_elements.size()];
        if (!described.syllables)
            return 0;
    }
    for (const auto& element : m_elements) {
        if (!element->DescribeParameter(&described.syllables[described.count])) {
            torv::ReleaseLyricRecord(&described);
            return 0;
        }
        ++described.count;
    }
    *record = described;
    return 1;
}

const char* CLyricObject::GetDefaultLyric(int language) {
    return language == torv::kEnglish ? "Ooh" : "\x82\xA0"; // hiragana a
}

const char* CLyricObject::GetDefaultPhoneme(int language) { return language == torv::kEnglish ? "u:" : "a"; }

int CLyricObject::LyricToPhoneme(CString& phoneme, const char*, int language) {
    phoneme = GetDefaultPhoneme(language);
    return 1;
}
