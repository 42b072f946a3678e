#include "companions/rve/engine_text.h"
#include "synthesis/play_fixture.h"

using Told = Play::Told;

TEST_CASE("play: what is heard is the offline rendering, mixed by the gains") {
    DWORD rate = 44100;
    SUBCASE("44100 Hz") {}
    SUBCASE("48000 Hz, whose blocks are not what a step makes") { rate = 48000; }
    SUBCASE("96000 Hz") { rate = 96000; }
    Play play(2, rate);
    play.AddNote(0, 10, 300, 100);
    play.AddNote(0, 320, 777, 50);
    play.AddNote(1, 100, 1234, 30);
    Samples left = play.Offline(0);
    Samples right = play.Offline(1);
    play.driver.RTS_SetPlayParam(0, 0x7FFFFFFF, 0, 0);
    REQUIRE(play.driver.RTS_DoSynthesis() == 1);
    play.driver.RTS_SetTrackVolume(0, 0.5); // centre: half of it on both sides
    play.driver.RTS_SetTrackPanpot(1, 1.0); // right only, twice
    REQUIRE(play.driver.RTS_Play() == 1);
    REQUIRE(play.AwaitEnd());
    for (short& sample : left)
        sample /= 2;
    CHECK(AreSameSound(play.Heard(0), left));
    for (size_t i = 0; i < right.size(); ++i)
        right[i] = static_cast<short>(right[i] * 2 + (i < left.size() ? left[i] : 0));
    CHECK(AreSameSound(play.Heard(1), right));
    CHECK(play.device->Format().nSamplesPerSec == rate);
    CHECK_FALSE(play.driver.IsPlaying());
    CHECK_FALSE(play.driver.HasWindow()); // told the end, and forgotten
    CHECK(play.Boxes().empty());
}

TEST_CASE("play: the host is told of the beginning, every buffer, the region's end and the song's end") {
    Play play;
    play.AddNote(0, 0, 400, 10);
    play.Begin(0, 400, 0);
    REQUIRE(play.AwaitOutput());
    CHECK(play.driver.IsPlaying());
    play.Pump();
    CHECK(play.told == std::vector<Told>{{4, 0}, {3, 0}});
    REQUIRE(play.AwaitEnd());
    // 17 blocks of 256 frames a buffer: 4352 frames are 98.68 ms. Told twice, the region's end is a millisecond early:
    // 17640 / 44100 x 1000 falls just short of 400.
    CHECK(play.told ==
          std::vector<Told>{{4, 0}, {3, 0}, {3, 98}, {3, 197}, {3, 296}, {3, 394}, {3, 400}, {3, 400}, {9, 400}});
    CHECK(play.device->Played().size() == 69 * 256 * 4); // 17640 frames are 68.9 blocks
    CHECK(play.device->opened == 1);
}

TEST_CASE("play: from the middle, and up to a region's end or the song's") {
    Play play;
    play.AddNote(0, 300, 900, 40); // told before 500 ms: not sung from its middle
    play.AddNote(0, 1200, 1500, 50);
    const Samples offline = play.Offline(0);
    play.SetUp(500);
    struct Row {
        DWORD start;
        DWORD end;
        DWORD position;
        size_t fromBlock; ///< of the offline rendering, up to
        size_t toBlock;
        size_t atLeast; ///< blocks that are heard
    };
    const Row rows[] = {{0, 0x7FFFFFFF, 1000, 172, 999, 86}, // sample 44100, and the step it falls in begins at 44032
                        {0, 0, 1000, 172, 999, 86},          // no region
                        {0, 1300, 1000, 172, 224, 52},       // 57330 is in block 223
                        {0, 2000, 1000, 172, 999, 172},      // silence up to 88200
                        {200, 100, 150, 0, 0, 0}};           // before its own beginning: over at once
    for (const Row& row : rows) {
        CAPTURE(row.end);
        const size_t before = play.Heard().size();
        play.told.clear();
        play.SetUp(500);
        play.Begin(row.start, row.end, row.position);
        REQUIRE(play.AwaitEnd());
        Samples wanted = From(offline, row.fromBlock * 256);
        wanted.resize(std::min(wanted.size(), (row.toBlock - row.fromBlock) * 256));
        const Samples heard = From(play.Heard(), before);
        CHECK(AreSameSound(heard, wanted));
        CHECK(heard.size() >= row.atLeast * 256);
        CHECK(heard.size() < row.atLeast * 256 + 3 * 4352);
        CHECK(play.told.front() == Told{4, static_cast<LPARAM>(row.position)});
        CHECK(play.told.back() == Told{9, 1500});
    }
}

