#pragma once

#include "torv/icons/icon_note_shape.h"

/// How a note ends: status 2.
class TORV_API CIconNoteRelease : public torv::NoteShape {
public:
    /// As newly made: duration and depth 64.
    CIconNoteRelease(int status, int articulation, int variation);
    /// Copies id and all; null as an icon of id 0.
    explicit CIconNoteRelease(CIconNoteRelease* other);
    int ReplaceParameter(CIconObject* other) override;
};
