#include "play_place.h"
#include "run_command.h"

#include <doctest/doctest.h>

#include <chrono>

TEST_CASE("play: times as users write them") {
    CHECK(ReadTime("1:23.5") == 83.5);
    CHECK(ReadTime("0:00") == 0.0);
    CHECK(ReadTime("12.5s") == 12.5);
    for (const char* text :
         {"", "s", ":", "9", "1:", ":5", "1:60", "1:-5", "-1:05", "1:2:3", "1e3s", "nans", "5 s", "1:05s"})
        CHECK_MESSAGE(!ReadTime(text), text);
}

TEST_CASE("play: wrong places and devices are told before anything is heard") {
    const Folder folder;
    TrackBytes voice; // a bar of 4/4 at 120 beats a minute: two seconds
    voice.On(0, 60).Off(1920, 60);
    const std::string song = folder.File("song.mid", MidiFile(0, 480, {voice}));
    struct Row {
        const char* arguments;
        const char* said;
    };
    for (const Row& row : {Row{"--from 3x", "write a bar"}, Row{"--from 9", "has no bar 9"},
                           Row{"--from 0:50", "the song ends before that"},
                           Row{"--from 0:01.5 --to 0:01", "lies before the beginning"}}) {
        const Run run = folder.Torv("play " + song + " " + row.arguments);
        CHECK(run.status == 1);
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
#endif
}
