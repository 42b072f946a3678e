#include "torv/icons/icon_note_release.h"

CIconNoteRelease::CIconNoteRelease(CIconNoteRelease* other) : NoteShape(*other) {}

int CIconNoteRelease::ReplaceParameter(CIconObject* other) {
    return ReplaceShape(other, dynamic_cast<CIconNoteRelease*>(other));
}
