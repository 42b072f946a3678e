// Encoding one track of 1,000 to 1,000,000 notes with icons, vibrato, a dense pitch-bend list and tempo changes: the
// cost a note must stay the same, and memory near the bytes kept. Beside each row a plain copy of the bytes that it
// makes.
#include "torv/encoding/quill_midi_encoder.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_note_transit.h"
#include "torv/icons/icon_vibrato.h"
#include "torv/lyrics/lyric_object.h"
#include "torv/score/csq_builder.h"
#include "torv/score/master_track.h"
#include "torv/score/sequence.h"
#include "torv/score/sequence_object.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include <malloc.h>
#include <sys/resource.h>

namespace {

constexpr DWORD kNoteTicks = 240;
constexpr DWORD kLead = 1920;

/// Seconds in the program itself so far: without the kernel's share, which for a gigabyte of new memory is page faults.
double UserSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec) + static_cast<double>(usage.ru_utime.tv_usec) * 1e-6;
}

DWORD HandleOf(void* handle) { return static_cast<DWORD>(reinterpret_cast<uintptr_t>(handle)); }

/// Icons and lyrics are few and shared: handles are 16 bits, notes are not.
std::unique_ptr<CSequence> MakeSong(DWORD notes) {
    auto song = std::make_unique<CSequence>();
    song->Create(nullptr);
    for (DWORD i = 0; i < 1000; ++i) {
        tagMasterEventEntry tempo{i ? kNoteTicks * (notes / 1000) : 0, torv::kEventTempo, 0, 500000 + i % 7, 0};
        song->GetMasterTrack()->AddEvent(&tempo);
    }
    CSequenceObject* const track = CSequence::CreateObject();
    song->AddObject(track);
    CCsqBuilder builder;
    builder.OpenBuffer(track);
    auto* const lyric = new CLyricObject;
    for (const char* phonemes : {"s t r aI", "N"}) {
        CLyricElement* const element = lyric->AddNewElement();
        element->SetPhonemeString(phonemes, 1);
        element->SetDeltaRate(0.5F);
    }
    auto* const vibrato = new CIconVibrato(4, 4, 1);
    vibrato->SetLength(kNoteTicks);
    tagBreakPoint point{5000, 60, 0};
    vibrato->GetDepthBPList()->AddTail(point);
    const DWORD lyricHandle = HandleOf(track->AttachLyricObject(lyric));
    const DWORD attack = HandleOf(builder.RegisterIconObject(new CIconNoteAttack(1, 1, 1)));
    const DWORD release = HandleOf(builder.RegisterIconObject(new CIconNoteTransit(3, 3, 1)));
    const DWORD vibratoHandle = HandleOf(builder.RegisterIconObject(vibrato));
    for (DWORD i = 0; i < notes; ++i) {
        tagCsqEventAnote* const note = CCsqBuilder::CreateNoteEvent();
        note->noteLength = kNoteTicks;
        note->noteNumber = static_cast<WORD>(48 + i % 24);
        note->noteDynamics = 100;
        note->lyricHandle = lyricHandle;
        note->noteHeadHandle = attack;
        note->noteTailHandle = release;
        note->vibratoHandle = vibratoHandle;
        builder.SetEvent(i ? kNoteTicks : kLead, reinterpret_cast<tagChartSeqEvent*>(note));
        for (DWORD bend = 0; bend < 4; ++bend) {
            tagBreakPoint bent{static_cast<LONG>(kLead + i * kNoteTicks + bend * kNoteTicks / 4),
                               static_cast<SHORT>(i % 100), 0};
            track->GetPitchBendBreakPointList()->AddTail(bent);
        }
    }
    builder.CloseBuffer();
    return song;
}

void EncodeTrack(benchmark::State& state) {
    const auto notes = static_cast<DWORD>(state.range(0));
    const auto song = MakeSong(notes);
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
