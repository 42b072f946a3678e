#include "torv/files/quill_midi_file.h"

#include "allocation_failure.h"
#include "encoding/encoding_fixture.h"
#include "platform/small_disk.h"
#include "platform/temp_folder.h"
#include "values.h"

#include <doctest/doctest.h>

// 120 beats a minute unless a test says otherwise: 480 ticks are 500 ms, 1920 ticks are the presend of 2000 ms.

namespace {

using namespace std::string_literals;

/// A song of several tracks; what is placed goes to the track added last.
struct Song : Chart {
    CSequence& song = m_song;
    int tracks = 0;

    /// The first one is there from the beginning.
    CSequenceObject& Track(const std::string& name, int channel = 0) {
        Close();
        if (tracks++ > 0)
            song.AddObject(m_track = CSequence::CreateObject());
        m_track->SetName(name.c_str());
        m_track->SetChannel(channel);
        m_builder.OpenBuffer(m_track);
        m_tick = 0;
        return *m_track;
    }
    void Signature(DWORD at, DWORD numerator, DWORD exponent) {
        tagMasterEventEntry entry{0, torv::kEventTimeSignature, 0, numerator | exponent << 8, 0};
        song.GetMasterTrack()->MoveTo(at);
        song.GetMasterTrack()->InsertEvent(&entry);
    }
};

/// The class from within, as those who derive from it have it.
struct Inside : CxQuillMidiFile {
    using CxQuillMidiFile::DebugTrace;
    using CxQuillMidiFile::RiffWriteDelta;
    using CxQuillMidiFile::RiffWriteMidiHeader;
    using CxQuillMidiFile::RiffWriteMidiTrack;
    using CxQuillMidiFile::WriteMasterTrack;
    using CxQuillMidiFile::WriteMetaEOT;
    using CxQuillMidiFile::WriteMetaQSBEvent;
    using CxQuillMidiFile::WriteMetaTempo;
    using CxQuillMidiFile::WriteMetaTrackName;

    CQuillMidiBuffer buffer;
    Inside() {
        buffer.Create(0, 2000, 0);
        m_pBuffer = &buffer;
    }
    /// Ticks and bytes.
    std::string Written() {
        std::string text;
        for (const StreamEntry& entry : EntriesOf(buffer))
            text += std::to_string(entry.tick) + std::string(entry.bytes.begin(), entry.bytes.end());
        return text;
    }
};

std::string Saved(Song& song, tagQuillMidiQSBBuffer* qsb = nullptr, DWORD interval = 0) {
    const TempFolder folder;
    song.Close();
    CxQuillMidiFile file;
    file.SetEventInterval(interval);
    file.SetPresendTime(499);                           // out of range: 2000
    file.SetOutMode(CxQuillMidiEncoder::kRealTimeMode); // which a save is not
    CHECK(file.SaveAsFormat1(folder.Path("song.mid").c_str(), &song.song, qsb) == 1);
    CHECK(Values(file.GetErrorMessage(), file.GetPresendTime()) == "CFileException::none 2000");
    CHECK(file.GetOutMode() == CxQuillMidiEncoder::kFileMode);
    return folder.Content("song.mid");
}

/// Control changes on one channel, each a tick after the one before, from pairs of controller and value.
std::string Controls(char status, const std::string& pairs) {
    std::string bytes;
    for (size_t i = 0; i < pairs.size(); i += 2)
        bytes += (i ? "\1"s : ""s) + status + pairs[i] + pairs[i + 1];
    return bytes;
}

} // namespace

