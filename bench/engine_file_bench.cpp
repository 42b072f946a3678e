// Writing an engine file of 2,000,000 messages: CxQuillMidiFile's writing part over prepared buffers, libsmf and JUCE
// over prepared events, and a plain copy of the file's bytes; and the same with the making of the buffers or events, in
// the order of time and, as the encoder does, in eight passes. drumstick holds no events: it is handed one message
// after the other while it writes. JUCE and drumstick leave a status out that was written last, so that their files are
// compared by what they hold. The encoding before it has a benchmark of its own.
#include "bench_file.h"

#include "torv/files/midi_track.h"
#include "torv/files/quill_midi_file.h"

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <vector>

#ifdef TORV_HAS_SMF
#include <smf.h>
#endif
#ifdef TORV_HAS_JUCE
#include <juce_audio_basics/juce_audio_basics.h>
#endif
#ifdef TORV_HAS_DRUMSTICK
#include <QBuffer>
#include <QDataStream>
#include <drumstick/qsmf.h>
#endif

namespace {

constexpr DWORD kTracks = 16;
constexpr DWORD kFewMessages = 20000; // where the work by the square of a track's length does not show
constexpr DWORD kMessages = 2000000;
constexpr DWORD kDivision = 480;
constexpr DWORD kMessageBytes = 3;
constexpr size_t kFileHeader = 14;
constexpr size_t kChunkHeader = 8;

struct Message {
    DWORD delta;
    DWORD tick;
    std::array<BYTE, kMessageBytes> bytes;
};

using Messages = std::vector<Message>;

/// One track's messages: a parameter's number and its value by control changes, most of them a tick or a few apart.
Messages MakeMessages(std::mt19937& random, DWORD count) {
    Messages messages(count);
    DWORD tick = 0;
    for (size_t i = 0; i < messages.size(); ++i) {
        constexpr BYTE kControllers[] = {99, 98, 6, 38};
        const DWORD delta = i % 24 ? 1 + random() % 3 : 1 + random() % 500;
        tick += delta;
        messages[i] = {delta, tick, {0xB0, kControllers[i % 4], static_cast<BYTE>(random() & 0x7F)}};
    }
    return messages;
}

/// The messages of every track, and the file that they must become.
struct Song {
    std::vector<Messages> tracks;
    std::string file;
};

std::string TrackBytes(const Messages& messages) {
    std::string events;
    for (const Message& message : messages) {
        if (message.delta > 0x7F)
            events += static_cast<char>(0x80 | message.delta >> 7);
        events += static_cast<char>(message.delta & 0x7F);
        events.append(reinterpret_cast<const char*>(message.bytes.data()), kMessageBytes);
    }
    events += std::string("\0\xFF\x2F\0", 4);
    std::string track = "MTrk";
    for (int shift = 24; shift >= 0; shift -= 8)
        track += static_cast<char>(events.size() >> shift & 0xFF);
    return track + events;
}

const Song& SongOf(int64_t messages) {
    static std::map<int64_t, Song> songs;
    Song& song = songs[messages];
    if (!song.file.empty())
        return song;
    std::mt19937 random(20);
    song.file = std::string("MThd\0\0\0\6\0\1\0\x10\1\xE0", 14);
    for (DWORD i = 0; i < kTracks; ++i) {
        song.tracks.push_back(MakeMessages(random, static_cast<DWORD>(messages) / kTracks));
        song.file += TrackBytes(song.tracks.back());
    }
    return song;
}

constexpr size_t kInOrder = 1;
constexpr size_t kPasses = 8;

/// The writing part of a save, over buffers as the encoder leaves them: it goes over a track in several passes, one
/// kind of message after the other, so what is read by time is scattered over what was stored.
class EngineFile : public CxQuillMidiFile {
public:
    EngineFile(const Song& song, size_t passes) : m_buffers(kTracks) {
        for (size_t i = 0; i < kTracks; ++i) {
            m_pBuffer = &m_buffers[i];
            m_pBuffer->Create(kFileMode, 0, 1);
            for (size_t pass = 0; pass < passes; ++pass)
                InsertEvery(song.tracks[i], pass, passes);
            WriteMetaEOT(0);
        }
    }
    void Write(const std::string& path) {
        Open(path.c_str(), CFile::modeCreate | CFile::modeReadWrite);
        RiffWriteMidiHeader(1, kTracks, kDivision);
        for (CQuillMidiBuffer& buffer : m_buffers) {
            m_pBuffer = &buffer;
            RiffWriteMidiTrack();
        }
        Close();
    }

private:
    void InsertEvery(const Messages& messages, size_t pass, size_t passes) {
        for (size_t i = pass; i < messages.size(); i += passes)
            m_pBuffer->InsertEventAt(messages[i].tick, messages[i].bytes.data(), kMessageBytes, 0, 1);
        m_pBuffer->SeekToEnd();
    }

