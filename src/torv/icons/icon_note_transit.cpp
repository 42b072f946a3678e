#include "torv/icons/icon_note_transit.h"

#include "torv/typed_file/typed_file.h"

CIconNoteTransit::CIconNoteTransit(int status, int articulation, int variation)
    : CIconExpression(status, articulation, variation) {}

CIconNoteTransit::CIconNoteTransit(CIconNoteTransit* other) : CIconNoteTransit(torv::OrEmpty(other)) {}

int CIconNoteTransit::LoadPreset(const char* path) { return LoadExpression(path); }

void CIconNoteTransit::TakeAll(CIconExpression& from) noexcept {
    CIconExpression::TakeAll(from);
    m_nDuration = static_cast<CIconNoteTransit&>(from).m_nDuration;
}

int CIconNoteTransit::ReadKeys(CxTypedFile* file, const char* section) {
    m_nDuration = ReadShape(file, section, "Duration");
    return 1;
}

int CIconNoteTransit::WriteKeys(CxTypedFile* file, const char* section) const {
    return WriteNumber(file, section, "Duration", m_nDuration);
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
    return Change([other](CIconExpression& copy) {
        auto& icon = static_cast<CIconNoteTransit&>(copy);
        if (!icon.ReplaceExpression(other))
            return 0;
        if (const auto* const transit = dynamic_cast<CIconNoteTransit*>(other)) {
            icon.m_nVariation = transit->m_nVariation;
            icon.m_nDuration = transit->m_nDuration;
        }
        return 1;
    });
}
