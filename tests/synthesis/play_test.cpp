#include "companions/rve/engine_text.h"
#include "synthesis/play_fixture.h"

namespace {

using Told = Play::Told;

/// From sample `from` on.
Samples From(const Samples& samples, size_t from) {
    return from < samples.size() ? Samples(samples.begin() + static_cast<std::ptrdiff_t>(from), samples.end())
                                 : Samples();
}

/// Whether `wanted` follows what the device had of an old place: two buffers of 17 blocks at the most.
bool FollowsSoon(const Samples& heard, const Samples& wanted) {
    for (size_t at = 0; at <= 2 * 4352 && at < heard.size(); at += 256)
        if (AreSameSound(From(heard, at), wanted))
            return true;
    return false;
}

} // namespace

TEST_CASE("play: what is heard is the offline rendering, mixed by the gains") {
    DWORD rate = 44100;
    SUBCASE("44100 Hz") {}
    SUBCASE("48000 Hz, whose blocks are not what a step makes") { rate = 48000; }
    SUBCASE("96000 Hz") { rate = 96000; }
    Play play(2, rate);
    play.AddNote(0, 10, 300, 100);
    play.AddNote(0, 320, 777, 50);
    play.AddNote(1, 100, 1234, 30);
    const Samples tracks[]{play.Offline(0), play.Offline(1)};
    play.driver.RTS_SetPlayParam(0, 0x7FFFFFFF, 0, 0);
    REQUIRE(play.driver.RTS_DoSynthesis() == 1);
    play.driver.RTS_SetTrackVolume(0, 0.5); // centre: half of it on both sides
    play.driver.RTS_SetTrackPanpot(1, 1.0); // right only, twice
    REQUIRE(play.driver.RTS_Play() == 1);
    REQUIRE(play.AwaitEnd());

    Samples left = tracks[0];
    for (short& sample : left)
        sample /= 2;
    CHECK(AreSameSound(play.Heard(0), left));
    Samples right = tracks[1];
    for (size_t i = 0; i < right.size(); ++i)
        right[i] = static_cast<short>(right[i] * 2 + (i < left.size() ? left[i] : 0));
    CHECK(AreSameSound(play.Heard(1), right));
    CHECK(play.device->Format().nSamplesPerSec == rate);
    CHECK(play.engine.Log().live == 0);
    CHECK(play.engine.Log().starts == play.engine.Log().stops);
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
    CHECK(play.driver.HasOutputStarted());
    play.Pump();
    CHECK(play.told == std::vector<Told>{{4, 0}, {3, 0}});
    REQUIRE(play.AwaitEnd());
    // 17 blocks of 256 frames a buffer: 4352 frames are 98.68 ms. Told twice, the region's end is a millisecond early:
    // 17640 / 44100 x 1000 falls just short of 400.
    CHECK(play.told ==
          std::vector<Told>{{4, 0}, {3, 0}, {3, 98}, {3, 197}, {3, 296}, {3, 394}, {3, 400}, {3, 400}, {9, 400}});
    CHECK(play.device->Played().size() == 69 * 256 * 4); // 17640 frames are 68.9 blocks
    CHECK(play.device->opened == 1);
    CHECK(play.device->closed == 1);
}

TEST_CASE("play: from the middle it is the same from the next note on, at the same time") {
    Play play;
    play.AddNote(0, 300, 900, 40);
    play.AddNote(0, 1200, 1500, 50);
    play.AddNote(0, 1600, 1800, 60);
    const Samples offline = play.Offline(0);
    play.SetUp(500);
    play.Begin(0, 0x7FFFFFFF, 1000);
    REQUIRE(play.AwaitEnd());
    // 1000 ms: sample 44100, and the step it falls in begins at 44032. The first note was told before 500 ms.
    CHECK(AreSameSound(play.Heard(), From(offline, 44032)));
    CHECK(play.told.front() == Told{4, 1000});
    CHECK(play.told[1] == Told{3, 1000});
}

TEST_CASE("play: a region ends what is heard, or goes on in silence behind the song") {
    Play play;
    play.AddNote(0, 0, 250, 40);
    SUBCASE("inside the song") {
        play.SetUp(200); // so that the note is told
        play.Begin(100, 200, 150);
        REQUIRE(play.AwaitEnd());
        // Samples 6615 to 8820: block 25 to block 34. The device may have had of the silence behind.
        CHECK(AreSameSound(play.Heard(), Samples(10 * 256, 4000)));
        CHECK(play.told.back() == Told{9, 250});
    }
    SUBCASE("behind it") {
        play.Begin(0, 1000, 0);
        REQUIRE(play.AwaitEnd());
        CHECK(AreSameSound(play.Heard(), play.Offline(0)));
        CHECK(play.Heard().size() >= 44100);
        CHECK(play.Heard().size() < 44100 + 2 * 4352);
        CHECK(play.told[play.told.size() - 2] == Told{3, 1000});
    }
    SUBCASE("none: to the song's end") {
        play.Begin(0, 0, 0);
        REQUIRE(play.AwaitEnd());
        CHECK(AreSameSound(play.Heard(), play.Offline(0)));
    }
    SUBCASE("before its own beginning: over at once") {
        play.Begin(200, 100, 150);
        REQUIRE(play.AwaitEnd());
        CHECK(AreSameSound(play.Heard(), {}));
    }
}

