#pragma once

#include "torv/icons/icon_note_shape.h"

/// How a note begins: status 1.
class TORV_API CIconNoteAttack : public torv::NoteShape {
public:
    CIconNoteAttack(int status, int articulation, int variation);
    explicit CIconNoteAttack(CIconNoteAttack* other);
    int ReplaceParameter(CIconObject* other) override;
};
