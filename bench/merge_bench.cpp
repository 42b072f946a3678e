// Parsing and merging a standard MIDI file of 1,000,000 events: CxMidiSequence, libsmf, portsmf, TSE3, JUCE, drumstick,
// and a bare scan of the bytes; with 16 tracks and with 512. portsmf and TSE3 make notes of beginnings and ends (TSE3
// counts in ticks of its own), so that only how many channel messages came can be compared. JUCE lets ends go before
// beginnings at one tick, so that its events are compared without their order. drumstick does not merge: what it reads
// is sorted.
#include "bench_file.h"

#include "torv/files/midi_sequence.h"

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#ifdef TORV_HAS_SMF
#include <smf.h>
#endif
#ifdef TORV_HAS_TSE3
#include <memory>
#include <tse3/MidiFile.h>
#endif
#ifdef TORV_HAS_JUCE
#include <juce_audio_basics/juce_audio_basics.h>
#endif
#ifdef TORV_HAS_DRUMSTICK
#include <QBuffer>
#include <QDataStream>
#include <drumstick/qsmf.h>
#endif
#ifdef TORV_HAS_PORTSMF
#include <allegro.h>
#include <cstring> // which the next one lacks

#include <sstream>
#include <string_view>
#endif

namespace {

constexpr DWORD kEvents = 1000000;
constexpr DWORD kDivision = 480;
constexpr DWORD kChunkHeader = 8;
constexpr DWORD kFileHeader = 14;

using Bytes = std::vector<BYTE>;

/// A file, its tracks' events in it, and what a merge of them must come to.
struct Song {
    struct Track {
        const BYTE* data;
        DWORD size;
    };
    Bytes file;
    std::vector<Track> tracks;
    bench::Digest expected;
    uint64_t expectedSum = 0; // whatever their order
    DWORD channelMessages = 0;
};

uint64_t Packed(DWORD tick, BYTE status, BYTE data1, BYTE data2) {
    return static_cast<uint64_t>(tick) << 24 | static_cast<uint64_t>(status) << 16 | data1 << 8 | data2;
}

void PutNumber(Bytes& bytes, DWORD value, int width) {
    while (width-- > 0)
        bytes.push_back(static_cast<BYTE>(value >> (8 * width)));
}

void PutDelta(Bytes& bytes, DWORD delta) {
    if (delta > 0x7F)
        bytes.push_back(static_cast<BYTE>(0x80 | delta >> 7));
    bytes.push_back(delta & 0x7F);
}

struct Timed {
    DWORD tick;
    uint64_t packed;
};

/// Notes by running status, each key struck and let go in turn, bends, programs, a text now and then, and in the first
/// track tempos.
Bytes MakeTrack(std::mt19937& random, DWORD events, bool isFirst, std::vector<Timed>& timed) {
    Bytes bytes;
    BYTE running = 0;
    BYTE sounding = 0; // the key, 0: none
    DWORD tick = 0;
    const auto begin = [&](DWORD delta, BYTE status, BYTE data1, BYTE data2) {
        tick += delta;
        timed.push_back({tick, Packed(tick, status, data1, data2)});
        PutDelta(bytes, delta);
    };
    for (DWORD i = 0; i < events; ++i) {
        const DWORD delta = random() % 200;
        const DWORD kind = random() % 100;
        BYTE data1 = static_cast<BYTE>(1 + random() % 0x7F);
        BYTE data2 = static_cast<BYTE>(1 + random() % 0x7F);
        if (kind == 0 && isFirst) {
            begin(delta, torv::kMidiMeta, torv::kMetaTempo, 0);
            bytes.insert(bytes.end(), {torv::kMidiMeta, torv::kMetaTempo, 3, 7, data1, data2});
            running = 0;
        } else if (kind < 2) {
            begin(delta, torv::kMidiMeta, 1, 0);
            bytes.insert(bytes.end(), {torv::kMidiMeta, 1, 5, 'v', 'e', 'r', 's', 'e'});
            running = 0;
        } else {
            const BYTE status = kind < 80 ? 0x90 : kind < 95 ? 0xE0 : 0xC0;
            if (status == 0x90) {
                data2 = sounding ? BYTE{0} : data2;
                data1 = sounding ? sounding : data1;
                sounding = sounding ? BYTE{0} : data1;
            }
            begin(delta, status, data1, status == 0xC0 ? 0 : data2);
            if (status != running)
                bytes.push_back(running = status);
            bytes.push_back(data1);
            if (status != 0xC0)
                bytes.push_back(data2);
        }
    }
    begin(1, torv::kMidiMeta, torv::kMetaEndOfTrack, 0);
    bytes.insert(bytes.end(), {torv::kMidiMeta, torv::kMetaEndOfTrack, 0});
    return bytes;
}

const Song& SongOf(DWORD tracks) {
    static std::map<DWORD, Song> songs;
    Song& song = songs[tracks];
    if (!song.tracks.empty())
        return song;
    std::mt19937 random(20);
    std::vector<Timed> timed;
    std::vector<size_t> starts;
    song.file = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1};
    PutNumber(song.file, tracks, 2);
    PutNumber(song.file, kDivision, 2);
    for (DWORD i = 0; i < tracks; ++i) {
        const Bytes track = MakeTrack(random, kEvents / tracks, i == 0, timed);
        song.file.insert(song.file.end(), {'M', 'T', 'r', 'k'});
        PutNumber(song.file, static_cast<DWORD>(track.size()), 4);
        song.file.insert(song.file.end(), track.begin(), track.end());
    }
    for (size_t at = kFileHeader; at < song.file.size();) {
        const BYTE* head = song.file.data() + at;
        const DWORD size = static_cast<DWORD>(head[4] << 24 | head[5] << 16 | head[6] << 8 | head[7]);
        song.tracks.push_back({head + kChunkHeader, size});
        at += kChunkHeader + size;
    }
    // At one tick the earlier track comes first, and a track's own order stays.
    std::stable_sort(timed.begin(), timed.end(), [](const Timed& a, const Timed& b) { return a.tick < b.tick; });
    for (const Timed& event : timed) {
        song.expected.Add(event.packed);
        song.expectedSum += event.packed;
        song.channelMessages += (event.packed >> 16 & 0xFF) < 0xF0;
    }
    return song;
}

