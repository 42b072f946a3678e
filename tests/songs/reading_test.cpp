#include "command/midi_bytes.h"
#include "values.h"

#include "torv/songs/lyric_line.h"
#include "torv/songs/midi_reader.h"
#include "torv/songs/nearest_names.h"
#include "torv/songs/song_error.h"
#include "torv/songs/syllables.h"
#include "torv/songs/tempo_trail.h"
#include "torv/songs/text_encoding.h"
#include "torv/songs/voice_line.h"
#include "torv/songs/word_fit.h"

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
    CHECK(noteOf(1024) == std::vector<uint32_t>{47, 47, 1000000});      // 46.875, 93.75
    CHECK(noteOf(0xE728) == std::vector<uint32_t>{100, 100, 480000});   // 25 frames of 40: a tick a millisecond
    CHECK(noteOf(0xE301) == std::vector<uint32_t>{3337, 3336, 480000}); // 29.97 frames of 33.37 ms: 3336.7, 6673.3
}

TEST_CASE("MIDI files: running status, zero velocity, overlaps of one key, notes without an end") {
    TrackBytes track;
    track.On(0, 60).Event(10, {62, 90}).Event(10, {60, 0}); // running status; velocity 0 ends
    track.On(0, 64).On(5, 64).Off(5, 64).Off(5, 64).On(0, 70).Event(100, {0xB0, 123, 0}); // all notes off
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

TEST_CASE("MIDI files: of one that is damaged what is whole is read, with a remark") {
    TrackBytes track;
    track.Lyric(0, "la").On(0, 60).Off(480, 60).Lyric(0, "lo").On(0, 62).Off(480, 62);
    const FileBytes whole = MidiFile(1, 480, {TrackBytes().Meta(0, 0x51, "\x07\xA1\x20"), track});
    CHECK(Read(whole).remarks.empty());
    TrackBytes many; // more than a byte counts
    for (int i = 0; i < 100; ++i)
        many.On(0, 60).Off(480, 60);
    CHECK(Read(RmiFile(MidiFile(0, 480, {many}))).tracks.at(0).notes.size() == 100);
    size_t most = 0;
    for (size_t size = 0; size < whole.size(); ++size) {
        const FileBytes cut{whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)};
        if (size < 14) {
            CHECK(ErrorOf(cut).find("t.mid: ") == 0);
            continue;
        }
        const Song song = ReadSong(cut, "t.mid");
        CHECK_FALSE(song.remarks.empty());
        const size_t notes = song.parts.empty() ? 0 : song.parts[0].notes.size();
        CHECK(notes >= most); // never fewer of a longer file
        most = notes;
    }
    CHECK(most == 2);
    const struct {
        const char* fault;
        size_t at; // from the end
        FileBytes bytes;
        const char* remark;
    } rows[] = {
        {"the number of tracks", whole.size() - 11, {9}, "has 2 tracks, and its header says 9"},
        {"a size that is too large", 4 + 34, {1, 2, 3, 4}, "cut short inside track 2"},
        {"a key that is none", 4 + 2, {188}, "track 2 is broken after tick 960"},
        {"a status that is none", 4 + 14, {0xF4}, "track 2 is broken after tick 480"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.fault);
        FileBytes bytes = whole;
        std::copy(row.bytes.begin(), row.bytes.end(), bytes.end() - static_cast<std::ptrdiff_t>(row.at));
        const Song song = ReadSong(bytes, "t.mid");
        REQUIRE(song.remarks.size() == 1);
        CHECK(song.remarks[0].find(row.remark) == 0);
        REQUIRE(song.parts.size() == 1);
        CHECK(song.parts[0].notes.at(0).words.at(0).text == "la");
    }
    CHECK(ErrorOf({'R', 'I', 'F', 'F'}).find("neither a standard MIDI file") != std::string::npos);
    CHECK(ErrorOf(FileBytes(1 << 20)).find("neither a standard MIDI file") != std::string::npos);
    FileBytes patterns = MidiFile(1, 480, {track, TrackBytes().On(480, 60).Off(0, 60)});
    patterns[9] = 2;
    const Song played = ReadSong(patterns, "t.mid");
    CHECK(played.parts.at(1).notes.at(0).tick == 960 + 480);
    CHECK(played.remarks == Texts{"is of format 2: its 2 patterns follow one after the other",
                                  "1 note ends where it begins and is hardly heard"});
    patterns[9] = 3;
    CHECK(ErrorOf(patterns).find("format 3") != std::string::npos);
    CHECK(ErrorOf(MidiFile(1, 0, {track})).find("division is 0") != std::string::npos);
}

