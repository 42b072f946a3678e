#include "torv/stream/event_pool.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <set>
#include <vector>

#include "torv/stream/stream_buffer.h"

using namespace torv;

TEST_CASE("event pool: a record is found by its id, and its id by the record") {
    const DWORD before = LiveEventRecords();
    std::vector<DWORD> ids;
    for (DWORD n = 0; n < 5000; ++n) {
        const DWORD size = n % 64 + 1;
        void* record = AllocateEventRecord(size);
        REQUIRE(record);
        for (DWORD i = 0; i < size; ++i)
            REQUIRE(static_cast<BYTE*>(record)[i] == 0);
        std::fill_n(static_cast<BYTE*>(record), size, static_cast<BYTE>(0xEE)); // must not show in a later record
        const DWORD id = EventIdOf(record);
        REQUIRE(id >= 0x1000);
        REQUIRE(id != kEndMarkTag);
        REQUIRE(id != kTopTag);
        REQUIRE(static_cast<void*>(EventRecordOf(id)) == record);
        REQUIRE(EventRecordSize(id) == size);
        ids.push_back(id);
    }
    CHECK(std::set<DWORD>(ids.begin(), ids.end()).size() == 5000);
    CHECK(LiveEventRecords() == before + 5000);
    for (const DWORD id : ids)
        FreeEventRecord(id);
    CHECK(LiveEventRecords() == before);
}

TEST_CASE("event pool: a freed id names nothing, also when its memory is used again") {
    std::set<DWORD> seen;
    DWORD first = 0;
    for (int n = 0; n < 20000; ++n) {
        void* record = AllocateEventRecord(16);
        const DWORD id = EventIdOf(record);
        REQUIRE(seen.insert(id).second);
        first = first ? first : id;
        FreeEventRecord(id);
        FreeEventRecord(id); // a second time is harmless
        REQUIRE(EventIdOf(record) == 0);
        REQUIRE(EventRecordOf(id) == nullptr);
    }
    CHECK(EventRecordOf(first) == nullptr);
    CHECK(EventRecordSize(first) == 0);
}

TEST_CASE("event pool: any id and any pointer may be asked about") {
    BYTE elsewhere[64];
    CHECK(EventIdOf(nullptr) == 0);
    CHECK(EventIdOf(elsewhere) == 0);
    CHECK(EventIdOf(reinterpret_cast<void*>(uintptr_t{1})) == 0);
    CHECK(EventIdOf(reinterpret_cast<void*>(~uintptr_t{0})) == 0);
    auto* record = static_cast<BYTE*>(AllocateEventRecord(40));
    CHECK(EventIdOf(record + 1) == 0); // not the record, only a place in it
    CHECK(EventIdOf(record + 64) == 0);
    const DWORD id = EventIdOf(record);
    for (const DWORD wrong : {DWORD{0}, DWORD{4}, DWORD{0xFFF}, kEndMarkTag, kTopTag, id ^ 1u << 22, id ^ 0x200000u}) {
        CAPTURE(wrong);
        CHECK(EventRecordOf(wrong) == nullptr);
        CHECK(EventRecordSize(wrong) == 0);
        FreeEventRecord(wrong);
    }
    CHECK(EventRecordOf(id) != nullptr);
    FreeEventRecord(id);
    CHECK(AllocateEventRecord(0) == nullptr);
    CHECK(AllocateEventRecord(65) == nullptr);
}
