// One insertion at a random tick into a stream of 1,000,000 entries, beside the containers that one would take
// otherwise: a sorted vector (finds at once, moves megabytes), a multimap (moves nothing, five times the memory) and a
// B-tree. Theirs find by absolute ticks; the stream keeps distances, so that what follows an insertion stays as it is.
#include "torv/stream/stream_buffer.h"

#include <benchmark/benchmark.h>

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
constexpr DWORD kStep = 100;

struct Entry {
    DWORD delta;
    DWORD tag;
    std::array<DWORD, 2> payload;
};

void StreamInsert(benchmark::State& state) {
    CStreamBuffer stream;
    stream.Create(sizeof(Entry), torv::kStreamBlockSize, torv::kHeapBlocks);
    Entry entry{kStep, 1, {}};
    for (DWORD i = 0; i < kEntries; ++i)
        stream.AddEntry(&entry);
    std::mt19937 random(1);
    for ([[maybe_unused]] auto _ : state) {
        stream.MoveTo(random() % (kEntries * kStep));
        entry.delta = 0;
        stream.InsertEntry(&entry, 1);
    }
}
BENCHMARK(StreamInsert)->Iterations(20000)->Unit(benchmark::kMicrosecond);

struct Timed {
    DWORD clock;
    std::array<DWORD, 3> payload;
};

void VectorInsert(benchmark::State& state) {
    std::vector<Timed> entries(kEntries);
    for (DWORD i = 0; i < kEntries; ++i)
        entries[i].clock = (i + 1) * kStep;
    std::mt19937 random(1);
    for ([[maybe_unused]] auto _ : state) {
        const DWORD clock = random() % (kEntries * kStep);
        const auto at = std::lower_bound(entries.begin(), entries.end(), clock,
                                         [](const Timed& timed, DWORD value) { return timed.clock < value; });
        entries.insert(at, {clock, {}});
    }
}
BENCHMARK(VectorInsert)->Iterations(2000)->Unit(benchmark::kMicrosecond);

template <class Map>
void MapInsert(benchmark::State& state) {
    Map entries;
    for (DWORD i = 0; i < kEntries; ++i)
        entries.emplace_hint(entries.end(), (i + 1) * kStep, std::array<DWORD, 3>{});
    std::mt19937 random(1);
    for ([[maybe_unused]] auto _ : state)
        entries.emplace(random() % (kEntries * kStep), std::array<DWORD, 3>{});
}

void MultimapInsert(benchmark::State& state) { MapInsert<std::multimap<DWORD, std::array<DWORD, 3>>>(state); }
BENCHMARK(MultimapInsert)->Iterations(20000)->Unit(benchmark::kMicrosecond);
#ifdef TORV_HAS_BTREE
void BtreeInsert(benchmark::State& state) { MapInsert<absl::btree_multimap<DWORD, std::array<DWORD, 3>>>(state); }
BENCHMARK(BtreeInsert)->Iterations(20000)->Unit(benchmark::kMicrosecond);
#endif

} // namespace
