#include "torv/score/csq_event_anote.h"

#include "torv/icons/icon_id.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

CCsqEventAnote::~CCsqEventAnote() = default;

int CCsqEventAnote::GetNext() { return GetNextOf(torv::kEventAnote); }
int CCsqEventAnote::GetPrev() { return GetPrevOf(torv::kEventAnote); }
int CCsqEventAnote::Insert(DWORD id, int after) { return InsertRecord(id, sizeof(tagCsqEventAnote), after); }
int CCsqEventAnote::Write() { return WriteRecord(torv::kEventAnote, sizeof(tagCsqEventAnote)); }

int CCsqEventAnote::Insert(DWORD length, int noteNumber, int dynamics, int after) {
    auto* const record = static_cast<tagCsqEventAnote*>(torv::AllocateEventRecord(sizeof(tagCsqEventAnote)));
    if (!record)
        return 0;
    record->header = {torv::kEventAnote, torv::kNoteStatus, sizeof(tagCsqEventAnote) - sizeof(tagEventHeader)};
    record->noteLength = length;
    record->noteNumber = static_cast<WORD>(noteNumber);
    record->noteDynamics = static_cast<WORD>(dynamics);
    return InsertNew(record, after);
}

int CCsqEventAnote::Remove(int deleteObjects) {
    if (!IsValidEvent(torv::kEventAnote, 0))
        return 0;
    const tagCsqEventAnote note = m_record.note;
    if (!RemoveRecord())
        return 0;
    if (deleteObjects) {
        DeleteIcon(note.noteHeadHandle);
        DeleteIcon(note.noteTailHandle);
        DeleteIcon(note.vibratoHandle);
        if (note.lyricHandle)
            m_pTrack->DetachLyricObject(Handle(note.lyricHandle), 1);
    }
    return 1;
}

int CCsqEventAnote::IsValidIcon(int status) { return status >= torv::kStatusAttack && status <= torv::kStatusVibrato; }
int CCsqEventAnote::IsValidIcon(void* handle) const { return IsValidIcon(IconStatusOf(handle)); }

int CCsqEventAnote::SetNoteNumber(int number) {
    m_record.note.noteNumber = static_cast<WORD>(number);
    return 1;
}
int CCsqEventAnote::SetNoteDynamics(int dynamics) {
    m_record.note.noteDynamics = static_cast<WORD>(dynamics);
    return 1;
}
int CCsqEventAnote::SetNoteLength(DWORD length) {
    m_record.note.noteLength = length;
    return 1;
}
int CCsqEventAnote::SetNoteAttribute(UINT attribute) {
    m_record.note.noteAttribute = attribute & 0xFFFF;
    return 1;
}
int CCsqEventAnote::SetVibratoOffset(int ticks) {
    m_record.note.vibratoOffset = ticks;
    return 1;
}

int CCsqEventAnote::SetLyricHandle(void* handle, int deleteOld) {
    const DWORD replaced = static_cast<WORD>(reinterpret_cast<uintptr_t>(handle));
    DWORD& field = m_record.note.lyricHandle;
    if (deleteOld && m_pTrack && field && field != replaced)
        m_pTrack->DetachLyricObject(Handle(field), 1);
    field = replaced;
    return 1;
}
int CCsqEventAnote::SetNoteHeadIconHandle(void* handle, int deleteOld) {
    ReplaceIconHandle(m_record.note.noteHeadHandle, handle, deleteOld);
    return 1;
}
int CCsqEventAnote::SetNoteTailIconHandle(void* handle, int deleteOld) {
    ReplaceIconHandle(m_record.note.noteTailHandle, handle, deleteOld);
    return 1;
}
int CCsqEventAnote::SetVibratoIconHandle(void* handle, int deleteOld) {
    ReplaceIconHandle(m_record.note.vibratoHandle, handle, deleteOld);
    return 1;
}