[[gnu::noinline]] bench::Digest MeasuredSequence(const Song& song) {
    CxMidiSequence sequence;
    sequence.Create(0, 0);
    sequence.PrepareTrackList(1, static_cast<DWORD>(song.tracks.size()), kDivision);
    for (const Song::Track& track : song.tracks)
        sequence.AddNewTrack(track.data, track.size);
    bench::Digest digest;
    DWORD tick = 0;
    for (tagEvent event; sequence.GetEvent(&event);) {
        tick += event.delta;
        digest.Add(Packed(tick, event.status, event.data1, event.data2));
    }
    return digest;
}

#ifdef TORV_HAS_SMF
/// The events stay: letting go of them takes time by the square of their number.
[[gnu::noinline]] bench::Digest MeasuredLibsmf(const Song& song) {
    bench::Digest digest;
    smf_t* const smf = smf_load_from_memory(song.file.data(), static_cast<int>(song.file.size()));
    smf_rewind(smf); // without it the first events come in the order of the tracks
    while (const smf_event_t* event = smf_get_next_event(smf)) {
        const BYTE* const bytes = event->midi_buffer;
        const bool hasThird = event->midi_buffer_length > 2 && bytes[0] < 0xF0;
        digest.Add(Packed(static_cast<DWORD>(event->time_pulses), bytes[0], bytes[1], hasThird ? bytes[2] : BYTE{0}));
    }
    return digest;
}
#endif