TEST_CASE("play: a loop repeats its region without a gap until it is stopped") {
    struct Row {
        DWORD rate;
        DWORD start;
        DWORD end;
        DWORD position; ///< where it is begun
        size_t frames;  ///< of a pass
    };
    const Row rows[] = {{44100, 200, 400, 200, 35 * 256},   // 8820 to 17640: from block 34 on up to block 69
                        {44100, 200, 400, 400, 35 * 256},   // begun at its end
                        {44100, 200, 400, 9000, 35 * 256},  // and behind it
                        {44100, 0, 99, 0, 18 * 256},        // a buffer and a block
                        {44100, 0, 98, 0, 17 * 256},        // just a buffer: often read before its mark is set
                        {44100, 200, 250, 200, 10 * 256},   // shorter than a buffer: 11025, up to block 44
                        {44100, 200, 1000, 200, 139 * 256}, // behind the song's end: 44100 is in block 172
                        {48000, 0, 3, 0, 441},              // shorter than a block
                        {96000, 0, 3, 0, 558}};
    for (const Row& row : rows) {
        CAPTURE(row.rate);
        CAPTURE(row.end);
        CAPTURE(row.position);
        Play play(1, row.rate);
        play.AddNote(0, row.start ? 210 : 0, 230, 40); // so that it is told in every pass
        play.AddNote(0, 300, 320, 60);
        Samples pass = From(play.Offline(0), row.start ? 34 * 256 : 0);
        pass.resize(row.frames);
        const auto step = static_cast<size_t>(row.rate * 256 / 44100); // samples, or one more
        if (row.end == 3)                                              // one step, and silence up to the block's end
            std::fill(pass.begin() + static_cast<std::ptrdiff_t>(step), pass.end(), short{0});
        play.Begin(row.start, row.end, row.position, 1);
        REQUIRE(play.Await([&] { return play.device->Played().size() > 5 * 4 * row.frames; }));
        play.driver.RTS_StopSynthesis();
        play.Pump();
        Samples passes;
        for (int turn = 0; turn < 5; ++turn)
            passes.insert(passes.end(), pass.begin(), pass.end());
        Samples heard = play.Heard();
        heard.resize(passes.size());
        for (size_t turn = 0; turn < 5 && row.end == 3; ++turn)
            heard[turn * row.frames + step] = 0;
        CHECK(std::count(pass.begin(), pass.end(), 4000) > 100);
        CHECK(heard == passes);
        CHECK(play.HowOften(4) == 1);
        CHECK(play.told.back() == Told{9, 320});
        for (size_t i = 2; i < play.told.size() && play.told[i].code == 3; ++i) {
            CHECK(play.told[i].milliseconds + 1 >= static_cast<LPARAM>(row.start));
            CHECK(play.told[i].milliseconds <= static_cast<LPARAM>(row.end));
        }
    }
}

TEST_CASE("play: at a loop's turn engines that would sing on are reset") {
    Play play;
    play.AddNote(0, 0, 100, 40);
    Stream::NoteText note;
    note.lengthMs = 90;
    const auto tell = [&](LONG time, int delay) {
        note.startMs = delay;
        Stream text;
        text.Note(note);
        Bytes bytes;
        for (const RVEEvent& event : text.Events())
            bytes.insert(bytes.end(), {event.status, event.data1, event.data2});
        REQUIRE(play.streams[0].AddEvent(1, bytes.data(), static_cast<DWORD>(bytes.size()), time) == 1);
    };
    bool isReset = true;
    SUBCASE("nothing sounds at the end, and nothing is told ahead") {
        tell(150, 50); // heard from 200 to 290
        isReset = false;
    }
    SUBCASE("a note sounds across the end") { tell(200, 50); } // from 250 to 340
    SUBCASE("a note behind the end was told ahead") { tell(200, 100); }
    play.Begin(0, 300, 0, 1);
    REQUIRE(play.Await([&] { return play.device->Played().size() > size_t{8} * 13056 * 4; }));
    play.driver.RTS_StopSynthesis();
    CHECK((play.engine.Log().resets > 0) == isReset);
}

