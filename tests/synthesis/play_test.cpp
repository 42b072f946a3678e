#include "companions/rve/engine_text.h"
#include "synthesis/play_fixture.h"

using Told = Play::Told;

TEST_CASE("play: what is heard is the offline rendering, mixed by the gains; its threads allocate nothing") {
    for (const DWORD rate : {44100u, 48000u, 96000u}) { // at 48000 Hz blocks are not what a step makes
        Play play(2, rate);
        play.AddNote(0, 10, 300, 100);
        play.AddNote(0, 320, 777, 50);
        play.AddNote(1, 100, 1234, 30);
        Shorts left = play.Offline(0);
        Shorts right = play.Offline(1);
        play.driver.RTS_SetPlayParam(0, 0x7FFFFFFF, 0, 0);
        REQUIRE(play.driver.RTS_DoSynthesis() == 1);
        play.driver.RTS_SetTrackVolume(0, 0.5); // centre: half of it on both sides
        play.driver.RTS_SetTrackPanpot(1, 1.0); // right only, twice
        play.driver.SetMasterVolume(2.0);       // all of it twice
        REQUIRE(play.driver.RTS_Play() == 1);
        REQUIRE(play.AwaitEnd());
        CHECK(AreSameSound(play.Heard(0), left));
        left.resize(right.size());
        for (size_t i = 0; i < right.size(); ++i)
            right[i] = static_cast<short>(right[i] * 4 + left[i]);
        CHECK(AreSameSound(play.Heard(1), right));
        CHECK(play.device->Format().nSamplesPerSec == rate);
        CHECK(Values(play.driver.IsPlaying(), play.driver.HasWindow(), play.box) == "0 0 "); // told the end
    }
}

TEST_CASE("play: the host is told of the beginning, every buffer, the region's end and the song's end") {
    Play play;
    play.AddNote(0, 0, 400, 10);
    play.Begin(0, 400, 0);
    REQUIRE(play.AwaitOutput());
    CHECK(play.driver.IsPlaying());
    play.Pump();
    CHECK(play.told == std::vector<Told>{{4, 0}, {3, 0}});
    CHECK(play.driver.RTS_Play() == 1); // a play that is on is not begun twice
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
    const Shorts offline = play.Offline();
    const struct {
        DWORD start, end, position;
        size_t fromBlock; ///< of the offline rendering, up to
        size_t toBlock;
        size_t atLeast;                              ///< blocks that are heard
    } rows[] = {{0, 0x7FFFFFFF, 1000, 172, 999, 86}, // sample 44100, and the step it falls in begins at 44032
                {0, 0, 1000, 172, 999, 86},          // no region
                {0, 1300, 1000, 172, 224, 52},       // 57330 is in block 223
                {0, 2000, 1000, 172, 999, 172},      // silence up to 88200
                {200, 100, 150, 0, 0, 0}};           // before its own beginning: over at once
    for (const auto& row : rows) {
        CAPTURE(row.end);
        const size_t before = play.Heard().size();
        play.told.clear();
        play.SetUp(500);
        play.Begin(row.start, row.end, row.position);
        REQUIRE(play.AwaitEnd());
        Shorts wanted = From(offline, row.fromBlock * 256);
        wanted.resize(std::min(wanted.size(), (row.toBlock - row.fromBlock) * 256));
        const Shorts heard = From(play.Heard(), before);
        CHECK(AreSameSound(heard, wanted));
        CHECK(heard.size() / 256 - row.atLeast < 3 * 17); // of the device's buffers
        CHECK(play.told.front() == Told{4, static_cast<int>(row.position)});
        CHECK(play.told.back() == Told{9, 1500});
    }
}

TEST_CASE("play: a loop repeats its region without a gap until it is stopped") {
    const struct {
        DWORD rate, start, end;
        DWORD position;                             ///< where it is begun
        size_t frames;                              ///< of a pass
    } rows[] = {{44100, 200, 400, 200, 35 * 256},   // 8820 to 17640: from block 34 on up to block 69
                {44100, 200, 400, 400, 35 * 256},   // begun at its end
                {44100, 0, 99, 0, 18 * 256},        // a buffer and a block
                {44100, 0, 98, 0, 17 * 256},        // just a buffer: often read before its mark is set
                {44100, 200, 250, 200, 10 * 256},   // shorter than a buffer: 11025, up to block 44
                {44100, 200, 1000, 200, 139 * 256}, // behind the song's end: 44100 is in block 172
                {48000, 0, 3, 0, 441},              // shorter than a block
                {96000, 0, 3, 0, 558}};
    for (const auto& row : rows) {
        CAPTURE(row.rate);
        CAPTURE(row.end);
        Play play(1, row.rate);
        play.AddNote(0, row.start ? 210 : 0, 230, 40); // so that it is told in every pass
        play.AddNote(0, 300, 320, 60);
        Shorts pass = From(play.Offline(), row.start ? 34 * 256 : 0);
        pass.resize(row.frames);
        const auto step = static_cast<size_t>(row.rate * 256 / 44100); // samples, or one more
        if (row.end == 3)                                              // one step, and silence up to the block's end
            std::fill(pass.begin() + static_cast<std::ptrdiff_t>(step), pass.end(), short{0});
        play.Begin(row.start, row.end, row.position, 1);
        REQUIRE(play.Await([&] { return play.device->Played().size() > 5 * 4 * row.frames; }));
        play.driver.RTS_StopSynthesis();
        play.Pump();
        Shorts heard = play.Heard();
        Shorts passes;
        for (size_t at = 0; at < 5 * row.frames; at += row.frames) {
            passes.insert(passes.end(), pass.begin(), pass.end());
            if (row.end == 3)
                heard[at + step] = 0;
        }
        heard.resize(passes.size());
        CHECK((heard == passes));
        CHECK(std::count(pass.begin(), pass.end(), 4000) > 100);
        CHECK(play.HowOften(4) == 1);
        CHECK(play.told.back() == Told{9, 320});
        for (size_t i = 2; i < play.told.size() && play.told[i].code == 3; ++i) {
            CHECK(play.told[i].milliseconds + 1 >= static_cast<int>(row.start));
            CHECK(play.told[i].milliseconds <= static_cast<int>(row.end));
        }
    }
}

