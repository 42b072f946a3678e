// Encoding one track of 1,000 to 1,000,000 notes with icons, vibrato, a dense pitch-bend list and tempo changes: the
// cost a note must stay the same, and memory near the bytes kept. Beside each row a plain copy of the bytes that it
// makes. And a curve all of whose values stand at one tick: the cost a value must stay the same, whatever the interval.
#include "bench_song.h"

#include "torv/encoding/qm_out_parameters.h"
#include "torv/encoding/quill_midi_encoder.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include <malloc.h>
#include <sys/resource.h>

namespace {

/// Seconds in the program itself so far: without the kernel's share, which for a gigabyte of new memory is page faults.
double UserSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec) + static_cast<double>(usage.ru_utime.tv_usec) * 1e-6;
}

void EncodeTrack(benchmark::State& state) {
    const auto notes = static_cast<DWORD>(state.range(0));
    const auto song = bench::MakeSong(notes);
    const std::unique_ptr<tagSequenceTimeMap[]> map(CxQuillMidiEncoder::CreateSequenceTimeMap(song->GetMasterTrack()));
    tagQuillMidiEncodeStruct encode{song->GetHeadObject(), map.get()};
    DWORD kept = 0;
    size_t memory = 0;
    double user = 0;
    for ([[maybe_unused]] auto _ : state) {
        const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        const double start = UserSeconds();
        CxQuillMidiEncoder encoder;
        std::unique_ptr<CQuillMidiBuffer> stream(encoder.EncodeSequenceTrack(&encode));
        user += UserSeconds() - start;
        state.PauseTiming();
        memory = mallinfo2().uordblks + mallinfo2().hblkhd - before;
        kept = stream->GetDataSize();
        tagQuillMidiEntry entry;
        for (stream->SeekToBegin(); stream->ReadNextEntry(&entry);)
            kept += sizeof entry;
        stream.reset();
        state.ResumeTiming();
    }
    state.counters["us/note"] =
        benchmark::Counter(notes / 1e6, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["user us/note"] = user * 1e6 / notes / static_cast<double>(state.iterations());
    state.counters["memory/kept"] = static_cast<double>(memory) / kept;
    state.counters["MB"] = kept / 1e6;
}
BENCHMARK(EncodeTrack)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

/// As many values as the first number says, into a buffer of the second's mode and the third's interval.
void OutputAtOneTick(benchmark::State& state) {
    constexpr DWORD kPresend = 2000;
    static constexpr tagSequenceTimeMap kMap[] = {{500000, 0, 0}, {0, 0xFFFFFFFF, 0xFFFFFFFF}};
    CBreakPointList list;
    for (int64_t i = 0; i < state.range(0); ++i) {
        tagBreakPoint point{1920, static_cast<SHORT>(i & 127), 0};
        list.AddTail(point);
    }
    CxQMOutTremoloDepth curve;
    curve.AttachObject(&list);
    for ([[maybe_unused]] auto _ : state) {
        CQuillMidiBuffer buffer;
        buffer.Create(static_cast<int>(state.range(1)), kPresend, static_cast<int>(state.range(2)));
        tagQuillMidiRealtimeInfo info{0, kMap, 0, 0, 0, 0, 0};
        if (!curve.OutputParam(&buffer, &info))
            state.SkipWithError("not written");
    }
    state.counters["us/value"] =
        benchmark::Counter(static_cast<double>(state.range(0)) / 1e6,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(OutputAtOneTick)
    ->ArgsProduct({{1000, 10000, 100000}, {0}, {0, 3}})
    ->ArgsProduct({{1000, 10000, 100000}, {1}, {0}})
    ->Unit(benchmark::kMillisecond);

/// The peer: as many bytes as an encoded note has, appended in the encoder's pieces to a vector.
void CopyBytes(benchmark::State& state) {
    const auto notes = static_cast<size_t>(state.range(0));
    const std::vector<BYTE> piece(64, 1);
    for ([[maybe_unused]] auto _ : state) {
        std::vector<BYTE> bytes;
        for (size_t i = 0; i < notes * 24; ++i)
            bytes.insert(bytes.end(), piece.begin(), piece.end());
        benchmark::DoNotOptimize(bytes.data());
    }
    state.counters["us/note"] = benchmark::Counter(
        static_cast<double>(notes) / 1e6, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(CopyBytes)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

} // namespace