TEST_CASE("engine midi file: a small song, byte for byte") {
    Song song;
    song.Tempo(960, 600000); // 1000 ms
    song.Signature(1920, 3, 2);
    song.Track("Voice");
    song.Note(1920, 240)->header.status = 2; // at 2200 ms: sent at 200 ms, which is tick 192
    song.Track("", 3);
    song.Singer(0, 1, 3);         // sent and sung at once: what is written last lies behind the sound's end
    std::string data(9000, '\0'); // which no buffer of the writer holds
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>(i * 37);
    tagQuillMidiQSBBuffer qsb[] = {{reinterpret_cast<const BYTE*>("A\0B\x7F\xFF"), 5},
                                   {reinterpret_cast<const BYTE*>(data.data()), 9000}};
    std::string pieces;
    for (size_t i = 0; i < 75; ++i) // of 119 bytes each, and one of 75: 9000 = 75 x 119 + 75
        pieces +=
            "\0\xFF\x01\x7FQM:00"s + std::to_string(i / 10) + std::to_string(i % 10) + ":" + data.substr(119 * i, 119);
    pieces += "\0\xFF\x01\x53QM:0075:"s + data.substr(8925);
    CHECK(Saved(song, qsb, 1) == "MThd\0\0\0\6\0\1\0\3\x01\xE0"s // format 1, 3 tracks, 480
                                 "MTrk\0\0\0\x34"
                                 "\0\xFF\x03\x0CMaster Track"
                                 "\0\xFF\x51\x03\x07\xA1\x20"           // 500000
                                 "\0\xFF\x58\x04\x04\x02\x18\x08"       // 4/4
                                 "\x87\x40\xFF\x51\x03\x09\x27\xC0"     // at 960, 7 x 128 + 64: 600000
                                 "\x87\x40\xFF\x58\x04\x03\x02\x18\x08" // at 1920: 3/4
                                 "\0\xFF\x2F\0"
                                 "MTrk\0\0\0\xA8"
                                 "\0\xFF\x03\x05Voice"
                                 "\0\xFF\x01\x0DQM:0000:A\0B\x7F\xFF"
                                 "\x81\x40"s + // 192 = 128 + 64
                                     Controls('\xB2',
                                              "\x63\x50\x62\0\6\0\x26\0"                 // opening
                                              "\x63\x50\x62\1\6\x0F\x26\x50"             // 2000 ms ahead, 15 x 128 + 80
                                              "\x63\x50\x62\2\6\x3C\x63\x50\x62\3\6\x64" // note 60, velocity 100
                                              "\x63\x50\x62\4\6\2\x26\x2C"               // 300 ms, 2 x 128 + 44
                                              "\x63\x50\x62\5\6\3"                       // begins and ends the sound
                                              "\x63\x50\x62\x11\6\1\x63\x50\x62\x12\6\1" // one character:
                                              "\x63\x50\x62\x13\6\x61\x26\0"             // a, of no advancement
                                              "\x63\x50\x62\x7F\6\x7F"s) +
                                     "\x8F\x0F\xFF\x2F\0"s // at 2160, where the note ends: 192 + 33 + 15 x 128 + 15
                                     "MTrk\0\0\x27\x18"
                                     "\0\xFF\x03\0"s +
                                     pieces + "\0"s +
                                     Controls('\xB3', "\x63\x60\x62\0\6\0\x26\0\x63\x60\x62\1\6\0\x26\0"
                                                      "\x63\x60\x62\2\6\1" // language
                                                      "\x63\x53\x62\0\6\0\x26\0\x63\x53\x62\1\6\0\x26\0"
                                                      "\x63\x53\x62\2\6\3"s) + // program
                                     "\0\xFF\x2F\0"s);
}