TEST_CASE("play: at a loop's turn engines that would sing on are reset") {
    const int rows[][3] = {{150, 50, 0},   // heard from 200 to 290: nothing sounds at the end, nothing is told ahead
                           {200, 50, 1},   // sounds across the end, from 250 to 340
                           {200, 100, 1}}; // behind the end, and told ahead
    for (const auto& [time, delay, isReset] : rows) {
        CAPTURE(delay);
        Play play;
        play.AddNote(0, 0, 100, 40);
        Stream::NoteText note;
        note.lengthMs = 90;
        note.startMs = delay;
        Stream text;
        text.Note(note);
        Bytes bytes;
        for (const RVEEvent& event : text.Events())
            bytes.insert(bytes.end(), {event.status, event.data1, event.data2});
        REQUIRE(play.streams[0].AddEvent(1, bytes.data(), static_cast<DWORD>(bytes.size()), time) == 1);
        play.Begin(0, 300, 0, 1);
        REQUIRE(play.Await([&] { return play.device->Played().size() > size_t{8} * 13056 * 4; }));
        play.driver.RTS_StopSynthesis();
        CHECK((play.engine.log->resets > 0) == isReset);
    }
}

TEST_CASE("play: a seek is followed before anything is heard, while it is heard, and when all is made") {
    Play play(2);
    for (int i = 0; i < 12; ++i)
        play.AddNote(0, i * 1000 + 100, i * 1000 + 900, 10 + i);
    const Shorts wanted = From(play.Offline(), 440832); // 10 s: step 1722
    play.SetUp(0, 0, 20);
    play.driver.RTS_SetPlayParam(0, 0x7FFFFFFF, 0, 0);
    REQUIRE(play.driver.RTS_DoSynthesis() == 1);
    int opened = 1;
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
        REQUIRE(play.Await([&] { return !play.driver.m_state.IsSynthesizing(); }, false));
        for (int i = 0; i < 3; ++i) { // all is made, and the thread that made it is waiting
            REQUIRE(play.AwaitOutput());
            REQUIRE(play.device->Finish(1) == 1);
        }
        for (const DWORD position : {30u, 7000u, 500u}) // again and again
            play.driver.RTS_ChangeSongPosition(position);
        play.driver.RTS_ChangeLoop(0, 10000);
        opened = 2;
    }
    REQUIRE(play.AwaitEnd());
    const Shorts heard = play.Heard();
    bool isFollowed = false; // soon: the device had two buffers of 17 blocks, and had played three
    for (size_t at = 0; at <= 5 * 4352 && at < heard.size(); at += 256)
        isFollowed = isFollowed || AreSameSound(From(heard, at), wanted);
    CHECK(isFollowed);
    CHECK(play.device->opened >= opened);
    CHECK(play.engine.log->resets >= 2); // every track's
}

TEST_CASE("play: what a host does at a notification") {
    int code = 0;
    SUBCASE("of the beginning") { code = Play::kBegins; }
    SUBCASE("of a position") { code = Play::kPosition; }
    SUBCASE("of the end") { code = Play::kEnd; }
    Play play;
    for (int i = 0; i < 30; ++i)
        play.AddNote(0, i * 100, i * 100 + 90, 10 + i);
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
    int plays = -1;
    const auto again = [&](const Told& told) {
        if (told.code != code || ++plays > 5)
            return;
        play.driver.RTS_StopSynthesis(); // one that is heard would be waited for
        play.SetUp();
        play.Begin(0, 200, 0);
    };
    play.atNotification = again;
    again({code, 0});
    REQUIRE(play.Await([&] { return plays > 5 && play.IsOver() && !play.driver.IsPlaying(); }));
    CHECK(Values(play.driver.HasSynthesisFailed(), play.box) == "0 ");
}
