#include "place.h"
#include "play_session.h"
#include "run_command.h"
#include "terminal.h"

#include <doctest/doctest.h>

#include "errors.h"

#include <torv/songs/song_error.h>

#include <chrono>

using namespace torv::songs;

TEST_CASE("places: bars, beats and times as users write them") {
    // A pickup of a quarter, a bar of 4/4, then 6/8; 120 quarters a minute, from the 6/8 on 60.
    torv::songs::Song song;
    song.meters = {{0, 4, 2}, {2400, 6, 3}};
    song.measures = {{0, 480, 0}, {480, 1920, 1}, {2400, 1440, 2}};
    song.tempos = {{2400, 1000000}};
    song.end = 3840;
    const std::pair<const char*, uint32_t> places[] = {
        {"0", 0},    {"1", 480},  {"1:2", 960},     {"1:4.5", 2160}, {"2:6", 3600},  {"2:6b", 3600},
        {"3", 3840}, {"0:00", 0}, {"0:02.5", 2400}, {"3.5s", 2880},  {"5.5s", 3840}, {"0:05", 3600},
    };
    for (const auto& [text, tick] : places)
        CHECK_MESSAGE(TickOfPlace("--x", text, song) == tick, text);
    for (const char* text : {"", "s", ":", "x", "1:", ":5", "1:0", "1:-5", "-1:05", "1:2:3", "1e3s", "nans", "5 s",
                             "1:05s", "1:5c", "9999999999"})
        CHECK_THROWS_AS_MESSAGE(TickOfPlace("--x", text, song), WrongUse, text);
    for (const char* text : {"1:5", "1:60", "0:2", "2:7", "5.6s", "1:00"}) // of this song's bars and end
        CHECK_THROWS_AS_MESSAGE(TickOfPlace("--x", text, song), InputError, text);
    CHECK_THROWS_AS(TickOfPlace("--x", "4", song), SongError);

    CHECK(ReadPlacedName("--x", "1:2=a=b", true).place == "1:2");
    CHECK(ReadPlacedName("--x", "1:2=a=b", true).name == "a=b");
    CHECK(ReadPlacedName("--x", "mf", false).place.empty());
    for (const char* text : {"3=", "=a", "mf"})
        CHECK_THROWS_AS_MESSAGE(ReadPlacedName("--x", text, true), WrongUse, text);
}

TEST_CASE("play: wrong places and devices are told before anything is heard") {
    const Folder folder;
    TrackBytes voice; // a bar of 4/4 at 120 beats a minute: two seconds
    voice.On(0, 60).Off(1920, 60);
    TrackBytes other = voice;
    const std::string song = folder.File("song.mid", MidiFile(1, 480, {voice, other}));
    struct Row {
        const char* arguments;
        const char* said;
        int status;
    };
    for (const Row& row : {Row{"--from 3x", "write a bar", 2}, Row{"--from 9", "has no bar 9", 1},
                           Row{"--from 0:50", "the song ends before that", 1},
                           Row{"--from 0:01.5 --to 0:01", "lies before the beginning", 1}}) {
        const Run run = folder.Torv("play " + song + " " + row.arguments);
        CHECK(run.status == row.status);
        CHECK_MESSAGE(run.said.find(row.said) != std::string::npos, run.said);
    }
#if !defined(_WIN32) // which has no device that is always there
    CHECK(folder.Torv("play " + song + " --device \"No such card\"").said.find("no wave output \"No such card\"") !=
          std::string::npos);
    const auto begin = std::chrono::steady_clock::now();
    const Run heard = folder.Torv("play " + song + " --from 0:00.5 --to 0:01 --device \"null output\" --quiet");
    CHECK(heard.status == 0);
    CHECK(heard.said == "");
    CHECK(std::chrono::steady_clock::now() - begin > std::chrono::milliseconds(500)); // in real time
    const Run both = folder.Torv("play " + song + " --part 1 --part 2 --to 0:00.5 --device \"null output\"");
    CHECK(both.said.find("played 2 parts to 0:00.") != std::string::npos);
#endif
}

TEST_CASE("play: seeks stay in what is heard, and behind it a loop begins again") {
    PlaySession::Settings settings;
    settings.start = 2500;
    settings.last = 4000;
    const auto targetOf = [&settings](DWORD position) { return PlaySession::TargetOf(position, settings); };
    CHECK(targetOf(3999) == 3999);
    CHECK(targetOf(0) == 2500);
    CHECK_FALSE(targetOf(4000));
    settings.isLooped = true;
    CHECK(targetOf(4000) == 2500);
}

TEST_CASE("play: its line fits any terminal") {
    const std::vector<std::string> pieces{"playing 0:01", " [q: quit]"};
    CHECK(FittingLine(pieces, 23) == "playing 0:01 [q: quit]");
    CHECK(FittingLine(pieces, 22) == "playing 0:01");
    CHECK(FittingLine(pieces, 8) == "playing");
    CHECK(FittingLine(pieces, 0).empty());
}
