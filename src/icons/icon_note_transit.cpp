#include "torv/icons/icon_note_transit.h"

#include "torv/database/typed_file.h"

CIconNoteTransit::CIconNoteTransit(CIconNoteTransit* other) : CIconNoteTransit(*other) {}

int CIconNoteTransit::LoadPreset(const char* path) { return LoadPresetFile(path); }

int CIconNoteTransit::DescribeUserExpression(CxTypedFile* file) {
    return CIconExpression::DescribeUserExpression(file) && WriteParameterSection(file, "Parameter");
}

int CIconNoteTransit::ReadParameterSection(CxTypedFile* file, const char* section) {
    CIconObject::ReadParameterSection(file, section);
    m_nDuration = ReadShape(file, section, "Duration");
    return 1;
}

int CIconNoteTransit::WriteParameterSection(CxTypedFile* file, const char* section) const {
    CIconObject::WriteParameterSection(file, section);
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
