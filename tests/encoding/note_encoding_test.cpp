#include "encoding_fixture.h"

#include <doctest/doctest.h>

// 120 beats a minute unless a test says otherwise: 480 ticks are 500 ms, 1920 ticks are the presend of 2000 ms.

TEST_CASE("note: the block of a plain note, byte for byte") {
    Chart chart;
    chart.Note(1920, 480, 60);
    const auto stream = chart.Encode();
    const auto entries = EntriesOf(*stream);
    REQUIRE(entries.size() == 1);
    CHECK(entries[0].tick == 0); // 2000 ms - 2000 ms
    CHECK(entries[0].time == 0);
    CHECK(entries[0].bytes ==
          Bytes{0xB0, 99, 0x50, 0xB0, 98, 0,   0xB0, 6, 0,   0xB0, 38, 0,   // opening
                0xB0, 99, 0x50, 0xB0, 98, 1,   0xB0, 6, 15,  0xB0, 38, 80,  // delay 2000 = 15 x 128 + 80
                0xB0, 99, 0x50, 0xB0, 98, 2,   0xB0, 6, 60,                 // note
                0xB0, 99, 0x50, 0xB0, 98, 3,   0xB0, 6, 100,                // velocity
                0xB0, 99, 0x50, 0xB0, 98, 4,   0xB0, 6, 3,   0xB0, 38, 116, // 500 ms = 3 x 128 + 116
                0xB0, 99, 0x50, 0xB0, 98, 5,   0xB0, 6, 3,                  // begins and ends the sound
                0xB0, 99, 0x50, 0xB0, 98, 17,  0xB0, 6, 1,   0xB0, 99, 0x50, 0xB0, 98, 18, 0xB0, 6, 1, // one character
                0xB0, 99, 0x50, 0xB0, 98, 19,  0xB0, 6, 'a', 0xB0, 38, 0, // a vowel: advancement 0
                0xB0, 99, 0x50, 0xB0, 98, 127, 0xB0, 6, 127});
    CHECK(stream->GetLastTick() == 2400);
    CHECK(stream->GetLastTime() == 2500);
}

TEST_CASE("note: icons stand at their own parameter numbers") {
    Chart chart;
    tagCsqEventAnote* const note = chart.Note(1920, 480);
    note->noteHeadHandle = chart.Icon(NoteIcon<CIconNoteAttack>(1, 0x01, 0x02, 33, 44));
    SUBCASE("attack, release and vibrato") {
        // A status 3 icon is encoded as a release; its class has no depth, which counts as 64.
        note->noteTailHandle = chart.Icon(NoteIcon<CIconNoteTransit>(3, 0x05, 0x06, 55, 0));
        auto* const vibrato = new CIconVibrato(4, 4, 1);
        vibrato->SetLength(240);
        note->vibratoHandle = chart.Icon(vibrato);
        note->vibratoOffset = 120;
        const DecodedBlock block = EntriesOf(*chart.Encode(), 0x50).at(0).Block();
        CHECK((block.At(6) == 0x01 && block.LsbAt(6) == 0x02));
        CHECK((block.At(7) == 0 && block.LsbAt(7) == 44)); // no database is open: index 0; depth
        CHECK((block.At(8) == 33 && block.LsbAt(8) == -1));
        CHECK((block.At(9) == 0x05 && block.LsbAt(9) == 0x06));
        CHECK((block.At(10) == 0 && block.LsbAt(10) == 64));
        CHECK(block.At(11) == 55);
        CHECK((block.At(12) == 0 && block.LsbAt(12) == 0));
        CHECK(block.LsbAt(13) == 64); // 240 of 480 ticks: 63.5 of 127, rounded away from zero
        CHECK(block.At(14) == 32);    // 120 of 480 ticks: 31.75
        CHECK_FALSE(block.Has(15));
        CHECK_FALSE(block.Has(16));
    }
    SUBCASE("a status 2 icon is a transition, at the head too") {
        note->noteHeadHandle = chart.Icon(NoteIcon<CIconNoteRelease>(2, 0x07, 0x08, 21, 22));
        const DecodedBlock block = EntriesOf(*chart.Encode(), 0x50).at(0).Block();
        CHECK((block.At(15) == 0x07 && block.LsbAt(15) == 0x08));
        CHECK((block.At(16) == 0 && block.LsbAt(16) == 21));
        CHECK_FALSE(block.Has(6));
    }
    SUBCASE("an icon of another status fails the note") {
        note->noteHeadHandle = chart.Icon(NoteIcon<CIconNoteAttack>(3, 1, 2, 3, 4));
        CHECK(EntriesOf(*chart.Encode()).empty());
    }
    SUBCASE("a handle that names nothing fails the note") {
        note->noteTailHandle = 999;
        CHECK(EntriesOf(*chart.Encode()).empty());
    }
}