TEST_CASE("play: a loop repeats its region without a gap until it is stopped") {
    Play play;
    DWORD start = 200;
    DWORD end = 400;
    size_t blocks = 35; // 8820 to 17640: from block 34 on up to block 69
    SUBCASE("a region longer than the buffers") {}
    SUBCASE("a region shorter than one buffer") {
        end = 250; // 11025: up to block 44
        blocks = 10;
    }
    SUBCASE("a region behind the song's end") {
        end = 1000;
        blocks = 173 - 34; // 44100 is block 172.3
    }
    play.AddNote(0, 210, 230, 40);
    play.AddNote(0, 300, 320, 60);
    const Samples offline = play.Offline(0);
    play.Begin(start, end, start, 1);
    const size_t length = blocks * 256;
    REQUIRE(play.Await([&] { return play.Heard().size() > 5 * length; }));
    play.driver.RTS_StopSynthesis();
    play.Pump();
    const Samples heard = play.Heard();
    Samples pass(length, 0);
    for (size_t i = 0; i < length && 34 * 256 + i < offline.size(); ++i)
        pass[i] = offline[34 * 256 + i];
    for (size_t turn = 0; turn < 5; ++turn) {
        CAPTURE(turn);
        CHECK(AreSameSound(Samples(heard.begin() + static_cast<std::ptrdiff_t>(turn * length),
                                   heard.begin() + static_cast<std::ptrdiff_t>((turn + 1) * length)),
                           pass));
    }
    CHECK(play.HowOften(4) == 1);
    CHECK(play.told.back() == Told{9, 320});
    for (const Told& told : play.told)
        if (told.code == 3)
            CHECK(
                (told.milliseconds >= static_cast<LPARAM>(start) - 1 && told.milliseconds <= static_cast<LPARAM>(end)));
    CHECK(play.engine.Log().live == 0);
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
    REQUIRE(play.Await([&] { return play.Heard().size() > 8 * 13056; }));
    play.driver.RTS_StopSynthesis();
    CHECK((play.engine.Log().resets > 0) == isReset);
}

TEST_CASE("play: a seek, a region and a loop are followed while it plays") {
    Play play;
    for (int i = 0; i < 12; ++i)
        play.AddNote(0, i * 1000 + 100, i * 1000 + 900, static_cast<BYTE>(10 + i));
    const Samples offline = play.Offline(0);
    play.SetUp(0, 0, 20);
    play.Begin(0, 0x7FFFFFFF, 0);
    const bool isHeard = [&] {
        SUBCASE("before anything is heard") { return false; }
        SUBCASE("while it is heard") { return true; }
        return true;
    }();
    if (isHeard) {
        REQUIRE(play.AwaitOutput());
        REQUIRE(play.device->Finish(2) == 2);
    }
    const size_t before = play.Heard().size();
    play.driver.RTS_ChangeSongPosition(10000);
    play.Pump();
    CHECK(std::count(play.told.begin(), play.told.end(), Told{3, 10000}) >= 1);
    REQUIRE(play.AwaitEnd());
    // 10 s: step 1722, sample 440832.
    CHECK(FollowsSoon(From(play.Heard(), before), From(offline, 440832)));
    CHECK(play.device->opened == play.device->closed);
    CHECK((play.device->opened == 2) == isHeard);
    CHECK(play.told.back().code == Play::kEnd);
    CHECK(play.engine.Log().resets >= 1);
    CHECK(play.engine.Log().live == 0);
}

TEST_CASE("play: seeking works before the output is asked for, and after the synthesis has finished") {
    Play play;
    play.AddNote(0, 100, 300, 40);
    play.AddNote(0, 800, 900, 50);
    const Samples offline = play.Offline(0);
    play.driver.RTS_SetPlayParam(0, 0x7FFFFFFF, 0, 0);
    REQUIRE(play.driver.RTS_DoSynthesis() == 1);
    REQUIRE(play.Await([&] { return !play.driver.IsSynthesizing(); }, false));
    play.driver.RTS_ChangeSongPosition(500);
    REQUIRE(play.driver.RTS_Play() == 1);
    REQUIRE(play.AwaitOutput());
    play.driver.RTS_ChangePlayRegion(0, 0x7FFFFFFF, 700);
    REQUIRE(play.AwaitEnd());
    CHECK(FollowsSoon(play.Heard(), From(offline, 30720))); // 700 ms: sample 30870, step 120
}

TEST_CASE("play: volumes, mutes and master values count from the next mixed buffer on") {
    Play play;
    play.AddNote(0, 0, 5000, 40);
    play.Begin();
    REQUIRE(play.AwaitOutput());
    const auto next = [&] {
        REQUIRE(play.device->Finish(1) == 1);
        REQUIRE(play.AwaitOutput());
    };
    play.driver.RTS_SetTrackVolume(0, 0.5);
    next();
    play.driver.SetMasterVolume(3.0);
    next();
    play.driver.RTS_SetTrackPanpot(0, -1.0);
    next();
    play.driver.RTS_SetTrackMute(0, 1);
    next();
    play.driver.RTS_SetTrackMute(0, 0);
    play.driver.SetMute(1);
    next();
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
