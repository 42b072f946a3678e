#pragma once

#include "torv/icons/icon_note_shape.h"

/// How a note begins: status 1.
class TORV_API CIconNoteAttack : public torv::NoteShape {
public:
    using NoteShape::NoteShape;
    explicit CIconNoteAttack(CIconNoteAttack* other);
    int ReplaceParameter(CIconObject* other) override;
};
