#include "torv/score/csq_event_singer.h"

CCsqEventSinger::~CCsqEventSinger() = default;

int CCsqEventSinger::Insert(void* handle, int value, int after) {
    auto* const record = torv::NewEventRecord<tagCsqEventSinger>();
    if (!record)
        return 0;
    record->value = static_cast<WORD>(value);
    record->iconHandle = torv::HandleOf(handle);
    return InsertNew(record, after);
}

int CCsqEventSinger::Remove(int deleteObject) { return RemoveWithIcon(deleteObject); }
