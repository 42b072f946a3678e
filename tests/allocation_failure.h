#pragma once

#include <doctest/doctest.h>

/// Lets one allocation with new fail, to see what becomes of an operation that cannot have its memory.
class AllocationFailure {
public:
    enum Kind { Once, FromThereOn };
    /// The `number`-th allocation, counted from 0, of what runs inside During.
    AllocationFailure(int number, Kind kind) : m_number(number), m_kind(kind) {}
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    /// Calls `operation`, on this thread, and gives back what it answers. Only what happens inside is counted and
    /// fails; there are no CHECKs inside, which allocate as well.
    template <class Operation>
    auto During(Operation operation) {
        const Armed armed(*this);
        return operation();
    }
    bool HasHappened() const { return m_hasHappened; }

private:
    struct Armed {
        explicit Armed(AllocationFailure& failure);
        Armed(const Armed&) = delete;
        Armed& operator=(const Armed&) = delete;
        ~Armed();
    };
    friend struct AllocationWatch; // which new asks

    int m_number;
    Kind m_kind;
    bool m_hasHappened = false;
};

/// Calls `attempt` again and again, first with its first allocation failing, then with its second and so on, until it
/// runs through without a failure. An attempt makes what it needs anew each time:
///
///     FailEachAllocation([&](AllocationFailure& failure) {
///         CxTypedFile file;
///         const int loaded = failure.During([&] { return file.Load(path); });
///         CHECK(loaded == !failure.HasHappened());
///     });
template <class Attempt>
void FailEachAllocation(Attempt attempt) {
    for (const auto kind : {AllocationFailure::Once, AllocationFailure::FromThereOn}) {
        bool failed = true;
        for (int number = 0; failed; ++number) {
            CAPTURE(number);
            CAPTURE(kind);
            AllocationFailure failure(number, kind);
            attempt(failure);
            failed = failure.HasHappened();
            REQUIRE(number < 1000000);
        }
    }
}
