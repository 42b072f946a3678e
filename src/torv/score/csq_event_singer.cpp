#include "torv/score/csq_event_singer.h"

#include "torv/icons/icon_id.h"
#include "torv/stream/event_pool.h"

CCsqEventSinger::~CCsqEventSinger() = default;

int CCsqEventSinger::GetNext() { return GetNextOf(torv::kEventSinger); }
int CCsqEventSinger::GetPrev() { return GetPrevOf(torv::kEventSinger); }
int CCsqEventSinger::Insert(DWORD id, int after) { return InsertRecord(id, sizeof(tagCsqEventSinger), after); }
int CCsqEventSinger::Write() { return WriteRecord(torv::kEventSinger, sizeof(tagCsqEventSinger)); }

int CCsqEventSinger::Insert(void* handle, int value, int after) {
    auto* const record = static_cast<tagCsqEventSinger*>(torv::AllocateEventRecord(sizeof(tagCsqEventSinger)));
    if (!record)
        return 0;
    record->header = {torv::kEventSinger, 0, sizeof(tagCsqEventSinger) - sizeof(tagEventHeader)};
    record->value = static_cast<WORD>(value);
    record->iconHandle = static_cast<WORD>(reinterpret_cast<uintptr_t>(handle));
    return InsertNew(record, after);
}

int CCsqEventSinger::Remove(int deleteObject) {
    if (!IsValidEvent(torv::kEventSinger, 0))
        return 0;
    const DWORD handle = m_record.singer.iconHandle;
    if (!RemoveRecord())
        return 0;
    if (deleteObject)
        DeleteIcon(handle);
    return 1;
}

int CCsqEventSinger::IsValidIcon(int status) { return status == torv::kStatusSinger; }
int CCsqEventSinger::IsValidIcon(void* handle) const { return IsValidIcon(IconStatusOf(handle)); }

void* CCsqEventSinger::GetIconHandle() const {
    const DWORD handle = IsValidEvent(torv::kEventSinger, 0) ? m_record.singer.iconHandle : 0;
    return reinterpret_cast<void*>(static_cast<uintptr_t>(handle));
}
