#pragma once

#include "torv/icons/icon_note_shape.h"

/// How a note ends: status 2.
class TORV_API CIconNoteRelease : public torv::NoteShape {
public:
    CIconNoteRelease(int status, int articulation, int variation);
    explicit CIconNoteRelease(CIconNoteRelease* other);
    int ReplaceParameter(CIconObject* other) override;
};