TEST_CASE("note: what lies within the presend is left out, at it is sent at time 0") {
    Chart chart;
    chart.Note(1919, 1, 60); // 1998.96 ms
    chart.Note(1920, 480, 62);
    const auto entries = EntriesOf(*chart.Encode());
    REQUIRE(entries.size() == 1);
    CHECK(entries[0].Block().At(2) == 62);
    CHECK(entries[0].time == 0);
}

TEST_CASE("note: a block's tick follows the tempo map") {
    Chart chart;
    chart.Tempo(1920, 1000000);   // 60 beats a minute from 2000 ms on
    chart.Note(1920 + 960, 480);  // 2000 + 2000 ms
    chart.Note(1920 + 1440, 480); // 5000 ms
    const auto entries = EntriesOf(*chart.Encode());
    REQUIRE(entries.size() == 2);
    CHECK((entries[0].time == 2000 && entries[0].tick == 1920)); // exactly at the change: the change's own tick
    CHECK((entries[1].time == 3000 && entries[1].tick == 2400)); // 1000 ms later: 480 ticks
    CHECK(entries[0].Block().At(4) * 128 + entries[0].Block().LsbAt(4) == 1000); // 480 ticks last a second
}

TEST_CASE("note: a presend out of range becomes 2000, in the encoder too") {
    for (const DWORD presend : {499U, 5001U, 0U}) {
        CxQuillMidiEncoder encoder;
        encoder.SetPresendTime(presend);
        Chart chart;
        chart.Note(1920, 480);
        CHECK(EntriesOf(*chart.Encode(encoder)).at(0).Block().Delay() == 2000);
        CHECK(encoder.GetPresendTime() == 2000);
        CHECK(encoder.GetOutMode() == CxQuillMidiEncoder::kRealTimeMode);
    }
    CxQuillMidiEncoder encoder;
    encoder.SetPresendTime(500);
    Chart chart;
    chart.Note(480, 480); // 500 ms
    const auto entries = EntriesOf(*chart.Encode(encoder));
    CHECK((entries.at(0).time == 0 && entries[0].Block().Delay() == 500));
}

TEST_CASE("note: transposition folds by octaves") {
    struct Row {
        int number;
        int transpose;
        int sent;
    };
    for (const Row& row : {Row{130, 0, 118}, Row{3, -4, 11}, Row{127, 1, 116}, Row{0, -12, 0}, Row{0, -13, 11},
                           Row{60, 7, 67}, Row{120, 24, 120}}) {
        CAPTURE(row.number);
        Chart chart;
        chart.Track().SetTranspose(row.transpose);
        chart.Note(1920, 480, row.number);
        CHECK(EntriesOf(*chart.Encode()).at(0).Block().At(2) == row.sent);
    }
}

