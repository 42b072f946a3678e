#include "command/midi_bytes.h"

#include "torv/songs/lyric_line.h"
#include "torv/songs/midi_reader.h"
#include "torv/songs/nearest_names.h"
#include "torv/songs/song_error.h"
#include "torv/songs/syllables.h"
#include "torv/songs/tempo_trail.h"
#include "torv/songs/text_encoding.h"
#include "torv/songs/voice_line.h"

#include "torv/platform/language.h"
#include "torv/score/master_track.h"

#include <doctest/doctest.h>

#include <cmath>

using namespace torv::songs;

namespace {

MidiData Read(const FileBytes& bytes) { return ReadMidiData(bytes); }

std::string ErrorOf(const FileBytes& bytes) {
    try {
        ReadSong(bytes, "t.mid");
    } catch (const SongError& error) {
        return error.what();
    }
    return {};
}

std::vector<std::string> TextsOf(const std::vector<std::string>& events, bool karaoke) {
    std::vector<MidiText> texts;
    for (const std::string& event : events)
        texts.push_back({0, !karaoke, event});
    std::vector<std::string> out;
    for (const Syllable& syllable : ReadLyricLine(texts, karaoke, std::nullopt).syllables)
        out.push_back(syllable.prolongs ? "~" : syllable.word.text + (syllable.word.hyphenAfter ? "-" : ""));
    return out;
}

using Texts = std::vector<std::string>;

} // namespace

TEST_CASE("MIDI files: divisions become 480 ticks, times of SMPTE become milliseconds") {
    const auto noteOf = [](int division) {
        TrackBytes track;
        track.Meta(0, 0x51, "\x0F\x42\x40").On(100, 60).Off(100, 60); // a second a quarter
        const MidiData song = Read(MidiFile(0, division, {track}));
        const MidiNote note = song.tracks.at(0).notes.at(0);
        return std::vector<uint32_t>{note.tick, note.length, song.tempos.at(0).microsecondsPerQuarter};
    };
    CHECK(noteOf(96) == std::vector<uint32_t>{500, 500, 1000000});
    CHECK(noteOf(480) == std::vector<uint32_t>{100, 100, 1000000});
    CHECK(noteOf(1024) == std::vector<uint32_t>{47, 47, 1000000});    // 46.875, 93.75
    CHECK(noteOf(0xE728) == std::vector<uint32_t>{100, 100, 480000}); // 25 frames of 40: a tick a millisecond
    CHECK(noteOf(0xE350) == std::vector<uint32_t>{42, 41, 480000});   // 29.97 frames of 80: 0.4171 ms; 41.7, 83.4
}

TEST_CASE("MIDI files: running status, zero velocity, overlaps of one key, notes without an end") {
    TrackBytes track;
    track.On(0, 60).Event(10, {62, 90}).Event(10, {60, 0}); // running status; velocity 0 ends
    track.On(0, 64).On(5, 64).Off(5, 64).Off(5, 64).On(0, 70);
    const MidiData song = Read(MidiFile(1, 480, {TrackBytes().Meta(0, 3, "Conductor"), track.Meta(100, 1, "end")}));
    REQUIRE(song.tracks.size() == 2);
    std::vector<std::vector<uint32_t>> rows;
    for (const MidiNote& note : song.tracks[1].notes)
        rows.push_back({note.tick, note.length, static_cast<uint32_t>(note.key)});
    CHECK(rows ==
          std::vector<std::vector<uint32_t>>{{0, 20, 60}, {10, 125, 62}, {20, 10, 64}, {25, 10, 64}, {35, 100, 70}});
    CHECK(song.tracks[0].name == "Conductor");

    TrackBytes odd; // four bytes of tempo, with a zero before or behind; a velocity of eight bits
    odd.Meta(0, 0x51, std::string("\0\x07\xA1\x20", 4)).Meta(480, 0x51, std::string("\x07\xA1\x20\0", 4));
    odd.Event(0, {0x90, 60, 200}).Off(480, 60);
    const MidiData read = Read(MidiFile(0, 480, {odd}));
    CHECK(read.tempos.at(0).microsecondsPerQuarter == 500000);
    CHECK(read.tempos.at(1).microsecondsPerQuarter == 500000);
    CHECK(read.tracks.at(0).notes.at(0).velocity == 127);
}

