// One insertion at a random tick into a stream of 1,000,000 entries, beside the two containers that one would take
// otherwise: a sorted vector (finds at once, moves megabytes) and a multimap (moves nothing, five times the memory).
#include "torv/stream/stream_buffer.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <vector>

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

void MultimapInsert(benchmark::State& state) {
    std::multimap<DWORD, std::array<DWORD, 3>> entries;
    for (DWORD i = 0; i < kEntries; ++i)
        entries.emplace_hint(entries.end(), (i + 1) * kStep, std::array<DWORD, 3>{});
    std::mt19937 random(1);
    for ([[maybe_unused]] auto _ : state)
        entries.emplace(random() % (kEntries * kStep), std::array<DWORD, 3>{});
}
BENCHMARK(MultimapInsert)->Iterations(20000)->Unit(benchmark::kMicrosecond);

} // namespace
