#pragma once

#include "failure.h"

#include <algorithm>
#include <cstring>

/// Records of a host that may know fewer or more fields than this library.
namespace torv::c {

/// Throws Failure for a record without a size that any header of this library has had. When a record grows, its first
/// size is told here.
template <class Record>
Record& NeedRecord(Record* record, const char* name) {
    if (Need(record, name).size < sizeof(Record))
        throw Failure{TORV_BAD_ARGUMENT, std::string(name) + ": its size is not set: set it to the record's sizeof"};
    return *record;
}

template <class Record>
Record Taken(const Record* record, const char* name) {
    Record taken = NeedRecord(record, name);
    taken.size = sizeof(Record);
    return taken;
}

/// Fills a host's record, which keeps its size.
template <class Record>
void Give(Record from, Record* to) {
    from.size = to->size;
    std::memcpy(to, &from, std::min<size_t>(to->size, sizeof from));
}

} // namespace torv::c
