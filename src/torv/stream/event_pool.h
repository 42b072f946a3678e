#pragma once

#include "torv/stream/chart_record.h"

/// The one pool of chart records of the process. A 32-bit id names a record until it is freed; afterwards it names
/// nothing, so that asking whether a record is still there is a real answer on every word size. Each operation takes
/// constant time. Ids are never 0, never below 0x1000 and never one of a stream's reserved tags. No lock: the data
/// model belongs to one thread at a time.
namespace torv {

inline constexpr DWORD kMaxEventRecord = 64; ///< bytes

/// A zeroed record of `bytes` bytes; null when memory runs out, and for 0 or more than kMaxEventRecord bytes.
TORV_API void* AllocateEventRecord(DWORD bytes);

/// A zeroed record of a kind, with its header filled in; null when memory runs out. The caller's until an entry of a
/// track's stream names it.
template <class Record>
Record* NewEventRecord(WORD status = 0) {
    auto* const record = static_cast<Record*>(AllocateEventRecord(sizeof(Record)));
    if (record)
        record->header = {kEventTypeOf<Record>, status, sizeof(Record) - sizeof(tagEventHeader)};
    return record;
}

/// The id of a live record, else 0. Never looks at what `record` points to, so any pointer may be asked about.
TORV_API DWORD EventIdOf(const void* record);

/// The record that `id` names, else null.
TORV_API tagEventHeader* EventRecordOf(DWORD id);

/// The bytes it was allocated with, 0 when `id` names nothing.
TORV_API DWORD EventRecordSize(DWORD id);

/// Frees the record; an id that names nothing is passed over.
TORV_API void FreeEventRecord(DWORD id);

/// How many records are alive: what owners of records are tested with.
TORV_API DWORD LiveEventRecords();

} // namespace torv
