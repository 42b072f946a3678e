#include "torv/icons/icon_note_shape.h"

#include "torv/typed_file/typed_file.h"

namespace torv {

NoteShape::NoteShape(int status, int articulation, int variation) : CIconExpression(status, articulation, variation) {}

int NoteShape::LoadPreset(const char* path) { return LoadExpression(path); }

void NoteShape::TakeAll(CIconExpression& from) noexcept {
    const auto& shape = static_cast<NoteShape&>(from);
    CIconExpression::TakeAll(from);
    m_nDuration = shape.m_nDuration;
    m_nDepth = shape.m_nDepth;
}

int NoteShape::ReadKeys(CxTypedFile* file, const char* section) {
    m_nDuration = ReadShape(file, section, "Duration");
    m_nDepth = ReadShape(file, section, "Depth");
    return 1;
}

int NoteShape::WriteKeys(CxTypedFile* file, const char* section) const {
    return WriteNumber(file, section, "Duration", m_nDuration) && WriteNumber(file, section, "Depth", m_nDepth);
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
    return Change([&](CIconExpression& copy) {
        auto& icon = static_cast<NoteShape&>(copy);
        if (!icon.ReplaceExpression(other))
            return 0;
        if (shape) {
            icon.m_nVariation = shape->m_nVariation;
            icon.m_nDuration = shape->m_nDuration;
            icon.m_nDepth = shape->m_nDepth;
        }
        return 1;
    });
}

} // namespace torv
