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
    const char* text = "Cannot synthesize the track(s)! (77);";
    play.driver.SetEngineOption("error 300");
    SUBCASE("in a step") { play.Begin(); }
    SUBCASE("and is stopped from inside its box") {
        play.atBox = [&] { play.driver.RTS_StopSynthesis(), play.driver.RTS_TerminateSynthesis(); };
        play.Begin();
    }
    SUBCASE("in a reset") {
        text = "RVEReset Failed! (78);";
        play.driver.SetEngineOption("bad reset");
        play.Begin();
        REQUIRE(play.AwaitOutput());
        play.driver.RTS_ChangeSongPosition(1000);
    }
    REQUIRE(play.AwaitEnd());
    REQUIRE(play.Await([&] { return play.boxes == 1; }));
    CHECK(Values(play.driver.HasSynthesisFailed(), play.box) == "1 "s + text);
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
    play.device->refuse = true;
    play.Begin(0, 500, 0);
    REQUIRE(play.AwaitEnd());
    CHECK(play.box.find("Cannot output waves (") == 0);
    CHECK(play.told == std::vector<Told>{{9, 500}}); // no position is posted
    play.SetUp();
    play.driver.SetPlayParameters("No such device", &play.window, Play::kMessage, Play::kPosition, 44100, 0);
    play.told.clear();
    play.Begin(0, 500, 0);
    REQUIRE(play.AwaitEnd());
    CHECK(play.boxes == 1);
    CHECK(play.told == std::vector<Told>{{3, 500}, {9, 500}});
}

TEST_CASE("play: a device that gives nothing back ends it when patience is over, and a stop at once") {
    for (const bool isStopped : {true, false}) {
        Play play;
        play.AddNote(0, 0, 60000, 40);
        play.driver.m_nDevicePatience = isStopped ? 1000000 : 50;
        play.Begin();
        REQUIRE(play.AwaitOutput());
        if (isStopped)
            play.driver.RTS_StopSynthesis();
        REQUIRE(play.Await([&] { return play.IsOver(); }, false));
        CHECK(play.boxes == !isStopped);
        CHECK(play.told == std::vector<Told>{{4, 0}, {3, 0}, {9, 60000}});
        CHECK(play.device->resets == 1);
    }
}

#if defined(_WIN32)
TEST_CASE("play: a device that takes no more buffers, as one that was pulled out, ends it with a box") {
    Play play;
    play.AddNote(0, 0, 60000, 40);
    play.driver.m_nDevicePatience = 50;
    play.Begin();
    REQUIRE(play.AwaitOutput());
    play.device->refuse = true;
    REQUIRE(play.AwaitEnd());
    CHECK(play.boxes == 1);
}
#endif

TEST_CASE("play: an engine slower than the device leaves silence or waits, and nothing is lost") {
    Play play;
    play.AddNote(0, 20, 300, 40);
    const Shorts offline = play.Offline();
    g_steps = 33; // one less than two buffers of 17 blocks
    play.engine.log->stepHook = [] {
        while (g_steps == 0)
            Sleep(0);
        g_steps = g_steps - 1;
    };
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
    CHECK(Values{play.driver.RTS_Play(), play.driver.IsPlaying()} == "0 0"); // nothing is registered
    play.driver.RegisterTrack(&file, 0);
    CHECK(Values{play.driver.RTS_Play(), play.driver.IsPlaying()} == "1 1");
    REQUIRE(play.Await([&] { return play.driver.IsWaveOutStopped() != 0; }));
    CHECK(play.driver.IsPlaying() == 0);
    play.driver.UnregisterTrackAll();
}

TEST_CASE("play: a loop ends with what it belongs to; its threads allocate nothing once they run") {
    Play play(2);
    for (int i = 0; i < 200; ++i)
        play.AddNote(i % 2, i * 20, i * 20 + 15, i % 100);
    play.engine.log->stepHook = [] { allocation_counter::WatchThisThread(); };
    play.device->writeHook = [] { allocation_counter::WatchThisThread(); };
    play.device->resetHook = [] { Sleep(20); }; // a device that takes its time to end
    play.Begin(0, 1000, 0, 1);
    REQUIRE(play.AwaitOutput());
    allocation_counter::Take();
    REQUIRE(play.Await([&] { return play.told.size() > 40; }));
    CHECK(allocation_counter::Take() == 0);
    {
        Driver copy(play.driver);
        CHECK_FALSE(copy.IsPlaying());
    } // does not stop what it did not begin
    CHECK(play.driver.IsPlaying());
    SUBCASE("the object") {}
    SUBCASE("the next play") {
        play.SetUp();
        CHECK(play.driver.RTS_DoSynthesis() == 1);
        CHECK(play.device->opened == play.device->closed); // it has waited for the loop's end
    }
    SUBCASE("its own end, though the window is gone") {
        DestroyWindow(play.window.m_hWnd);
        play.driver.RTS_ChangeLoop(0, 0);
        REQUIRE(play.Await([&] { return !play.driver.IsPlaying(); }));
    }
}