    std::vector<CQuillMidiBuffer> m_buffers;
};

[[gnu::noinline]] void MeasuredEngineFile(EngineFile& song, const std::string& path) { song.Write(path); }

[[gnu::noinline]] void MeasuredDocument(const Song& song, size_t passes, const std::string& path) {
    EngineFile(song, passes).Write(path);
}

#ifdef TORV_HAS_SMF
smf_t* MakeLibsmfSong(const Song& song) {
    smf_t* const smf = smf_new();
    bool isMade = smf_set_ppqn(smf, kDivision) == 0;
    for (const Messages& messages : song.tracks) {
        smf_track_t* const track = smf_track_new();
        smf_add_track(smf, track);
        for (Message message : messages)
            smf_track_add_event_delta_pulses(track, smf_event_new_from_pointer(message.bytes.data(), kMessageBytes),
                                             static_cast<int>(message.delta));
        isMade = isMade && smf_track_add_eot_delta_pulses(track, 0) == 0;
    }
    return isMade ? smf : nullptr;
}

[[gnu::noinline]] int MeasuredLibsmf(smf_t* smf, const std::string& path) { return smf_save(smf, path.c_str()); }
#endif

#ifdef TORV_HAS_JUCE
juce::MidiFile MakeJuceSong(const Song& song) {
    juce::MidiFile file;
    file.setTicksPerQuarterNote(kDivision);
    for (const Messages& messages : song.tracks) {
        juce::MidiMessageSequence track;
        for (const Message& message : messages)
            track.addEvent(juce::MidiMessage(message.bytes.data(), kMessageBytes, message.tick));
        file.addTrack(track);
    }
    return file;
}

[[gnu::noinline]] void MeasuredJuce(const juce::MidiFile& song, const std::string& path) {
    juce::FileOutputStream file{juce::File(path)};
    song.writeTo(file);
}

[[gnu::noinline]] void MeasuredJuceDocument(const Song& song, const std::string& path) {
    MeasuredJuce(MakeJuceSong(song), path);
}
#endif

#ifdef TORV_HAS_DRUMSTICK
[[gnu::noinline]] void MeasuredDrumstick(const Song& song, const std::string& path) {
    using drumstick::File::QSmf;
    QSmf file;
    file.setDivision(kDivision);
    file.setFileFormat(1);
    file.setTracks(kTracks);
    QObject::connect(&file, &QSmf::signalSMFWriteTrack, [&](int track) {
        for (const Message& message : song.tracks[static_cast<size_t>(track)])
            file.writeMidiEvent(static_cast<long>(message.delta), message.bytes[0] & 0xF0, message.bytes[0] & 0xF,
                                message.bytes[1], message.bytes[2]);
        file.writeMetaEvent(0, drumstick::File::end_of_track);
    });
    file.writeToFile(QString::fromStdString(path));
}
#endif

[[gnu::noinline]] void MeasuredCopy(const std::string& bytes, const std::string& path) {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
    file.Close();
}

/// The messages of all tracks with their distances, however they are written.
bench::Digest Held(const std::string& file) {
    bench::Digest digest;
    const auto* const bytes = reinterpret_cast<const BYTE*>(file.data());
    for (size_t at = kFileHeader; at + kChunkHeader <= file.size();) {
        const BYTE* const head = bytes + at;
        const DWORD size = static_cast<DWORD>(head[4] << 24 | head[5] << 16 | head[6] << 8 | head[7]);
        CxMidiTrack track;
        track.Attach(head + kChunkHeader, static_cast<DWORD>(std::min<size_t>(size, file.size() - at - kChunkHeader)));
        for (tagEvent event; track.GetEvent(&event);)
            digest.Add(uint64_t{event.delta} << 24 |
                       static_cast<uint64_t>(event.status << 16 | event.data1 << 8 | event.data2));
        at += kChunkHeader + size;
    }
    return digest;
}

template <class Write>
void WriteRow(benchmark::State& state, Write write, bool isSameBytes = true) {
    const bench::TemporaryFile file("torv_engine_bench.mid");
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        std::filesystem::remove(file.Path());
        state.ResumeTiming();
        write(file.Path());
    }
    const std::string& expected = SongOf(state.range(0)).file;
    bench::Expect(state, isSameBytes ? file.Bytes() == expected : Held(file.Bytes()) == Held(expected));
    bench::CountEach(state, "s/event", static_cast<double>(state.range(0)));
}

