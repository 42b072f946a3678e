#include "allocation_counter.h"
#include "allocation_failure.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local bool t_watched = false;
thread_local AllocationFailure* t_failure = nullptr;
std::atomic<int> g_allocations{0};

} // namespace

struct AllocationWatch {
    static bool Fails() {
        AllocationFailure* const failure = t_failure;
        if (!failure || failure->m_number-- > 0)
            return false;
        const bool fails = !failure->m_hasHappened || failure->m_kind == AllocationFailure::FromThereOn;
        failure->m_hasHappened = true;
        return fails;
    }
    static void* Allocate(std::size_t size) noexcept {
        if (t_watched)
            ++g_allocations;
        return Fails() ? nullptr : std::malloc(size ? size : 1);
    }
};

AllocationFailure::Armed::Armed(AllocationFailure& failure) { t_failure = &failure; }
AllocationFailure::Armed::~Armed() { t_failure = nullptr; }

namespace allocation_counter {

void WatchThisThread(bool isWatched) { t_watched = isWatched; }
int Take() { return g_allocations.exchange(0); }

} // namespace allocation_counter

// A file of its own: inlined beside their callers, compilers take new and free for a pair that does not match.
void* operator new(std::size_t size) {
    if (void* const memory = AllocationWatch::Allocate(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return AllocationWatch::Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