TEST_CASE("engine midi file: deltas as variable-length quantities, bridged where they pass one") {
    const std::string bridge = "\xFF\xFF\xFF\x7F\xFF\1\0"s;
    const std::pair<DWORD, std::string> deltas[] = {
        {0x7F, "\x7F"},
        {0x80, "\x81\0"s},
        {0x3FFF, "\xFF\x7F"},
        {0x4000, "\x81\x80\0"s},
        {0x1FFFFF, "\xFF\xFF\x7F"},
        {0x200000, "\x81\x80\x80\0"s},
        {0x0FFFFFFF, "\xFF\xFF\xFF\x7F"},
        {0x10000000, bridge + "\1"},
        {0x20000005, bridge + bridge + "\7"},
        {0x7FFFFFFF, bridge + bridge + bridge + bridge + bridge + bridge + bridge + bridge + "\7"}};
    for (const auto& [tick, bytes] : deltas) {
        CAPTURE(bytes);
        Song song;
        song.Tempo(tick, 3);
        const std::string expected = bytes + "\xFF\x51\3\0\0\3\0\xFF\x2F\0"s;
        CHECK(Saved(song).substr(53, expected.size()) == expected); // behind header, name, 500000, 4/4
    }
    const TempFolder folder;
    {
        Inside file;
        REQUIRE(file.Open(folder.Path("track").c_str(), CFile::modeCreate | CFile::modeReadWrite));
        file.CreateChunk(torv::ChunkId("MTrk"), 0);
        CHECK(Values{file.RiffWriteDelta(0x0FFFFFFF), file.RiffWriteDelta(0x10000000)} == "1 0");
        CHECK_FALSE(folder.Has("track")); // until it is closed
    }                                     // which going does, with the chunk's size in this class's order
    CHECK(folder.Content("track") == "MTrk\0\0\0\4\xFF\xFF\xFF\x7F"s);
}

TEST_CASE("engine midi file: signatures stand at measures") {
    using Rows = std::vector<std::vector<DWORD>>; // tick, numerator, exponent
    const auto draws = [](tagTimeSignature initial, const Rows& changes, const Rows& expected) {
        Song song;
        song.song.GetMasterTrack()->SetInitialTimeSig(initial);
        for (const auto& change : changes)
            song.Signature(change[0], change[1], change[2]);
        Inside file;
        CHECK(file.WriteMasterTrack(&song.song) == 1);
        Rows rows;
        for (const StreamEntry& entry : EntriesOf(file.buffer))
            if (entry.bytes[1] == 0x58)
                rows.push_back({entry.tick, entry.bytes[3], entry.bytes[4]});
        CHECK(rows == expected);
    };
    // A change within a measure moves to its beginning.
    draws({4, 2}, {{1920 + 500, 3, 3}, {1920 + 500 + 720 * 2, 5, 2}}, {{0, 4, 2}, {1920, 3, 3}, {3360, 5, 2}});
    // A first change at 0 is drawn with its own measures, though they were counted by the initial ones.
    draws({4, 2}, {{0, 3, 2}, {2880, 4, 2}}, {{0, 3, 2}, {1440, 4, 2}});
    // Measure numbers, here of 15 ticks, go round at 65536.
    draws({1, 7}, {{15 * 65530, 2, 7}, {15 * 65530 + 30 * 10, 4, 2}}, {{0, 1, 7}, {982950, 2, 7}, {983250, 4, 2}});
    // 65535 measures of 489600 ticks, though counted by 15, are past the last tick.
    draws({1, 7}, {{0, 255, 0}, {15 * 65535, 4, 2}}, {{0, 255, 0}});
}

TEST_CASE("engine midi file: meta events keep to their bytes, host data to pieces whose numbers go round at 10000") {
    Inside file;
    file.WriteMetaTrackName(std::string(300, 'n').c_str());
    file.WriteMetaTrackName(nullptr);
    file.WriteMetaTempo(0x1000000);
    const Bytes data(239, 'x');
    tagQuillMidiQSBBuffer qsb{data.data(), 239};
    CHECK(file.WriteMetaQSBEvent(&qsb, 9998) == 3);
    file.WriteMetaEOT(5);
    file.DebugTrace(&file.buffer);
    const std::string piece(119, 'x');
    CHECK(file.Written() == "0\xFF\3\xFF" + std::string(255, 'n') + "0\xFF\3\0"s + "0\xFF\x51\3\xFF\xFF\xFF" +
                                "0\xFF\1\x7FQM:9998:" + piece + "0\xFF\1\x7FQM:9999:" + piece + "0\xFF\1\x09QM:0000:x" +
                                "5\xFF\x2F\0"s);
    qsb.size = 119;
    CHECK(file.WriteMetaQSBEvent(&qsb, 0) == 1);
    qsb.data = nullptr;
    CHECK(Values{file.WriteMetaQSBEvent(&qsb, 0), file.WriteMetaQSBEvent(nullptr, 0)} == "0 0");
    file.DebugTrace(nullptr);
    CHECK(file.WriteMetaEOT(0x7FFFFFFF) == 0);                                              // past the last tick
    CHECK(Values{file.RiffWriteMidiHeader(1, 1, 480), file.RiffWriteMidiTrack()} == "0 0"); // no file
}

