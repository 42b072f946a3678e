#include "torv/icons/icon_note_transit.h"

#include "torv/typed_file/typed_file.h"

CIconNoteTransit::CIconNoteTransit(int status, int articulation, int variation)
    : CIconExpression(status, articulation, variation) {}

CIconNoteTransit::CIconNoteTransit(CIconNoteTransit* other) : CIconNoteTransit(torv::OrEmpty(other)) {}

int CIconNoteTransit::LoadPreset(const char* path) {
    CxTypedFile file;
    return LoadPresetFile(file, path) && ReadKeys(&file, kParameterSection);
}

int CIconNoteTransit::ConstructParameter(CxTypedFile* file, const char* section) {
    return CIconObject::ConstructParameter(file, section) && ReadKeys(file, section);
}

int CIconNoteTransit::DescribeParameter(CxTypedFile* file, const char* section) {
    return CIconObject::DescribeParameter(file, section) && WriteKeys(file, section);
}

int CIconNoteTransit::DescribeUserExpression(CxTypedFile* file) {
    return CIconExpression::DescribeUserExpression(file) && WriteKeys(file, kParameterSection);
}

int CIconNoteTransit::ReadKeys(CxTypedFile* file, const char* section) {
    m_nDuration = ReadShape(file, section, "Duration");
    return 1;
}

int CIconNoteTransit::WriteKeys(CxTypedFile* file, const char* section) const {
    WriteNumber(file, section, "Duration", m_nDuration);
    return 1;
}

int CIconNoteTransit::ConstructParameter(const tagNoteIconObject* record) {
    if (!CIconExpression::ConstructParameter(record))
        return 0;
    m_nDuration = record->duration;
    return 1;
}

int CIconNoteTransit::DescribeParameter(tagNoteIconObject* record) const {
    if (!CIconExpression::DescribeParameter(record))
        return 0;
    record->duration = static_cast<BYTE>(m_nDuration);
    record->depth = 0;
    return 1;
}

int CIconNoteTransit::SetDuration(int duration) {
    m_nDuration = duration;
    return 1;
}

int CIconNoteTransit::ReplaceParameter(CIconObject* other) {
    if (!CIconExpression::ReplaceParameter(other))
        return 0;
    if (const auto* const transit = dynamic_cast<CIconNoteTransit*>(other)) {
        m_nVariation = transit->m_nVariation;
        m_nDuration = transit->m_nDuration;
    }
    return 1;
}