TEST_CASE("note: segments share the note, the last one takes what is left") {
    Chart chart;
    // 100 ticks by thirds: 33, 33, 34. At 480 ticks in 500 ms the ends are at 2034, 2068 and 2104 ms.
    const DWORD lyric = chart.Lyric({{1.0F / 3, "s t A"}, {1.0F / 3, "@"}, {1.0F / 3, "t"}});
    tagCsqEventAnote* const note = chart.Note(1920, 100, 60, lyric);
    note->noteHeadHandle = chart.Icon(NoteIcon<CIconNoteAttack>(1, 1, 0, 1, 1));
    note->noteTailHandle = chart.Icon(NoteIcon<CIconNoteTransit>(3, 2, 0, 1, 1));
    const auto entries = EntriesOf(*chart.Encode(), 0x50);
    REQUIRE(entries.size() == 3);
    std::vector<int> durations, types, attacks, releases;
    std::vector<LONG> times;
    for (const StreamEntry& entry : entries) {
        const DecodedBlock block = entry.Block();
        times.push_back(entry.time);
        durations.push_back(block.At(4) * 128 + block.LsbAt(4));
        types.push_back(block.At(5));
        attacks.push_back(block.At(6));
        releases.push_back(block.At(9));
    }
    CHECK(times == std::vector<LONG>{0, 34, 68});
    CHECK(durations == std::vector<int>{34, 34, 36});
    CHECK(types == std::vector<int>{1, 0, 2});
    CHECK(attacks == std::vector<int>{1, -1, -1});
    CHECK(releases == std::vector<int>{-1, -1, 2});
}

TEST_CASE("note: joins take ends and attacks away") {
    Chart chart;
    tagCsqEventAnote* const first = chart.Note(1920, 480, 60);
    tagCsqEventAnote* const second = chart.Note(2400, 480, 62);
    tagCsqEventAnote* const third = chart.Note(2880, 480, 64);
    second->noteHeadHandle = chart.Icon(NoteIcon<CIconNoteAttack>(1, 0x11, 0x22, 77, 5));
    first->noteAttribute = 2;
    second->noteAttribute = 3;
    third->noteAttribute = 1;
    SUBCASE("the next note's attack is this note's transition") {
        const auto entries = EntriesOf(*chart.Encode());
        REQUIRE(entries.size() == 3);
        CHECK(entries[0].Block().At(5) == 1);
        CHECK((entries[0].Block().At(15) == 0x11 && entries[0].Block().LsbAt(15) == 0x22));
        CHECK(entries[0].Block().LsbAt(16) == 77);
        CHECK(entries[1].Block().At(5) == 0);
        CHECK_FALSE(entries[1].Block().Has(6)); // joined: no attack of its own
        CHECK_FALSE(entries[1].Block().Has(15));
        CHECK(entries[2].Block().At(5) == 2);
    }
    SUBCASE("a join to a note that does not exist sings nothing, and the walk goes on") {
        third->noteAttribute = 3;
        chart.Singer(4000, 1, 2);
        const auto entries = EntriesOf(*chart.Encode());
        REQUIRE(entries.size() == 3);
        CHECK(entries[2].Block().number == 0x60);
    }
}

TEST_CASE("note: phonemes are cut at sixteen characters and mark where each begins") {
    Chart chart;
    // "tS", "@r", then "aI" and so on: 2 + 2 + 2 + 3 + 4 + 2 = 15 characters, of the last phoneme one fits.
    const DWORD lyric = chart.Lyric({{1.0F, "tS @r aI Asp Asps dZ dZ"}});
    chart.Note(1920, 480, 60, lyric);
    const DecodedBlock block = EntriesOf(*chart.Encode()).at(0).Block();
    CHECK(block.At(18) == 16);
    std::string text;
    std::vector<int> starts;
    for (int i = 19; i < 35; ++i) {
        text += static_cast<char>(block.At(i));
        if (block.LsbAt(i) >= 0)
            starts.push_back(i - 19);
    }
    CHECK(text == "tS@raIAspAspsdZd");
    CHECK(starts == std::vector<int>{0, 2, 4, 6, 9, 13, 15});
    CHECK(block.LsbAt(19) == 64); // a consonant
    CHECK(block.LsbAt(21) == 0);  // a vowel
    CHECK_FALSE(block.Has(35));
    CHECK(block.At(127) == 127);
}