TEST_CASE("engine midi file: a save that fails leaves what was there, and says why") {
    const TempFolder folder;
    const std::string old = folder.File("old.mid", "old");
    Song song;
    song.Track("Voice");
    for (DWORD i = 0; i < 100; ++i)
        song.Note(1920 + 480 * i, 480);
    song.Track(""); // which still fits when the track before it does not
    song.Close();
    const Bytes data(20000, 'x');
    tagQuillMidiQSBBuffer qsb[] = {{data.data(), 20000}, {}};
    CxQuillMidiFile file;
    const auto failure = [&](const std::string& path) -> std::string {
        CHECK(Values{file.SaveAsFormat1(path.c_str(), &song.song, qsb), file.IsOpen()} == "0 0");
        return file.GetErrorMessage();
    };
    for (const std::string& none : {folder.Path("none/new.mid"), ""s})
        CHECK(failure(none) == "CFileException::badPath");
    folder.Folder("sub.mid");
    CHECK(failure(folder.Path("sub.mid")) == "CFileException::accessDenied");
#if !defined(_WIN32)
    for (const char* const name : {"old.mid", "new.mid"})
        for (const rlim_t room : {0, 10, 20, 9000, 30000}) { // full in the midst of a track, too
            const SmallDisk disk(room);
            CHECK(failure(folder.Path(name)) == "CFileException::diskFull");
        }
    {
        const SmallDisk disk(10);
        file.Open(old.c_str(), CFile::modeCreate | CFile::modeReadWrite);
        CHECK(Values{file.Write(data.data(), 20000), file.Close()} == "0 0"); // what lacks a part is not put in place
    }
#endif
    CHECK(Values{file.SaveAsFormat1(nullptr, &song.song, nullptr), file.SaveAsFormat1(old.c_str(), nullptr, qsb)} ==
          "0 0");
    CHECK(file.GetErrorMessage() == "CFileException::none"s); // no file error, and none of the save before
    CSequence noMaster;
    CHECK(file.SaveAsFormat1(old.c_str(), &noMaster, nullptr) == 0);
    CMasterTrack noEvents;
    noMaster.Create(&noEvents);
    CHECK(file.SaveAsFormat1(old.c_str(), &noMaster, nullptr) == 0);
    CHECK(file.SaveAsFormat0(folder.Path("new.mid").c_str(), &song.song, qsb) == 1); // as a save that went well
    CHECK(folder.Content("old.mid") == "old");
    CHECK(folder.Names() == std::set<std::string>{"old.mid", "sub.mid"});
}

TEST_CASE("engine midi file: a song for which memory does not suffice leaves the old file") {
    const TempFolder folder;
    Song song;
    song.Tempo(960, 600000);
    song.Note(1920, 480);
    for (int i = 0; i < 100; ++i)
        AddPoint(song.Chart::Track().GetPitchBendBreakPointList(), 2000 + i, i);
    song.Close();
    const std::string whole = Saved(song);
    CxQuillMidiFile file;
    FailEachAllocation([&](AllocationFailure& failure) {
        const std::string path = folder.File("song.mid", "old");
        const int saved = failure.During([&] { return file.SaveAsFormat1(path.c_str(), &song.song, nullptr); });
        CHECK(saved == !failure.HasHappened());
        CHECK(folder.Content("song.mid") == (saved ? whole : "old"));
        CHECK(folder.Names().size() == 1);
    });
}
