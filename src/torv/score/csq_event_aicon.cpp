#include "torv/score/csq_event_aicon.h"

CCsqEventAicon::~CCsqEventAicon() = default;

int CCsqEventAicon::Insert(void* handle, DWORD length, int after) {
    CStreamBuffer* const stream = Stream();
    auto* const record = stream ? torv::NewEventRecord<tagCsqEventAicon>() : nullptr;
    if (!record)
        return 0;
    record->iconHandle = torv::HandleOf(handle);
    tagEventEntry entry{0, torv::EventIdOf(record)};
    if (!stream->InsertEntry(&entry, after)) {
        torv::FreeEventRecord(entry.eventId);
        return 0;
    }
    SetIconLengthOf(record->iconHandle, length);
    m_pTrack->SetModify(1);
    return 1;
}

int CCsqEventAicon::Remove(int deleteObject) { return RemoveWithIcon(deleteObject); }

int CCsqEventAicon::SetIconHandle(void* handle, int deleteOld) {
    return ReplaceIcon(&tagCsqEventAicon::iconHandle, handle, deleteOld);
}
