#include "torv/icons/icon_note_release.h"

CIconNoteRelease::CIconNoteRelease(int status, int articulation, int variation)
    : NoteShape(status, articulation, variation) {}

CIconNoteRelease::CIconNoteRelease(CIconNoteRelease* other) : CIconNoteRelease(torv::OrEmpty(other)) {}

int CIconNoteRelease::ReplaceParameter(CIconObject* other) {
    return ReplaceShape(other, dynamic_cast<CIconNoteRelease*>(other));
}
