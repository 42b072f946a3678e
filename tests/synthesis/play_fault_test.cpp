#include "allocation_counter.h"
#include "synthesis/play_fixture.h"
#include "torv/audio/sample.h"

using Told = Play::Told;

namespace {

torv::Shared<int> g_steps = 0; // that an engine may make

} // namespace

TEST_CASE("play: an engine that fails ends it, with its code") {
    Play play(2);
    play.AddNote(0, 0, 5000, 40);
    play.AddNote(1, 0, 5000, 50);
    const char* text = "Cannot synthesize the track(s)! (77)";
    SUBCASE("in a step") {
        play.driver.SetEngineOption("error 300");
        play.Begin();
    }
    SUBCASE("and is stopped from inside its box") {
        play.driver.SetEngineOption("error 300");
        play.atBox = [&] { play.driver.RTS_StopSynthesis(), play.driver.RTS_TerminateSynthesis(); };
        play.Begin();
    }
    SUBCASE("in a reset") {
        text = "RVEReset Failed! (78)";
        play.driver.SetEngineOption("bad reset");
        play.Begin();
        REQUIRE(play.AwaitOutput());
        play.driver.RTS_ChangeSongPosition(1000);
    }
    REQUIRE(play.AwaitEnd());
    REQUIRE(play.Await([&] { return play.Boxes().size() == 1; }));
    CHECK(play.Boxes()[0] == text);
    CHECK(play.driver.HasSynthesisFailed() == 1);
    CHECK(std::count(play.told.begin(), play.told.end(), Told{3, 0x7FFFFFFF}) == 0); // no end was reached
    play.atBox = nullptr;

    play.driver.SetEngineOption("");
    play.SetUp();
    play.Begin(0, 100, 0); // the next one plays
    REQUIRE(play.Await([&] { return play.HowOften(Play::kEnd) == 2; }));
    CHECK(play.driver.HasSynthesisFailed() == 0);
}

TEST_CASE("play: a device that refuses is told in a box, one that is not there is not") {
    Play play;
    play.AddNote(0, 0, 500, 40);
    SUBCASE("refuses") {
        play.device->refuse = true;
        play.Begin(0, 500, 0);
        REQUIRE(play.AwaitEnd());
        REQUIRE(play.Boxes().size() == 1);
        CHECK(play.Boxes()[0].find("Cannot output waves (") == 0);
        CHECK(play.told == std::vector<Told>{{9, 500}}); // no position is posted
    }
    SUBCASE("is not there") {
        play.driver.SetPlayParameters("No such device", &play.window, Play::kMessage, Play::kPosition, 44100, 0);
        play.Begin(0, 500, 0);
        REQUIRE(play.AwaitEnd());
        CHECK(play.Boxes().empty());
        CHECK(play.told == std::vector<Told>{{3, 500}, {9, 500}});
    }
}

TEST_CASE("play: a device that gives nothing back ends it when patience is over, and a stop at once") {
    Play play;
    play.AddNote(0, 0, 60000, 40);
    play.driver.m_nDevicePatience = 50;
    SUBCASE("stopped") {
        play.driver.m_nDevicePatience = 1000000;
        play.Begin();
        REQUIRE(play.AwaitOutput());
        play.driver.RTS_StopSynthesis();
        CHECK(play.Boxes().empty());
    }
    SUBCASE("left alone") {
        play.Begin();
        REQUIRE(play.Await([&] { return play.IsOver(); }, false));
        CHECK(play.Boxes().size() == 1);
    }
#if defined(_WIN32)
    SUBCASE("takes no more buffers, as one that was pulled out") {
        play.Begin();
        play.device->refuseBlocks = true;
        REQUIRE(play.Await([&] { return play.IsOver(); }));
        CHECK(play.Boxes().size() == 1);
        return;
    }
#endif
    play.Pump();
    CHECK(play.told == std::vector<Told>{{4, 0}, {3, 0}, {9, 60000}});
    CHECK(play.device->resets == 1);
}

TEST_CASE("play: an engine slower than the device leaves silence or waits, and nothing is lost") {
    Play play;
    play.AddNote(0, 20, 300, 40);
    const Samples offline = play.Offline(0);
    g_steps = 33; // one less than two buffers of 17 blocks
    play.engine.SetStepHook([] {
        while (g_steps == 0)
            Sleep(0);
        g_steps = g_steps - 1;
    });
    play.Begin();
    REQUIRE(play.Await([&] { return play.driver.Ring()->Buffered() == 33; }));
    CHECK_FALSE(play.driver.m_state.HasOutputStarted());
    REQUIRE(play.Await([&] {
        if (g_steps == 0)
            g_steps = 1;
        return play.IsOver();
    }));
    CHECK(AreSameSound(play.Heard(), offline));
}