TEST_CASE("MIDI files: what a channel says beside its notes") {
    TrackBytes track;
    track.Meta(0, 4, "Choir").Meta(0, 0x59, std::string("\xFD\x01", 2)).Event(0, {0xC3, 52}).Event(0, {0xC3, 1});
    track.Event(0, {0xB3, 101, 0})
        .Event(0, {0xB3, 100, 0})
        .Event(0, {0xB3, 6, 12})
        .Event(0, {0xB3, 38, 50}); // bends of 12.5 semitones
    track.On(10, 60, 3).Event(0, {0xE3, 0, 0x60}).Event(5, {0xB3, 11, 64}).Event(0, {0xB3, 64, 127}).Off(5, 60, 3);
    const Song song = ReadSong(MidiFile(0, 480, {track}), "");
    const Part& part = song.parts.at(0);
    CHECK(part.instrument == "Choir");
    CHECK(part.channel == 3);
    CHECK(part.program == 52);
    REQUIRE(part.bends.size() == 1);
    CHECK(part.bends[0].semitones == 6.25); // half of it
    REQUIRE(part.controllers.size() == 1);
    CHECK(part.controllers[0].tick == 15);
    CHECK(part.controllers[0].value == 64);
    CHECK(song.keys.at(0).fifths == -3);
    CHECK(song.keys.at(0).minor);
}

TEST_CASE("lyrics: what parts words and what joins them") {
    // With blanks in use, their absence joins.
    CHECK(TextsOf({"Twin", "kle ", "star"}, false) == Texts{"Twin-", "kle", "star"});
    CHECK(TextsOf({"hel-", "lo", "-", "_"}, false) == Texts{"hel-", "lo", "~", "~"});
    CHECK(TextsOf({"Twin", "kle ", "star", "_", "how", "-", "ev", "er"}, false) ==
          Texts{"Twin-", "kle", "star", "~", "how-", "~", "ev-", "er"}); // '_' is drawn behind words only
    CHECK(TextsOf({"A", "-maz", "-ing", "o~er",
                   "th\xE2\x80\xBF"
                   "e"},
                  false) == Texts{"A-", "maz-", "ing", "o er", "th e"});
    CHECK(TextsOf({"Hap", "py", "day"}, false) == Texts{"Hap", "py", "day"}); // no blank at all says nothing
    CHECK(TextsOf({"la__", "to_the", "end\r"}, false) == Texts{"la", "to the", "end"});
    CHECK(TextsOf({"{@JP}{#Title=x}", "\xEF\xBB\xBFhel-", "{@x}l\xC9"}, false) == Texts{"hel-", "l\xEF\xBE\x89"});
    CHECK(TextsOf({std::string("\xFF\xFEh\0i\0", 6)}, false) == Texts{"hi"});
    CHECK(TextsOf({"@TTitle", "Words by", "\\A", "ma", "zing", " grace", "/how", " sweet"}, true) ==
          Texts{"A-", "ma-", "zing", "grace", "how", "sweet"});
    CHECK(TextsOf({"[Intro]", "(Verse ", "2) ", "(Oh) ", "Verse ", "Ref. ", "Refrain: Glo\xC2\xAD", "ri-"}, false) ==
          Texts{"(Oh)", "Verse", "Ref.", "Glo-", "ri-"});
    CHECK(TextsOf({"\xE3\x81\x95", "\xE3\x81\x8F ", "\xE3\x82\x89"}, false) ==
          Texts{"\xE3\x81\x95", "\xE3\x81\x8F", "\xE3\x82\x89"}); // kana need no hyphen
}

