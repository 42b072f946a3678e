#include "torv/icons/icon_note_attack.h"

CIconNoteAttack::CIconNoteAttack(CIconNoteAttack* other) : NoteShape(*other) {}

int CIconNoteAttack::ReplaceParameter(CIconObject* other) {
    return ReplaceShape(other, dynamic_cast<CIconNoteAttack*>(other));
}