#ifdef TORV_HAS_PORTSMF
[[gnu::noinline]] DWORD MeasuredPortsmf(const Song& song) {
    std::istringstream file(std::string(song.file.begin(), song.file.end()));
    Alg_seq sequence(file, true);
    Alg_iterator events(&sequence, true);
    events.begin();
    DWORD count = 0;
    bool isBeginning = false;
    while (Alg_event_ptr event = events.next(&isBeginning)) {
        const std::string_view what = event->is_update() ? event->get_attribute() : "";
        count += event->is_note() || what == "bendr" || what == "programi";
    }
    events.end();
    return count;
}
#endif

#ifdef TORV_HAS_TSE3
/// Most of its texts come as the event before them once more.
[[gnu::noinline]] DWORD MeasuredTse3(const std::string& path) {
    TSE3::MidiFileImport file(path);
    const std::unique_ptr<TSE3::PlayableIterator> events(file.iterator(0));
    DWORD count = 0;
    for (; events->more(); ++*events)
        count +=
            (*events)->data.status >= TSE3::MidiCommand_NoteOff && (*events)->data.status < TSE3::MidiCommand_System;
    return count;
}
#endif

#ifdef TORV_HAS_JUCE
[[gnu::noinline]] uint64_t MeasuredJuce(const Song& song) {
    juce::MemoryInputStream bytes(song.file.data(), song.file.size(), false);
    juce::MidiFile file;
    file.readFrom(bytes, false);
    juce::MidiMessageSequence merged;
    for (int track = 0; track < file.getNumTracks(); ++track)
        merged.addSequence(*file.getTrack(track), 0);
    uint64_t sum = 0;
    for (const auto* const event : merged) {
        const BYTE* const raw = event->message.getRawData();
        const bool hasThird = event->message.getRawDataSize() > 2 && raw[0] < 0xF0;
        sum += Packed(static_cast<DWORD>(event->message.getTimeStamp()), raw[0], raw[1], hasThird ? raw[2] : BYTE{0});
    }
    return sum;
}
#endif

#ifdef TORV_HAS_DRUMSTICK
[[gnu::noinline]] bench::Digest MeasuredDrumstick(const Song& song) {
    using drumstick::File::QSmf;
    QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(song.file.data()), static_cast<int>(song.file.size()));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QDataStream stream(&buffer);
    QSmf file;
    std::vector<Timed> events;
    const auto take = [&](int status, int data1, int data2) {
        const auto tick = static_cast<DWORD>(file.getCurrentTime());
        events.push_back(
            {tick, Packed(tick, static_cast<BYTE>(status), static_cast<BYTE>(data1), static_cast<BYTE>(data2))});
    };
    QObject::connect(&file, &QSmf::signalSMFNoteOn, [&](int, int key, int velocity) { take(0x90, key, velocity); });
    QObject::connect(&file, &QSmf::signalSMFNoteOff, [&](int, int key, int velocity) { take(0x80, key, velocity); });
    QObject::connect(&file, &QSmf::signalSMFPitchBend,
                     [&](int, int value) { take(0xE0, (value + 8192) & 0x7F, (value + 8192) >> 7); });
    QObject::connect(&file, &QSmf::signalSMFProgram, [&](int, int program) { take(0xC0, program, 0); });
    QObject::connect(&file, &QSmf::signalSMFTempo, [&](int) { take(torv::kMidiMeta, torv::kMetaTempo, 0); });
    QObject::connect(&file, &QSmf::signalSMFText2,
                     [&](int type, const QByteArray&) { take(torv::kMidiMeta, type, 0); });
    QObject::connect(&file, &QSmf::signalSMFendOfTrack, [&] { take(torv::kMidiMeta, torv::kMetaEndOfTrack, 0); });
    file.readFromStream(&stream);
    std::stable_sort(events.begin(), events.end(), [](const Timed& a, const Timed& b) { return a.tick < b.tick; });
    bench::Digest digest;
    for (const Timed& event : events)
        digest.Add(event.packed);
    return digest;
}
#endif