TEST_CASE("MIDI files: one that is cut anywhere is an error with a place, never more") {
    TrackBytes track;
    track.Lyric(0, "la").On(0, 60).Off(480, 60);
    const FileBytes whole = MidiFile(1, 480, {TrackBytes().Meta(0, 0x51, "\x07\xA1\x20"), track});
    CHECK(ErrorOf(whole).empty());
    for (size_t size = 0; size < whole.size(); ++size) {
        const std::string error = ErrorOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        CHECK(error.find("t.mid: ") == 0);
    }
    CHECK(ErrorOf({'R', 'I', 'F', 'F'}).find("not a standard MIDI file") != std::string::npos);
    FileBytes patterns = whole;
    patterns[9] = 2;
    CHECK(ErrorOf(patterns).find("format 2") != std::string::npos);
    FileBytes broken = whole;
    broken[broken.size() - 12] = 0xF4; // a status that is none
    CHECK(ErrorOf(broken).find("track 2 is broken") != std::string::npos);
    CHECK(ErrorOf(MidiFile(1, 480, {TrackBytes().On(0, 60).Off(7, 188)})).find("the key 188 at tick 7") !=
          std::string::npos);
    CHECK(ErrorOf(MidiFile(1, 0, {track})).find("division is 0") != std::string::npos);
}

TEST_CASE("lyrics: what parts words and what joins them") {
    // With blanks in use, their absence joins.
    CHECK(TextsOf({"Twin", "kle ", "star"}, false) == Texts{"Twin-", "kle", "star"});
    CHECK(TextsOf({"hel-", "lo", "-", "_"}, false) == Texts{"hel-", "lo", "~", "~"});
    CHECK(TextsOf({"Hap", "py", "day"}, false) == Texts{"Hap", "py", "day"}); // no blank at all says nothing
    CHECK(TextsOf({"la__", "to_the", "end\r"}, false) == Texts{"la", "to the", "end"});
    CHECK(TextsOf({"@TTitle", "Words by", "\\A", "ma", "zing", " grace", "/how", " sweet"}, true) ==
          Texts{"A-", "ma-", "zing", "grace", "how", "sweet"});
    CHECK(TextsOf({"\xE3\x81\x95", "\xE3\x81\x8F ", "\xE3\x82\x89"}, false) ==
          Texts{"\xE3\x81\x95", "\xE3\x81\x8F", "\xE3\x82\x89"}); // kana need no hyphen
}

TEST_CASE("lyrics: encodings told apart, and what the library's code page makes of them") {
    CHECK(DetectEncoding("plain") == TextEncoding::Utf8);
    CHECK(DetectEncoding("\xE3\x81\x95\xE3\x81\x8F") == TextEncoding::Utf8);
    CHECK(DetectEncoding("\x82\xB3 \x82\xAD \x82\xE7") == TextEncoding::ShiftJis);
    CHECK(DetectEncoding("gr\xFC\xDF"
                         "e caf\xE9 \xE9t\xE9") == TextEncoding::Latin1); // valid Shift-JIS, but no kana
    CHECK(TextEncodingNamed("Shift_JIS") == TextEncoding::ShiftJis);
    CHECK_FALSE(TextEncodingNamed("utf-7"));
    CHECK(ToUtf8("caf\xE9", TextEncoding::Latin1) == "caf\xC3\xA9");
    CHECK(ToUtf8("\x82\xB3", TextEncoding::ShiftJis) == "\xE3\x81\x95");
    CHECK(ToUtf8("a\xFF", TextEncoding::Utf8) == "a\xEF\xBF\xBD");
    CHECK(Utf8ToCodePage932("caf\xC3\xA9 \xE2\x80\x99tis \xE3\x81\x95\xF0\x9F\x8E\xB5") == "cafe 'tis \x82\xB3");
    CHECK(Utf8ToCodePage932("T\xC5\x8Dky\xC5\x8D \xC5\x92uvre \xC5\xBEivot o\xCC\x84 \xC4\xB2\xC5\xBF \xC3\x97") ==
          "Tokyo OEuvre zivot o IJs x");
    CHECK((HasKana("\xEF\xBD\xB1") && !HasKana("abc") && HasKanji("\xE6\xA1\x9C") && !HasKanji("\xE3\x81\x95")));
    CHECK(LooksJapanese({"sa", "ku", "ra", "shi", "n", "kyo", "tte"}));
    CHECK_FALSE(LooksJapanese({"no", "me", "to"})); // too short to tell
    CHECK_FALSE(LooksJapanese({"sa", "ku", "ra", "ra", "ra", "ra", "with"}));
}