TEST_CASE("play: stopped in any state, again and again, it leaves nothing behind") {
    Play play(2);
    play.AddNote(0, 0, 3000, 40);
    play.AddNote(1, 500, 2500, 50);
    for (int turn = 0; turn < 30; ++turn) {
        CAPTURE(turn);
        play.SetUp(turn % 3 * 100, turn % 2, turn % 5 == 0 ? 30 : 0);
        play.driver.RTS_SetPlayParam(0, 1000, turn % 4 * 100, turn % 2);
        REQUIRE(play.driver.RTS_DoSynthesis() == 1);
        if (turn % 10 != 0)
            REQUIRE(play.driver.RTS_Play() == 1);
        for (int i = 0; i < turn * 10; ++i)
            play.device->Finish(1);
        if (turn % 7 == 0)
            play.driver.RTS_ChangeSongPosition(700);
        if (turn % 2)
            play.driver.RTS_StopSynthesis();
        play.driver.RTS_TerminateSynthesis(); // also after the play's own
        REQUIRE(play.engine.Log().live == 0);
        CHECK_FALSE(play.driver.IsPlaying());
    }
    play.Pump();
    CHECK(play.HowOften(Play::kEnd) == 30); // one each
    CHECK(play.Boxes().empty());
}

TEST_CASE("play: hundreds of changes while it plays, and it goes on from the last") {
    Play play;
    for (int i = 0; i < 60; ++i)
        play.AddNote(0, i * 1000 + 100, i * 1000 + 900, static_cast<BYTE>(10 + i));
    play.Begin();
    REQUIRE(play.AwaitOutput());
    for (int i = 0; i < 150; ++i) {
        const auto position = static_cast<DWORD>(i * 7919 % 50000);
        if (i % 3 == 0)
            play.driver.RTS_ChangeSongPosition(position);
        else if (i % 3 == 1)
            play.driver.RTS_ChangePlayRegion(0, 60000, position);
        else
            play.driver.RTS_ChangeLoop(i % 2, position);
        play.device->Finish(i % 2);
        play.Pump();
    }
    play.driver.RTS_ChangeLoop(0, 58000);
    REQUIRE(play.AwaitEnd());
    const Samples heard = play.Heard();
    CHECK(std::count(heard.begin(), heard.end(), short{6800}) == 35280); // all of the note at 58.1 s
    CHECK(std::count(heard.begin(), heard.end(), short{6700}) == 0);     // and nothing of the one before
    CHECK(play.Boxes().empty());
}

TEST_CASE("play: what says that it is over has nothing left to do") {
    Play play;
    play.AddNote(0, 0, 5, 40);
    for (int turn = 0; turn < 20; ++turn) {
        play.Begin(0, 10, 0);
        while (play.driver.IsPlaying())
            play.device->Finish(1);
        play.Pump();
        REQUIRE(play.IsOver());
        play.SetUp(); // the next one's; here it waits for the thread of the last
        REQUIRE(play.driver.RTS_DoSynthesis() == 1);
        REQUIRE(play.driver.HasWindow());
        REQUIRE(play.driver.RTS_GetQuillMidiBuffer(0) == &play.streams[0]);
    }
}

TEST_CASE("play: in other modes the mixer plays, and is over when it has stopped") {
    Play play;
    const Scratch path;
    CWaveFile file(path.Text());
    file.SetWaveFormat(torv::PcmFormat(1, 16, 44100));
    file.AppendSample(1);
    play.driver.RTS_SetSynthesisParam(2, 1, 0, 44100, 0, 0);
    CHECK(play.driver.RTS_DoSynthesis() == 1);
    CHECK(play.driver.RTS_Play() == 0); // nothing is registered
    CHECK(play.driver.IsPlaying() == 0);
    play.driver.RegisterTrack(&file, 0);
    REQUIRE(play.driver.RTS_Play() == 1);
    CHECK(play.driver.IsPlaying() == 1);
    REQUIRE(play.Await([&] { return play.driver.IsWaveOutStopped() != 0; }));
    CHECK(play.driver.IsPlaying() == 0);
    play.driver.UnregisterTrackAll();
}

TEST_CASE("play: a window that goes, an object that goes with its play, a copy, and a second play") {
    Play play;
    play.AddNote(0, 0, 2000, 40);
    SUBCASE("the window is told nothing any more") {
        play.Begin(0, 500, 0);
        REQUIRE(play.AwaitOutput());
        DestroyWindow(play.window.m_hWnd);
        REQUIRE(play.Await([&] { return !play.driver.IsPlaying(); }));
    }
    SUBCASE("the object stops what it began, and not what its copy did") {
        play.Begin(0, 1000, 0, 1);
        REQUIRE(play.AwaitOutput());
        {
            Driver copy(play.driver);
            CHECK_FALSE(copy.IsPlaying());
        }
        CHECK(play.driver.IsPlaying());
    }
    SUBCASE("a play that is on is not begun twice") {
        play.Begin(0, 1000, 0, 1);
        REQUIRE(play.AwaitOutput());
        CHECK(play.driver.RTS_Play() == 1);
        CHECK(play.device->opened == 1);
        play.SetUp();
        CHECK(play.driver.RTS_DoSynthesis() == 1); // ends the loop first
    }
}

TEST_CASE("play: its threads allocate nothing once they run") {
    Play play(2);
    for (int i = 0; i < 200; ++i)
        play.AddNote(i % 2, i * 20, i * 20 + 15, static_cast<BYTE>(i % 100));
    play.engine.SetStepHook([] { allocation_counter::WatchThisThread(); });
    play.device->writeHook = [] { allocation_counter::WatchThisThread(); };
    play.Begin(0, 1000, 0, 1);
    REQUIRE(play.AwaitOutput());
    allocation_counter::Take();
    REQUIRE(play.Await([&] { return play.told.size() > 40; }));
    CHECK(allocation_counter::Take() == 0);
}