/// One byte after the other, each depending on the one before only by an addition.
[[gnu::noinline]] uint64_t MeasuredScan(const Song& song) {
    uint64_t sum = 0;
    for (const BYTE byte : song.file)
        sum += byte;
    return sum;
}

void MergeTorv(benchmark::State& state) {
    const Song& song = SongOf(static_cast<DWORD>(state.range(0)));
    bench::Digest digest;
    for ([[maybe_unused]] auto _ : state)
        digest = MeasuredSequence(song);
    bench::Expect(state, digest == song.expected);
    bench::CountEach(state, "s/event", kEvents);
}
BENCHMARK(MergeTorv)->Arg(16)->Arg(512)->Unit(benchmark::kMillisecond);

#ifdef TORV_HAS_SMF
void MergeLibsmf(benchmark::State& state) {
    const Song& song = SongOf(static_cast<DWORD>(state.range(0)));
    bench::Digest digest;
    for ([[maybe_unused]] auto _ : state)
        digest = MeasuredLibsmf(song);
    bench::Expect(state, digest == song.expected);
    bench::CountEach(state, "s/event", kEvents);
}
BENCHMARK(MergeLibsmf)->Arg(16)->Arg(512)->Iterations(1)->Unit(benchmark::kMillisecond);
#endif

#ifdef TORV_HAS_PORTSMF
void MergePortsmf(benchmark::State& state) {
    const Song& song = SongOf(static_cast<DWORD>(state.range(0)));
    DWORD count = 0;
    for ([[maybe_unused]] auto _ : state)
        count = MeasuredPortsmf(song);
    // Of a key that a track still holds at its end there may be an end or not.
    const auto apart = std::max(count, song.channelMessages) - std::min(count, song.channelMessages);
    bench::Expect(state, apart <= song.tracks.size());
    bench::CountEach(state, "s/event", kEvents);
}
BENCHMARK(MergePortsmf)->Arg(16)->Unit(benchmark::kMillisecond);
#endif

#ifdef TORV_HAS_TSE3
void MergeTse3(benchmark::State& state) {
    const Song& song = SongOf(static_cast<DWORD>(state.range(0)));
    const bench::TemporaryFile file("torv_merge_bench.mid"); // it reads files alone
    std::ofstream(file.Path(), std::ios::binary)
        .write(reinterpret_cast<const char*>(song.file.data()), static_cast<std::streamsize>(song.file.size()));
    DWORD count = 0;
    for ([[maybe_unused]] auto _ : state)
        count = MeasuredTse3(file.Path());
    bench::Expect(state, count >= song.channelMessages && count <= kEvents);
}
BENCHMARK(MergeTse3)->Arg(16)->Unit(benchmark::kMillisecond);
#endif

#ifdef TORV_HAS_JUCE
void MergeJuce(benchmark::State& state) {
    const Song& song = SongOf(static_cast<DWORD>(state.range(0)));
    uint64_t sum = 0;
    for ([[maybe_unused]] auto _ : state)
        sum = MeasuredJuce(song);
    bench::Expect(state, sum == song.expectedSum);
}
BENCHMARK(MergeJuce)->Arg(16)->Unit(benchmark::kMillisecond);
#endif

#ifdef TORV_HAS_DRUMSTICK
void MergeDrumstick(benchmark::State& state) {
    const Song& song = SongOf(static_cast<DWORD>(state.range(0)));
    bench::Digest digest;
    for ([[maybe_unused]] auto _ : state)
        digest = MeasuredDrumstick(song);
    bench::Expect(state, digest == song.expected);
}
BENCHMARK(MergeDrumstick)->Arg(16)->Unit(benchmark::kMillisecond);
#endif

void ScanBytes(benchmark::State& state) {
    const Song& song = SongOf(static_cast<DWORD>(state.range(0)));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(MeasuredScan(song));
    bench::CountEach(state, "s/event", kEvents);
}
BENCHMARK(ScanBytes)->Arg(16)->Arg(512)->Unit(benchmark::kMillisecond);

} // namespace