TEST_CASE("play: a seek is followed before anything is heard, while it is heard, and when all is made") {
    Play play(2);
    for (int i = 0; i < 12; ++i)
        play.AddNote(0, i * 1000 + 100, i * 1000 + 900, static_cast<BYTE>(10 + i));
    const Samples offline = play.Offline(0);
    play.SetUp(0, 0, 20);
    play.driver.RTS_SetPlayParam(0, 0x7FFFFFFF, 0, 0);
    REQUIRE(play.driver.RTS_DoSynthesis() == 1);
    int opened = 1;
    size_t before = 0; // samples that were heard of the old place
    SUBCASE("before the output is asked for") {
        REQUIRE(play.Await([&] { return !play.driver.m_state.IsSynthesizing(); }, false));
        play.driver.RTS_ChangeSongPosition(10000);
        REQUIRE(play.driver.RTS_Play() == 1);
    }
    SUBCASE("before it begins") {
        REQUIRE(play.driver.RTS_Play() == 1);
        play.driver.RTS_ChangePlayRegion(0, 20000, 10000);
    }
    SUBCASE("while it is heard") {
        REQUIRE(play.driver.RTS_Play() == 1);
        REQUIRE(play.AwaitOutput());
        REQUIRE(play.device->Finish(2) == 2);
        before = size_t{2} * 4352;
        play.driver.RTS_ChangeLoop(0, 10000);
        opened = 2;
    }
    REQUIRE(play.AwaitEnd());
    CHECK(FollowsSoon(From(play.Heard(), before), From(offline, 440832))); // 10 s: step 1722
    CHECK(play.device->opened == opened);
    CHECK(play.engine.Log().resets >= 2); // every track's
}

TEST_CASE("play: volumes, mutes and master values count from the next mixed buffer on") {
    Play play;
    play.AddNote(0, 0, 5000, 40);
    play.Begin();
    REQUIRE(play.AwaitOutput());
    const std::function<void()> changes[] = {
        [&] { play.driver.RTS_SetTrackVolume(0, 0.5); }, [&] { play.driver.SetMasterVolume(3.0); },
        [&] { play.driver.RTS_SetTrackPanpot(0, -1.0); }, [&] { play.driver.RTS_SetTrackMute(0, 1); },
        [&] { play.driver.RTS_SetTrackMute(0, 0), play.driver.SetMute(1); }};
    for (const auto& change : changes) {
        change();
        REQUIRE(play.device->Finish(1) == 1);
        REQUIRE(play.AwaitOutput());
    }
    play.device->Finish(2);
    const Samples left = play.Heard(0);
    const Samples right = play.Heard(1);
    const short lefts[]{4000, 4000, 2000, 6000, 12000, 0, 0};
    const short rights[]{4000, 4000, 2000, 6000, 0, 0, 0};
    REQUIRE(left.size() == std::size(lefts) * 4352);
    for (size_t i = 0; i < std::size(lefts); ++i) {
        CAPTURE(i);
        CHECK(left[i * 4352 + 2000] == lefts[i]);
        CHECK(right[i * 4352 + 2000] == rights[i]);
    }
}

TEST_CASE("play: what a host does at a notification") {
    Play play;
    for (int i = 0; i < 30; ++i)
        play.AddNote(0, i * 100, i * 100 + 90, static_cast<BYTE>(10 + i));
    WORD code = 0;
    SUBCASE("of the beginning") { code = Play::kBegins; }
    SUBCASE("of a position") { code = Play::kPosition; }
    SUBCASE("of the end") { code = Play::kEnd; }
    using Act = void (*)(Driver&);
    const Act acts[] = {[](Driver& driver) { driver.RTS_StopSynthesis(); },
                        [](Driver& driver) { driver.RTS_TerminateSynthesis(); },
                        [](Driver& driver) { driver.RTS_ChangeSongPosition(2000); },
                        [](Driver& driver) { driver.RTS_ChangePlayRegion(1000, 1300, 1100); },
                        [](Driver& driver) { driver.RTS_ChangeLoop(0, 2500); },
                        [](Driver& driver) { driver.RTS_Play(); }};
    for (const Act act : acts) {
        int left = 2; // a change tells of a new beginning
        play.atNotification = [&](const Told& told) {
            if (told.code == code && left-- > 0)
                act(play.driver);
        };
        play.told.clear();
        play.SetUp();
        play.Begin(0, 0x7FFFFFFF, 0);
        REQUIRE(play.AwaitEnd());
        CHECK(left < 2);
        CHECK(play.HowOften(Play::kEnd) == 1);
        CHECK((!play.driver.IsPlaying() || code == Play::kEnd));
    }
    // Another play, over and over.
    int plays = 0;
    play.atNotification = [&](const Told& told) {
        if (told.code != code || ++plays > 5)
            return;
        play.driver.RTS_StopSynthesis(); // one that is heard would be waited for
        play.SetUp();
        play.Begin(0, 200, 0);
    };
    play.told.clear();
    play.SetUp();
    play.Begin(0, 200, 0);
    REQUIRE(play.Await([&] { return plays > 5 && play.IsOver() && !play.driver.IsPlaying(); }));
    CHECK(play.driver.HasSynthesisFailed() == 0);
    CHECK(play.Boxes().empty());
}