TEST_CASE("lyrics: no character is cut") {
    // Trail bytes may be letters and signs: so, no, the wide HELLO, hyphens in plain text only.
    const struct {
        std::string text;
        int language;
        Texts syllables;
    } rows[] = {
        {"la-la le", torv::kEnglish, {"la-", "la le"}},
        {"\x83\x5C\x94\x5C x", torv::kEnglish, {"\x83\x5C\x94\x5C", "x"}},
        {"a\x82\x67\x82\x64-b", torv::kEnglish, {"a", "\x82\x67\x82\x64", "-", "b"}},
        {std::string(31, 'a') + "\x83\x5C", torv::kEnglish, {std::string(31, 'a'), "\x83\x5C"}},
        {std::string(33, 'a'), torv::kEnglish, {std::string(32, 'a'), "a"}},
        {"\xB6\xDE\x82\xB3\xB7\xAC\xB0n a", torv::kJapanese, {"\xB6\xDE", "\x82\xB3", "\xB7\xAC\xB0", "n", "a"}},
        {"\x82\xAB\x82\xE1\x83\x5C", torv::kJapanese, {"\x82\xAB\x82\xE1", "\x83\x5C"}},
        {"", torv::kJapanese, {""}},
        {"la", 7, {"la"}},
    };
    for (const auto& row : rows) {
        CAPTURE(row.text);
        CHECK(CutIntoSyllables(row.text, row.language) == row.syllables);
    }
    CHECK(CutAtCharacter("caf\xC3\xA9", 4) == "caf");
    CHECK(CutAtCharacter("caf\xC3\xA9", 5) == "caf\xC3\xA9");
    CHECK(CutAtCharacter("\x83\x5C\x82\xB3\x82\xB3", 5) == "\x83\x5C\x82\xB3");
    CHECK(CutAtCharacter("caf\xE9 \xE9t\xE9", 7) == "caf\xE9 \xE9t");
}

TEST_CASE("voice: one note at a time, joined where they meet, syllables where they fall") {
    TrackBytes words, notes, bass;
    words.Lyric(0, "one").Lyric(470, "two").Lyric(10, "three").Lyric(1440, "lost");
    notes.On(0, 60)
        .On(0, 64)
        .Off(450, 60)
        .Off(0, 64)
        .On(30, 62)
        .Off(240, 62)
        .On(0, 63)
        .Off(240, 63)
        .On(0, 65)
        .On(100, 67)
        .Off(100, 65)
        .Off(100, 67);
    for (int i = 0; i < 4; ++i)
        bass.On(i ? 30 : 7, 36).Off(90, 36);
    const Song song = ReadSong(MidiFile(1, 480, {words, bass, notes}), "t.mid");
    REQUIRE(song.parts.size() == 2);
    CHECK_FALSE(HasWords(song.parts[0], 1));
    CHECK(song.parts[1].track == 3);
    CHECK(song.remarks == Texts{"track 3: 1 syllable left out: no note sounds there"});
    const VoiceLine line = MakeVoiceLine(song.parts[1]);
    CHECK(line.cutNotes == 2); // the chord's lower note, and 65 under 67
    REQUIRE(line.notes.size() == 5);
    std::vector<std::vector<int>> rows;
    for (const SungNote& note : line.notes)
        rows.push_back({static_cast<int>(note.tick), static_cast<int>(note.length), note.key, note.joined});
    // A gap of 30 ticks is closed.
    CHECK(rows == std::vector<std::vector<int>>{
                      {0, 480, 64, 0}, {480, 240, 62, 1}, {720, 240, 63, 1}, {960, 100, 65, 1}, {1060, 200, 67, 1}});
    REQUIRE(line.notes[0].words.size() == 1);
    CHECK(line.notes[0].words[0].text == "one");
    REQUIRE(line.notes[1].words.size() == 2); // a little early counts
    CHECK(line.notes[1].words[1].text == "three");
    CHECK(line.notes[2].words.empty());
}