TEST_CASE("note: an advancement of 128 and more cannot be told and is not sent") {
    Chart chart;
    auto* const lyric = new CLyricObject;
    CLyricElement* const element = lyric->AddNewElement();
    element->SetDeltaRate(1.0F);
    element->SetPhonemeString("k a", 0);
    element->SetConsonantAdvancement(0, 128);
    const DWORD handle = static_cast<DWORD>(reinterpret_cast<uintptr_t>(chart.Track().AttachLyricObject(lyric)));
    chart.Note(1920, 480, 60, handle);
    const DecodedBlock block = EntriesOf(*chart.Encode()).at(0).Block();
    CHECK(block.LsbAt(19) == -1);
    CHECK(block.LsbAt(20) == 0);
}

TEST_CASE("note: a vibrato over several segments") {
    Chart chart;
    const DWORD lyric = chart.Lyric({{0.5F, "a"}, {0.5F, "a"}}, 0);
    tagCsqEventAnote* const note = chart.Note(1920, 480, 60, lyric);
    auto* const vibrato = new CIconVibrato(4, 4, 1);
    vibrato->SetStartDepth(50);
    vibrato->SetStartRate(60);
    note->vibratoHandle = chart.Icon(vibrato);
    const auto segments = [&] {
        const auto stream = chart.Encode();
        std::vector<std::vector<int>> rows;
        for (const StreamEntry& entry : EntriesOf(*stream, 0x50))
            rows.push_back({entry.Block().At(14), entry.Block().LsbAt(13)}); // start, extent
        return rows;
    };
    SUBCASE("going on past the first segment its extent is 0; ending with the second it is whole") {
        note->vibratoOffset = 120;
        vibrato->SetLength(360); // ends exactly with the second segment, which counts as inside
        CHECK(segments() == std::vector<std::vector<int>>{{64, 0}, {0, 127}}); // 120 of 240: 63.5
    }
    SUBCASE("ending inside by less than a unit it is 1") {
        vibrato->SetLength(240 + 0 + 0);
        note->vibratoOffset = 1;
        CHECK(segments() == std::vector<std::vector<int>>{{1, 0}, {0, 1}}); // 1 of 240: 0.53 -> 1
    }
    SUBCASE("touching a segment it is not in it") {
        vibrato->SetLength(240);
        CHECK(segments() == std::vector<std::vector<int>>{{0, 127}, {-1, -1}});
    }
    SUBCASE("from before the song it starts with the song") {
        note->vibratoOffset = -5000;
        vibrato->SetLength(1920 + 120);
        CHECK(segments() == std::vector<std::vector<int>>{{0, 64}, {-1, -1}});
    }
}

TEST_CASE("note: what has no lyric, or an empty one, sings nothing") {
    Chart chart;
    chart.Note(1920, 480)->lyricHandle = 0;
    chart.Note(2400, 480)->lyricHandle = 500;
    chart.Note(2880, 480, 60, chart.Lyric({}));
    chart.Note(3360, 480, 71);
    const auto entries = EntriesOf(*chart.Encode());
    REQUIRE(entries.size() == 1);
    CHECK(entries[0].Block().At(2) == 71);
}

TEST_CASE("note: channels are the note's own; singers and curves go to the track's") {
    Chart chart;
    chart.Track().SetChannel(5);
    chart.Singer(0, 0, 1);
    chart.Note(1920, 480)->header.status = 0x93;
    const auto entries = EntriesOf(*chart.Encode());
    CHECK(entries.at(0).Block().channel == 5);
    CHECK(entries.at(1).Block().channel == 3);
}
