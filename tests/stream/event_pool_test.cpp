#include "torv/stream/event_pool.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <vector>

#include "allocation_failure.h"
#include "torv/stream/stream_buffer.h"

using namespace torv;

TEST_CASE("event pool: without memory for more there is no record, and later there is") {
    std::set<DWORD> ids; // of the first records in this program: none is used again
    int failures = 0;
    FailEachAllocation([&](AllocationFailure& failure) {
        std::array<void*, 1100> records{}; // more than memory is had for at a time
        failure.During([&] {
            for (void*& record : records)
                record = AllocateEventRecord(8);
            return 0;
        });
        CHECK((std::count(records.begin(), records.end(), nullptr) != 0) == failure.HasHappened());
        failures += failure.HasHappened();
        const size_t before = ids.size();
        for (void* const record : records)
            ids.insert(EventIdOf(record ? record : AllocateEventRecord(8)));
        CHECK(ids.size() == before + records.size());
    });
    CHECK(failures > 0);
    for (const DWORD id : ids)
        FreeEventRecord(id);
}

TEST_CASE("event pool: a record is found by its id, its id by the record, and a freed id names nothing again") {
    const DWORD before = LiveEventRecords();
    std::set<DWORD> seen;
    for (int round = 0; round < 3; ++round) { // the second and third time in memory that was used before
        std::vector<DWORD> ids;
        for (DWORD n = 0; n < 5000; ++n) {
            const DWORD size = n % kMaxEventRecord + 1;
            auto* const record = static_cast<BYTE*>(AllocateEventRecord(size));
            REQUIRE(record);
            REQUIRE(std::count(record, record + size, BYTE{0}) == size);
            std::fill_n(record, size, BYTE{0xEE});
            const DWORD id = EventIdOf(record);
            REQUIRE(seen.insert(id).second);
            REQUIRE(id >= 0x1000);
            REQUIRE(id < kEndMarkTag);
            REQUIRE(static_cast<void*>(EventRecordOf(id)) == record);
            REQUIRE(EventRecordSize(id) == size);
            ids.push_back(id);
        }
        CHECK(LiveEventRecords() == before + 5000);
        for (const DWORD id : ids) {
            const void* const record = EventRecordOf(id);
            FreeEventRecord(id);
            FreeEventRecord(id); // a second time is harmless
            REQUIRE(EventIdOf(record) == 0);
            REQUIRE(EventRecordOf(id) == nullptr);
            REQUIRE(EventRecordSize(id) == 0);
        }
        CHECK(LiveEventRecords() == before);
    }
}

TEST_CASE("event pool: any id and any pointer may be asked about") {
    BYTE elsewhere[64];
    auto* const record = static_cast<BYTE*>(AllocateEventRecord(40));
    for (const void* const pointer :
         {static_cast<void*>(nullptr), static_cast<void*>(elsewhere), reinterpret_cast<void*>(~uintptr_t{0}),
          static_cast<void*>(record + 1), static_cast<void*>(record + kMaxEventRecord)}) // in a record, or a free one
        CHECK(EventIdOf(pointer) == 0);
    const DWORD id = EventIdOf(record);
    for (const DWORD wrong : {DWORD{0}, DWORD{4}, DWORD{0xFFF}, kEndMarkTag, kTopTag, id ^ 1u << 22, id ^ 0x200000u}) {
        CAPTURE(wrong);
        FreeEventRecord(wrong);
        CHECK(EventRecordOf(wrong) == nullptr);
        CHECK(EventRecordSize(wrong) == 0);
    }
    CHECK(EventRecordOf(id) != nullptr);
    FreeEventRecord(id);
    CHECK(AllocateEventRecord(0) == nullptr);
    CHECK(AllocateEventRecord(kMaxEventRecord + 1) == nullptr);
}