TEST_CASE("measures: after the meters, by number, and the bar line behind the last") {
    Song song;
    song.end = 12000;
    // Measures 1 and 2 are 4/4, 3 is cut by a meter, measures of 3/4 and then of 6/8 follow.
    song.meters = {{7680, 6, 3}, {4800, 5, 0}, {4800, 3, 2}, {0, 4, 9}};
    CompleteSong(song);
    const uint32_t ticks[] = {0, 1920, 3840, 4800, 6240, 7680, 9120, 10560, 12000};
    for (int measure = 1; measure <= 9; ++measure)
        CHECK(TickOfMeasure(song, measure) == ticks[measure - 1]);
    CHECK_THROWS_AS(TickOfMeasure(song, 10), SongError);
    CHECK(TickOfMeasure({}, 1) == 0);
    CHECK_THROWS_AS(TickOfMeasure({}, 2), SongError);
}

TEST_CASE("names: found by any spelling and by an only beginning; else the nearest are told") {
    const std::vector<std::string> names{"p",      "pp", "Soft Attack", "Soft Release", "Hana", "hana",
                                         "Accent", "x1", "x2"};
    struct Row {
        const char* wanted;
        int index;
    };
    for (const Row& row : {Row{"pp", 1}, Row{"P", 0}, Row{"soft attack", 2}, Row{"soft", -1}, Row{"acc", 6},
                           Row{"hana", 5}, Row{"HANA", 4}, Row{"", -1}, Row{"x", -1}}) {
        CAPTURE(row.wanted);
        const auto found = FindName(names, row.wanted);
        CHECK((found ? static_cast<int>(*found) : -1) == row.index);
    }
    CHECK(SuggestNames(names, "akcent") == "did you mean Accent, Hana or hana?");
    CHECK(SuggestNames({"Alice", "Hana"}, "hannah") == "did you mean Hana or Alice?");
    CHECK(SuggestNames({}, "x") == "there is none at all");
}

TEST_CASE("tempo: a thousand changes drift by no more than half a millisecond") {
    std::vector<Tempo> tempos;
    double exact = 0;
    std::vector<double> times;
    for (uint32_t i = 0; i < 1000; ++i) {
        tempos.push_back({i * 37, 400000 + i * 331 % 300000});
        times.push_back(exact);
        exact += 37.0 * tempos.back().microsecondsPerQuarter / 480000;
    }
    uint64_t kept = 0;
    const auto steady = WithoutDrift(tempos);
    REQUIRE(steady.size() == tempos.size());
    for (size_t i = 0; i + 1 < steady.size(); ++i) {
        CHECK(std::abs(static_cast<double>(kept) - times[i]) <= 0.5);
        kept += CMasterTrack::TicksToTime(37, steady[i].microsecondsPerQuarter);
    }
    CHECK(MillisecondsAt(tempos, 37 * 999) == doctest::Approx(times[999]));
    CHECK(MillisecondsAt({}, 480) == 500);
    CHECK(MillisecondsAt({{480, 1000000}}, 960) == 1500);
    CHECK(WithoutDrift({}).at(0).microsecondsPerQuarter == 500000);
    CHECK(WithoutDrift({{0, 500000}, {480, 1}}).at(0).microsecondsPerQuarter == 500000); // exact already
}