void WriteTorv(benchmark::State& state) {
    EngineFile song(SongOf(state.range(0)), kPasses);
    WriteRow(state, [&](const std::string& path) { MeasuredEngineFile(song, path); });
}
BENCHMARK(WriteTorv)->Arg(kFewMessages)->Arg(kMessages)->Unit(benchmark::kMillisecond);

void WriteWithDocument(benchmark::State& state) {
    const Song& song = SongOf(state.range(0));
    const auto passes = static_cast<size_t>(state.range(1));
    WriteRow(state, [&](const std::string& path) { MeasuredDocument(song, passes, path); });
}
BENCHMARK(WriteWithDocument)->Args({kMessages, kInOrder})->Args({kMessages, kPasses})->Unit(benchmark::kMillisecond);

#ifdef TORV_HAS_SMF
void WriteLibsmf(benchmark::State& state) {
    static std::map<int64_t, smf_t*> songs; // kept: letting go of one takes minutes
    smf_t*& song = songs[state.range(0)];
    if (!song)
        song = MakeLibsmfSong(SongOf(state.range(0)));
    WriteRow(state, [&](const std::string& path) { MeasuredLibsmf(song, path); });
}
BENCHMARK(WriteLibsmf)->Arg(kFewMessages)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteLibsmf)->Arg(kMessages)->Iterations(1)->Repetitions(1)->Unit(benchmark::kMillisecond); // two minutes
#endif

#ifdef TORV_HAS_JUCE
void WriteJuce(benchmark::State& state) {
    const juce::MidiFile song = MakeJuceSong(SongOf(state.range(0)));
    WriteRow(
        state, [&](const std::string& path) { MeasuredJuce(song, path); }, false);
}
BENCHMARK(WriteJuce)->Arg(kMessages)->Unit(benchmark::kMillisecond);

void WriteWithDocumentJuce(benchmark::State& state) {
    const Song& song = SongOf(state.range(0));
    WriteRow(
        state, [&](const std::string& path) { MeasuredJuceDocument(song, path); }, false);
}
BENCHMARK(WriteWithDocumentJuce)->Arg(kMessages)->Unit(benchmark::kMillisecond);
#endif

#ifdef TORV_HAS_DRUMSTICK
void WriteDrumstick(benchmark::State& state) {
    const Song& song = SongOf(state.range(0));
    WriteRow(
        state, [&](const std::string& path) { MeasuredDrumstick(song, path); }, false);
}
BENCHMARK(WriteDrumstick)->Arg(kMessages)->Unit(benchmark::kMillisecond);
#endif

void CopyBytes(benchmark::State& state) {
    const Song& song = SongOf(state.range(0));
    WriteRow(state, [&](const std::string& path) { MeasuredCopy(song.file, path); });
}
BENCHMARK(CopyBytes)->Arg(kFewMessages)->Arg(kMessages)->Unit(benchmark::kMillisecond);

} // namespace
