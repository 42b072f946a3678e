#include "torv/icons/icon_note_shape.h"

#include "torv/typed_file/typed_file.h"

namespace torv {

NoteShape::NoteShape(int status, int articulation, int variation) : CIconExpression(status, articulation, variation) {}

int NoteShape::LoadPreset(const char* path) {
    CxTypedFile file;
    return LoadPresetFile(file, path) && ReadKeys(&file, kParameterSection);
}

int NoteShape::ConstructParameter(CxTypedFile* file, const char* section) {
    return CIconObject::ConstructParameter(file, section) && ReadKeys(file, section);
}

int NoteShape::DescribeParameter(CxTypedFile* file, const char* section) {
    return CIconObject::DescribeParameter(file, section) && WriteKeys(file, section);
}

int NoteShape::DescribeUserExpression(CxTypedFile* file) {
    return CIconExpression::DescribeUserExpression(file) && WriteKeys(file, kParameterSection);
}

int NoteShape::ReadKeys(CxTypedFile* file, const char* section) {
    m_nDuration = ReadShape(file, section, "Duration");
    m_nDepth = ReadShape(file, section, "Depth");
    return 1;
}

int NoteShape::WriteKeys(CxTypedFile* file, const char* section) const {
    WriteNumber(file, section, "Duration", m_nDuration);
    WriteNumber(file, section, "Depth", m_nDepth);
    return 1;
}

int NoteShape::ConstructParameter(const tagNoteIconObject* record) {
    if (!CIconExpression::ConstructParameter(record))
        return 0;
    m_nDuration = record->duration;
    m_nDepth = record->depth;
    return 1;
}

int NoteShape::DescribeParameter(tagNoteIconObject* record) const {
    if (!CIconExpression::DescribeParameter(record))
        return 0;
    record->duration = static_cast<BYTE>(m_nDuration);
    record->depth = static_cast<BYTE>(m_nDepth);
    return 1;
}

int NoteShape::SetDuration(int duration) {
    m_nDuration = duration;
    return 1;
}

int NoteShape::SetDepth(int depth) {
    m_nDepth = depth;
    return 1;
}

int NoteShape::ReplaceShape(CIconObject* other, NoteShape* shape) {
    if (!CIconExpression::ReplaceParameter(other))
        return 0;
    if (shape) {
        m_nVariation = shape->m_nVariation;
        m_nDuration = shape->m_nDuration;
        m_nDepth = shape->m_nDepth;
    }
    return 1;
}

} // namespace torv