TEST_CASE("lyrics: encodings told apart, and what the library's code page makes of them") {
    CHECK(DetectEncoding("plain") == kUtf8);
    CHECK(DetectEncoding("\xE3\x81\x95\xE3\x81\x8F") == kUtf8);
    CHECK(DetectEncoding("\x82\xB3 \x82\xAD \x82\xE7") == kShiftJis);
    CHECK(DetectEncoding("gr\xFC\xDF"
                         "e caf\xE9 \xE9t\xE9") == kWestern); // valid Shift-JIS, but no kana
    CHECK(DetectEncoding("c\x9Cur") == kWestern);             // Windows' own letters
    CHECK(ToUtf8("c\x9Cur", kWestern) == "c\xC5\x93ur");
    CHECK(DetectEncoding("\xBB\xB8\xD7 \xBB\xB8\xD7 \xC9\xD4\xD3") == kShiftJis); // half-width katakana
    CHECK(ToUtf8("\xBB", kShiftJis) == "\xEF\xBD\xBB");
    CHECK(DetectEncoding("\xA4\xB5 \xA4\xAF") == kEucJp); // or half-width katakana
    // Kana decide, where they are a third of what is no ASCII, in either script; bytes that are no character refuse.
    CHECK(DetectEncoding("\x83\x54\x83\x4E\x83\x89") == kShiftJis);        // katakana alone
    CHECK(DetectEncoding("\x8A\xBF\x8E\x9A\x82\xB3") == kShiftJis);        // two kanji, one kana
    CHECK(DetectEncoding("\x8A\xBF\x8E\x9A\x8A\xBF\x82\xB3") == kWestern); // three
    CHECK(DetectEncoding("\x8A\xBF\x8E\x9A") == kWestern);                 // none
    CHECK(DetectEncoding("\x82\xB3\x82\xAD\xFF") == kWestern);
    CHECK(DetectEncoding("20\xB0 more") == kWestern);
    CHECK(ToUtf8("\xA4\xB5", kEucJp) == "\xE3\x81\x95");
    CHECK(ToUtf8("\xCF", *TextEncodingNamed("koi8-r")) == "\xD0\xBE");
    CHECK(TextEncodingNamed("Shift_JIS") == kShiftJis);
    CHECK_FALSE(TextEncodingNamed("utf-77"));
    CHECK(ToUtf8("caf\xE9", kWestern) == "caf\xC3\xA9");
    CHECK(ToUtf8("\x82\xB3", kShiftJis) == "\xE3\x81\x95");
    CHECK(ToUtf8("a\xFF", kUtf8) == "a\xEF\xBF\xBD");
    CHECK(Utf8ToCodePage932("caf\xC3\xA9 \xE2\x80\x99tis \xE3\x81\x95\xF0\x9F\x8E\xB5") == "cafe 'tis \x82\xB3");
    CHECK(Utf8ToCodePage932("\xEF\xBC\xA1\xEF\xBC\x92 s\xC7\xBD") == "A2 sae");
    CHECK(Utf8ToCodePage932("di\xCA\xBC \xEF\xAC\x81n ti\xE1\xBA\xBDng \xC8\x99i\xC2\xA0o") == "di' fin tieng si o");
    CHECK(Utf8ToCodePage932("T\xC5\x8Dky\xC5\x8D \xC5\x92uvre \xC5\xBEivot o\xCC\x84 \xC4\xB2\xC5\xBF \xC3\x97") ==
          "Tokyo OEuvre zivot o IJs x");
    CHECK(Values{HasKana("\xEF\xBD\xB1"), HasKana("abc")} == "1 0");
    CHECK(Values{HasKanji("\xE6\xA1\x9C"), HasKanji("\xE3\x81\x95")} == "1 0");
    CHECK(LooksJapanese({"sa", "ku", "shi", "n", "kyo", "tte"}));
    CHECK_FALSE(LooksJapanese({"sa", "ku", "shi", "n", "kyo"})); // too short to tell
    CHECK(LooksJapanese({"Baby", "\xE3\x81\x95"}));
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
        {"", torv::kJapanese, {"-"}},
        {"(sa, \x82\xB3\x81\x5B\x81\x42\x81\xF4!", torv::kJapanese, {"(sa,", "\x82\xB3", "\x81\x5B"}},
        {"\x81\x67go!\x81\x68", torv::kEnglish, {"go!"}},
        {"\x81\xF4", torv::kEnglish, {"-"}},
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

TEST_CASE("words: every line to the part that it fits, under the notes that are next to it") {
    // Three voices of one rhythm, words with the second alone; a dense accompaniment and drums that begin everywhere.
    TrackBytes soprano, alto, flute, piano, drums;
    soprano.Meta(0, 3, "S");
    alto.Meta(0, 3, "A");
    flute.Meta(0, 3, "F").Event(0, {0xC4, 73});
    for (int i = 0; i < 8; ++i) {
        const std::string syllable(1, static_cast<char>('a' + i));
        soprano.On(0, 72, 0).Off(480, 72, 0);
        alto.Lyric(0, syllable).Lyric(0, "2" + syllable).On(0, 65, 1).Off(480, 65, 1);
        flute.On(0, 84, 4).Off(480, 84, 4);
        for (int j = 0; j < 2; ++j) {
            piano.On(0, 48, 2).Off(240, 48, 2);
            drums.On(0, 40, 9).Off(240, 40, 9);
        }
    }
    const Song song = ReadSong(MidiFile(1, 480, {drums, piano, flute, soprano, alto}), "");
    REQUIRE(song.parts.size() == 5);
    std::vector<bool> sings;
    for (const Part& part : song.parts)
        sings.push_back(HasWords(part, 1));
    CHECK(sings == std::vector<bool>{false, false, false, true, true});
    CHECK(song.remarks == Texts{"S: sings the words of A, with which it moves"});
    CHECK(CountVerses(song) == 2);
    CHECK(song.parts[3].notes[2].words == song.parts[4].notes[2].words);
    CHECK(song.parts[4].notes[2].words.at(1).text == "2c");

    // Verses in tracks of their own behind each singing track are that one's.
    TrackBytes high, low, lines[4];
    for (int i = 0; i < 4; ++i) {
        high.On(0, 72).Off(480, 72);
        low.On(0, 60).Off(480, 60);
        for (size_t line = 0; line < 4; ++line)
            lines[line].Lyric(i > 0 ? 480 : 0, std::string(1, static_cast<char>('a' + line)));
    }
    const Song hymn = ReadSong(MidiFile(1, 480, {high, lines[0], lines[1], low, lines[2], lines[3]}), "");
    CHECK(hymn.parts.at(0).notes.at(3).words.at(1).text == "b");
    CHECK(hymn.parts.at(1).notes.at(3).words.at(0).text == "c");
    CHECK(hymn.parts[1].notes[3].words.at(1).verse == 2);

    // Words in a track of several channels are not the first one's.
    TrackBytes both;
    both.Meta(0, 3, "S:S");
    for (int i = 0; i < 4; ++i)
        both.Lyric(0, "la ").On(0, 48, 1).On(0, 72, 4).Off(240, 48, 1).Off(0, 72, 4).On(0, 50, 1).Off(240, 50, 1);
    const Song shared = ReadSong(MidiFile(0, 480, {both}), "");
    CHECK_FALSE(HasWords(shared.parts.at(0), 1));
    CHECK(HasWords(shared.parts.at(1), 1));
    CHECK(shared.parts[1].name == "S");

    Part part;
    for (const uint32_t tick : {0, 480, 960, 1440, 1920})
        part.notes.push_back({tick, 400, 60, 80, {}});
    std::vector<Syllable> syllables;
    for (const auto& [tick, text] : {std::pair<uint32_t, const char*>{40, "late"},
                                     {300, "early"},
                                     {960, "met"},
                                     {1100, "more"},
                                     {1430, "near"},
                                     {5000, "lost"}})
        syllables.push_back({tick, {1, text, false, false, false, {}}, false});
    Song pair; // each line finds its part, though both fit either
    pair.parts = {part, part};
    FitWords(pair, {{syllables}, {syllables}});
    CHECK(HasWords(pair.parts[0], 1));
    CHECK(HasWords(pair.parts[1], 1));
    CHECK(PlaceWords(syllables, part) == 1);
    Texts placed;
    for (const Note& note : part.notes)
        for (const Word& word : note.words)
            placed.push_back(std::to_string(note.tick) + word.text);
    CHECK(placed == Texts{"0late", "480early", "960met", "960more", "1440near"});
}

TEST_CASE("voice: a refrain under one verse is sung in all, a vowel that goes on is not") {
    const auto sung = [](const std::vector<const char*>& verses, int verse) {
        Part part;
        for (uint32_t i = 0; i < verses.size(); ++i) {
            part.notes.push_back({i * 480, 480, 60, 80, {}});
            for (const char* each = verses[i]; *each; ++each)
                part.notes.back().words.push_back({*each - '0', std::string(1, *each), false, false, false, {}});
        }
        const VoiceLine line = MakeVoiceLine(part, verse);
        std::string text = std::to_string(line.refrainWords) + " ";
        for (const SungNote& note : line.notes)
            text += note.words.empty() ? "-" : note.words[0].text;
        return text;
    };
    CHECK(sung({"12", "1", "1", "1", "12"}, 2) == "0 2---2");
    CHECK(sung({"12", "1", "", "13", "3", "13", "12"}, 2) == "4 21-1312");
    CHECK(sung({"1", "1", "1", "1"}, 2) == "0 ----"); // no verse of this number
}

TEST_CASE("voice: staccato and breaths shorten what is sung, unless it is to be plain") {
    Part part;
    for (uint32_t i = 0; i < 3; ++i)
        part.notes.push_back({i * 480, 480, 60, 80, {}});
    part.notes[0].staccato = true;
    part.notes[1].breathAfter = true;
    const auto lengths = [&part](bool isPlain) {
        std::vector<uint32_t> all;
        for (const SungNote& note : MakeVoiceLine(part, 1, isPlain).notes)
            all.push_back(note.joined ? note.length + 1 : note.length);
        return all;
    };
    CHECK(lengths(false) == std::vector<uint32_t>{240, 420, 480}); // none is joined to the one before
    CHECK(lengths(true) == std::vector<uint32_t>{480, 481, 481});
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
