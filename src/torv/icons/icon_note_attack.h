#pragma once

#include "torv/icons/icon_note_shape.h"

/// How a note begins: status 1.
class TORV_API CIconNoteAttack : public torv::NoteShape {
public:
    /// As newly made: duration and depth 64.
    CIconNoteAttack(int status, int articulation, int variation);
    /// Copies id and all; null as an icon of id 0.
    explicit CIconNoteAttack(CIconNoteAttack* other);
    int ReplaceParameter(CIconObject* other) override;
};
