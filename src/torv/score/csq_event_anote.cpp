#include "torv/score/csq_event_anote.h"

CCsqEventAnote::~CCsqEventAnote() = default;

int CCsqEventAnote::Insert(DWORD length, int noteNumber, int dynamics, int after) {
    auto* const record = torv::NewEventRecord<tagCsqEventAnote>(torv::kNoteStatus);
    if (!record)
        return 0;
    record->noteLength = length;
    record->noteNumber = static_cast<WORD>(noteNumber);
    record->noteDynamics = static_cast<WORD>(dynamics);
    return InsertNew(record, after);
}

int CCsqEventAnote::Remove(int deleteObjects) {
    const tagCsqEventAnote* const current = Current();
    const tagCsqEventAnote note = current ? *current : tagCsqEventAnote{};
    if (!RemoveCurrent())
        return 0;
    if (deleteObjects) {
        for (const DWORD icon : {note.noteHeadHandle, note.noteTailHandle, note.vibratoHandle})
            m_pTrack->DetachIconObject(torv::PointerOf(icon), 1);
        m_pTrack->DetachLyricObject(torv::PointerOf(note.lyricHandle), 1);
    }
    return 1;
}

int CCsqEventAnote::SetLyricHandle(void* handle, int deleteOld) {
    return ReplaceLyric(&Note::lyricHandle, handle, deleteOld);
}
int CCsqEventAnote::SetNoteHeadIconHandle(void* handle, int deleteOld) {
    return ReplaceIcon(&Note::noteHeadHandle, handle, deleteOld);
}
int CCsqEventAnote::SetNoteTailIconHandle(void* handle, int deleteOld) {
    return ReplaceIcon(&Note::noteTailHandle, handle, deleteOld);
}
int CCsqEventAnote::SetVibratoIconHandle(void* handle, int deleteOld) {
    return ReplaceIcon(&Note::vibratoHandle, handle, deleteOld);
}
