#include "torv/icons/icon_singer.h"

#include "torv/typed_file/typed_file.h"

namespace {

constexpr const char* kUnknownSinger = "?????";

/// A missing or empty value leaves the code as it is.
void ReadCode(CxTypedFile* file, const char* section, const char* key, BYTE& code) {
    const CString value = file->ReadAt(section, key, nullptr);
    if (!value.IsEmpty())
        code = static_cast<BYTE>(torv::ParseInteger(value));
}

} // namespace

namespace torv {

void ReleaseIconRecord(tagSingerIconObject* record) {
    if (record)
        ReleaseIconRecord(&record->header);
}

} // namespace torv

CIconSinger::CIconSinger() : CIconSinger(torv::kStatusSinger, torv::kSingerArticulation, 0) {}

CIconSinger::CIconSinger(int status, int articulation, int variation) : CIconObject(status, articulation, variation) {
    m_dwLength = 1;
}

CIconSinger::CIconSinger(const CIconSinger& other)
    : CIconObject(other), m_nLanguage(other.m_nLanguage), m_nProgram(other.m_nProgram) {
    m_dwLength = 1;
}

CIconSinger::CIconSinger(CIconSinger* other) : CIconSinger(torv::OrEmpty(other)) {}

CString CIconSinger::GetSingerName() {
    CString name;
    tagVoiceChangeParam parameters{};
    const torv::VoiceCatalogue* const voices = torv::GetVoiceCatalogue();
    if (!voices || !voices->FindVoice(m_nLanguage, m_nProgram, name, parameters))
        return kUnknownSinger;
    m_strID = name;
    return name;
}

int CIconSinger::GetVoiceChangeParam(tagVoiceChangeParam* parameters) const {
    return torv::OrZero([&] {
        CString name;
        tagVoiceChangeParam found{};
        const torv::VoiceCatalogue* const voices = torv::GetVoiceCatalogue();
        if (!parameters || !voices || !voices->FindVoice(m_nLanguage, m_nProgram, name, found))
            return 0;
        *parameters = found;
        return 1;
    });
}

int CIconSinger::ReplaceParameter(CIconObject* other) {
    if (!CIconObject::ReplaceParameter(other))
        return 0;
    if (const auto* const singer = dynamic_cast<CIconSinger*>(other)) {
        m_nArticulation = singer->m_nArticulation;
        m_nVariation = singer->m_nVariation;
        m_nLanguage = singer->m_nLanguage;
        m_nProgram = singer->m_nProgram;
    }
    return 1;
}

// The codes are no preset parameters, so they are read here and not with the parameter section.
int CIconSinger::ConstructParameter(CxTypedFile* file, const char* section) {
    return torv::OrZero([&] {
        BYTE language = m_nLanguage;
        BYTE program = m_nProgram;
        if (file) {
            ReadCode(file, section, "Language", language);
            ReadCode(file, section, "Program", program);
        }
        if (!CIconObject::ConstructParameter(file, section))
            return 0;
        m_nLanguage = language;
        m_nProgram = program;
        return 1;
    });
}

int CIconSinger::DescribeParameter(CxTypedFile* file, const char* section) {
    return torv::OrZero([&] {
        return WriteSection(file, section) && WriteNumber(file, section, "Language", m_nLanguage) &&
               WriteNumber(file, section, "Program", m_nProgram);
    });
}

int CIconSinger::ConstructParameter(const tagSingerIconObject* record) {
    if (!record || !CIconObject::ConstructParameter(&record->header))
        return 0;
    m_nLanguage = static_cast<BYTE>(record->languageCode);
    m_nProgram = static_cast<BYTE>(record->programCode);
    return 1;
}

int CIconSinger::DescribeParameter(tagSingerIconObject* record) const {
    if (!record || !CIconObject::DescribeParameter(&record->header))
        return 0;
    record->languageCode = m_nLanguage;
    record->programCode = m_nProgram;
    return 1;
}
