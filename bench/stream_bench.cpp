// A stream of 1,000,000 entries appended, walked and inserted into at random ticks, and a shorter one inserted into
// more often, beside the containers that one would take otherwise: a sorted vector (finds at once, moves megabytes), a
// multimap (moves nothing, five times the memory) and a B-tree. Theirs keep absolute ticks; the stream keeps distances,
// so that what follows an insertion stays as it is.
#include "bench_file.h"

#include "torv/stream/stream_buffer.h"

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <vector>

#ifdef TORV_HAS_BTREE
#include <absl/container/btree_map.h>
#endif

namespace {

constexpr DWORD kEntries = 1000000;
constexpr DWORD kFewEntries = 200000;
constexpr DWORD kInsertions = 20000;
constexpr DWORD kManyInsertions = 50000;
constexpr DWORD kStep = 100; // ticks
constexpr DWORD kTag = 1;

using Payload = std::array<DWORD, 3>;

/// Each store appends and inserts at a tick, and walks over the ticks in their order.
class Stream {
public:
    Stream() { m_stream.Create(sizeof(Entry), torv::kStreamBlockSize, torv::kHeapBlocks); }
    void Append(DWORD clock) {
        const Entry entry{clock - m_last, kTag, {}};
        m_last = clock;
        m_stream.AddEntry(&entry);
    }
    void Insert(DWORD clock) {
        Entry entry{0, kTag, {}};
        m_stream.MoveTo(clock);
        m_stream.InsertEntry(&entry, 1);
    }
    template <class Take>
    void Walk(Take take) {
        Entry entry;
        DWORD clock = 0;
        for (m_stream.SeekToBegin(); m_stream.ReadNextEntry(&entry);)
            take(clock += entry.delta);
    }

private:
    struct Entry {
        DWORD delta;
        DWORD tag;
        std::array<DWORD, 2> payload;
    };
    CStreamBuffer m_stream;
    DWORD m_last = 0;
};

class Vector {
public:
    void Append(DWORD clock) { m_entries.push_back({clock, {}}); }
    void Insert(DWORD clock) {
        const auto at = std::lower_bound(m_entries.begin(), m_entries.end(), clock,
                                         [](const Timed& timed, DWORD value) { return timed.clock < value; });
        m_entries.insert(at, {clock, {}});
    }
    template <class Take>
    void Walk(Take take) const {
        for (const Timed& timed : m_entries)
            take(timed.clock);
    }

private:
    struct Timed {
        DWORD clock;
        Payload payload;
    };
    std::vector<Timed> m_entries;
};

template <class Entries>
class Map {
public:
    void Append(DWORD clock) { m_entries.emplace_hint(m_entries.end(), clock, Payload{}); }
    void Insert(DWORD clock) { m_entries.emplace(clock, Payload{}); }
    template <class Take>
    void Walk(Take take) const {
        for (const auto& [clock, payload] : m_entries)
            take(clock);
    }

private:
    Entries m_entries;
};

using Multimap = Map<std::multimap<DWORD, Payload>>;
#ifdef TORV_HAS_BTREE
using Btree = Map<absl::btree_multimap<DWORD, Payload>>;
#endif

template <class Store>
[[gnu::noinline]] void MeasuredAppend(Store& store, DWORD entries) {
    for (DWORD i = 1; i <= entries; ++i)
        store.Append(i * kStep);
}

template <class Store>
[[gnu::noinline]] uint64_t MeasuredWalk(Store& store) {
    uint64_t sum = 0;
    store.Walk([&sum](DWORD clock) { sum += clock; });
    return sum;
}

template <class Store>
[[gnu::noinline]] void MeasuredInsert(Store& store, const std::vector<DWORD>& clocks) {
    for (const DWORD clock : clocks)
        store.Insert(clock);
}

template <class Store>
bench::Digest DigestOf(Store& store) {
    bench::Digest digest;
    store.Walk([&digest](DWORD clock) { digest.Add(clock); });
    return digest;
}

std::vector<DWORD> RandomClocks(size_t count, DWORD entries) {
    std::mt19937 random(1);
    std::vector<DWORD> clocks(count);
    for (DWORD& clock : clocks)
        clock = random() % (entries * kStep);
    return clocks;
}

/// What a walk comes to after so many have been appended and these inserted.
bench::Digest Expected(DWORD entries, std::vector<DWORD> clocks = {}) {
    for (DWORD i = 1; i <= entries; ++i)
        clocks.push_back(i * kStep);
    std::sort(clocks.begin(), clocks.end());
    bench::Digest digest;
    for (const DWORD clock : clocks)
        digest.Add(clock);
    return digest;
}

/// What is measured is between making a store and letting go of it.
template <class Store, class Work>
void EachRound(benchmark::State& state, DWORD appended, const bench::Digest& expected, Work work) {
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        {
            Store store;
            MeasuredAppend(store, appended);
            state.ResumeTiming();
            work(store);
            state.PauseTiming();
            bench::Expect(state, DigestOf(store) == expected);
        }
        state.ResumeTiming();
    }
}

template <class Store>
void Append(benchmark::State& state) {
    EachRound<Store>(state, 0, Expected(kEntries), [](Store& store) { MeasuredAppend(store, kEntries); });
}

template <class Store>
void Walk(benchmark::State& state) {
    Store store;
    MeasuredAppend(store, kEntries);
    uint64_t sum = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(&store);
        benchmark::ClobberMemory(); // or the compiler sees that every walk comes to the same
        sum = MeasuredWalk(store);
    }
    bench::Expect(state, sum == uint64_t{kEntries} * (kEntries + 1) / 2 * kStep);
}

/// So many at random places of so many.
template <class Store>
void Insert(benchmark::State& state) {
    const auto entries = static_cast<DWORD>(state.range(1));
    const std::vector<DWORD> clocks = RandomClocks(static_cast<size_t>(state.range(0)), entries);
    EachRound<Store>(state, entries, Expected(entries, clocks), [&](Store& store) { MeasuredInsert(store, clocks); });
    bench::CountEach(state, "s/insertion", static_cast<double>(clocks.size()));
}

void Both(benchmark::internal::Benchmark* row) {
    row->Args({kManyInsertions, kFewEntries})->Args({kInsertions, kEntries});
}

BENCHMARK_TEMPLATE(Append, Stream)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Append, Vector)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Append, Multimap)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Walk, Stream)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Walk, Vector)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Walk, Multimap)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Insert, Stream)->Apply(Both)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Insert, Multimap)->Apply(Both)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Insert, Vector)
    ->Args({kInsertions, kEntries})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond); // seconds
#ifdef TORV_HAS_BTREE
BENCHMARK_TEMPLATE(Append, Btree)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Walk, Btree)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Insert, Btree)->Apply(Both)->Unit(benchmark::kMillisecond);
#endif

} // namespace
