#include "torv/icons/icon_note_attack.h"

CIconNoteAttack::CIconNoteAttack(int status, int articulation, int variation)
    : NoteShape(status, articulation, variation) {}

CIconNoteAttack::CIconNoteAttack(CIconNoteAttack* other) : CIconNoteAttack(torv::OrEmpty(other)) {}

int CIconNoteAttack::ReplaceParameter(CIconObject* other) {
    return ReplaceShape(other, dynamic_cast<CIconNoteAttack*>(other));
}
