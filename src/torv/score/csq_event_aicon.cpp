#include "torv/score/csq_event_aicon.h"

#include "torv/icons/icon_id.h"
#include "torv/score/sequence_object.h"
#include "torv/stream/event_pool.h"

CCsqEventAicon::~CCsqEventAicon() = default;

int CCsqEventAicon::GetNext() { return GetNextOf(torv::kEventAicon); }
int CCsqEventAicon::GetPrev() { return GetPrevOf(torv::kEventAicon); }
int CCsqEventAicon::Insert(DWORD id, int after) { return InsertRecord(id, sizeof(tagCsqEventAicon), after); }
int CCsqEventAicon::Write() { return WriteRecord(torv::kEventAicon, sizeof(tagCsqEventAicon)); }

int CCsqEventAicon::Insert(void* handle, DWORD length, int after) {
    CStreamBuffer* const stream = Stream();
    if (!stream)
        return 0;
    auto* const record = static_cast<tagCsqEventAicon*>(torv::AllocateEventRecord(sizeof(tagCsqEventAicon)));
    if (!record)
        return 0;
    record->header = {torv::kEventAicon, 0, sizeof(tagCsqEventAicon) - sizeof(tagEventHeader)};
    record->iconHandle = static_cast<WORD>(reinterpret_cast<uintptr_t>(handle));
    SetIconLengthOf(record->iconHandle, length);
    tagEventEntry entry{0, torv::EventIdOf(record)};
    if (!stream->InsertEntry(&entry, after)) {
        torv::FreeEventRecord(entry.eventId);
        return 0;
    }
    m_pTrack->SetModify(1);
    return 1;
}

int CCsqEventAicon::Remove(int deleteObject) {
    if (!IsValidEvent(torv::kEventAicon, 0))
        return 0;
    const DWORD handle = m_record.icon.iconHandle;
    if (!RemoveRecord())
        return 0;
    if (deleteObject)
        DeleteIcon(handle);
    return 1;
}

int CCsqEventAicon::IsValidIcon(int status) { return status == torv::kStatusDynamics; }
int CCsqEventAicon::IsValidIcon(void* handle) const { return IsValidIcon(IconStatusOf(handle)); }

void* CCsqEventAicon::GetIconHandle() const { return reinterpret_cast<void*>(static_cast<uintptr_t>(CachedHandle())); }

int CCsqEventAicon::SetIconHandle(void* handle, int deleteOld) {
    if (!IsValidEvent(torv::kEventAicon, 0))
        return 0;
    ReplaceIconHandle(m_record.icon.iconHandle, handle, deleteOld);
    return 1;
}
