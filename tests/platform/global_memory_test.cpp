#include "torv/platform/platform.h"

#include "allocation_failure.h"

#include <doctest/doctest.h>

#include <algorithm>

TEST_CASE("memory: a fixed block's handle is its address, a moveable block's is not") {
    const HGLOBAL fixed = GlobalAlloc(GMEM_FIXED, 100);
    REQUIRE(fixed != nullptr);
    CHECK(GlobalLock(fixed) == fixed);
    CHECK(GlobalUnlock(fixed)); // a fixed block always counts as locked
    CHECK(GlobalFree(fixed) == nullptr);

    const HGLOBAL moveable = GlobalAlloc(GMEM_MOVEABLE, 100);
    REQUIRE(moveable != nullptr);
    void* address = GlobalLock(moveable);
    REQUIRE(address != nullptr);
    CHECK(address != moveable);
    CHECK(GlobalLock(moveable) == address); // a second lock
    CHECK(GlobalUnlock(moveable));          // one is left
    CHECK_FALSE(GlobalUnlock(moveable));
    CHECK(GetLastError() == NO_ERROR);
    CHECK_FALSE(GlobalUnlock(moveable));
    CHECK(GetLastError() == ERROR_NOT_LOCKED);
    CHECK(GlobalFree(moveable) == nullptr);
}

TEST_CASE("memory: zeroed where that is asked for, empty blocks, null and handles that name nothing") {
    for (const UINT flags : {0x40u, 0x42u}) {
        const HGLOBAL memory = GlobalAlloc(flags, 4096);
        const auto* bytes = static_cast<const char*>(GlobalLock(memory));
        REQUIRE(bytes != nullptr);
        CHECK(std::count(bytes, bytes + 4096, 0) == 4096);
        GlobalUnlock(memory);
        CHECK(GlobalFree(memory) == nullptr);
    }
    const HGLOBAL empty = GlobalAlloc(GMEM_MOVEABLE, 0);
    REQUIRE(empty != nullptr);
    CHECK(GlobalLock(empty) == nullptr);
    CHECK(GlobalFree(empty) == nullptr);
    CHECK(GlobalLock(empty) == nullptr);
    CHECK(GetLastError() == ERROR_INVALID_HANDLE);
    CHECK(GlobalFree(empty) == empty);
    CHECK(GlobalLock(nullptr) == nullptr);
    CHECK(GlobalFree(nullptr) == nullptr);
    CHECK(GlobalAlloc(GMEM_FIXED, ~SIZE_T(0) - 64) == nullptr);
}

#if !defined(_WIN32) // there it is the system's own

TEST_CASE("memory: what cannot be had is told, and leaves no trace") {
    FailEachAllocation([](AllocationFailure& failure) {
        SetLastError(NO_ERROR);
        const HGLOBAL memory = failure.During([] { return GlobalAlloc(GMEM_MOVEABLE, 100000); });
        CHECK((memory == nullptr) == failure.HasHappened());
        CHECK((GetLastError() == ERROR_NOT_ENOUGH_MEMORY) == failure.HasHappened());
        GlobalFree(memory);
    });
}

#endif
