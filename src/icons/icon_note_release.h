#pragma once

#include "torv/icons/icon_note_shape.h"

/// How a note ends: status 2.
class TORV_API CIconNoteRelease : public torv::NoteShape {
public:
    using NoteShape::NoteShape;
    explicit CIconNoteRelease(CIconNoteRelease* other);
    int ReplaceParameter(CIconObject* other) override;
};
