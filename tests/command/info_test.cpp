// What torv info tells of files.
#include "describe.h"
#include "run_command.h"

#include "midi_song.h"

#include <doctest/doctest.h>

#include <algorithm>

namespace {

/// A stereo PCM wave of three frames with an odd chunk before its data, padded or not.
FileBytes WaveWithOddChunk(bool isPadded) {
    FileBytes bytes{'R', 'I', 'F', 'F', 0,   0,   0,   0,   'W',  'A',  'V', 'E', 'f',  'm',  't', ' ',
                    16,  0,   0,   0,   1,   0,   2,   0,   0x44, 0xAC, 0,   0,   0x10, 0xB1, 2,   0,
                    4,   0,   16,  0,   'o', 'd', 'd', ' ', 3,    0,    0,   0,   1,    2,    3};
    if (isPadded)
        bytes.push_back(0);
    for (const unsigned char byte : {'d', 'a', 't', 'a'})
        bytes.push_back(byte);
    for (const unsigned char byte : {12, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})
        bytes.push_back(byte);
    return bytes;
}

} // namespace

TEST_CASE("info: waves, with odd chunks and cut short anywhere") {
    for (const bool isPadded : {false, true}) {
        const FileBytes whole = WaveWithOddChunk(isPadded);
        const Json about = DescribeWave("w", whole);
        CHECK((about["channels"] == 2 && about["bits"] == 16 && about["rate"] == 44100 && about["frames"] == 3));
        CHECK(about["chunks"].size() == 3);
        CHECK(about["chunks"][2]["id"] == "data");
        for (size_t size = 12; size < whole.size(); ++size) {
            try {
                const Json cut = DescribeWave("w", FileBytes(whole.begin(), whole.begin() + static_cast<long>(size)));
                CHECK(cut["frames"].get<int>() < 3);
            } catch (const InputError& error) {
                CHECK(size < 36); // before the end of the format
                CHECK(error.message.find("no format chunk") != std::string::npos);
            }
        }
    }
}

TEST_CASE("info: a song's tracks, tempos and lyrics; an engine's stream by its blocks") {
    TrackBytes conductor, voice;
    conductor.Meta(0, 0x51, std::string("\x07\xA1\x20", 3)).Meta(960, 0x51, std::string("\x0F\x42\x40", 3));
    voice.Meta(0, 3, "Voice").Lyric(0, "Twin-").On(0, 60).Off(480, 60).Lyric(0, "kle").On(0, 67).Off(960, 67);
    FileBytes bytes = MidiFile(1, 480, {conductor, voice});
    Json about = DescribeMidi("m", bytes);
    CHECK(about["seconds"].get<double>() == doctest::Approx(1.0 + 1.0)); // two beats at 120, one at 60
    CHECK(about["tempos"][1]["beatsPerMinute"] == 60);
    CHECK(about["tracks"][1]["lyrics"] == "Twinkle");
    CHECK((about["tracks"][1]["lowestKey"] == 60 && about["tracks"][1]["highestKey"] == 67));

    TrackBytes engine;
    const int controllers[][2] = {{99, 0x50}, {98, 0}, {6, 1},     {98, 1}, {98, 0},
                                  {99, 0x63}, {98, 0}, {99, 0x10}, {98, 0}};
    for (const auto& controller : controllers)
        engine.Event(0, {0xB0, static_cast<unsigned char>(controller[0]), static_cast<unsigned char>(controller[1])});
    bytes = MidiFile(1, 480, {engine});
    about = DescribeMidi("m", bytes);
    CHECK(about["tracks"][0]["engineBlocks"] == Json({{"note", 2}, {"dynamics", 1}}));
}

TEST_CASE("info: what is no such file is told in one line") {
    const Folder folder;
    const std::string text = folder.File("text.txt", {'h', 'i'});
    for (const std::string& arguments : {"info " + text, std::string("info nowhere.wav"), std::string("info .")}) {
        const Run run = folder.Torv(arguments);
        CHECK(run.status == 1);
        CHECK(std::count(run.said.begin(), run.said.end(), '\n') == 1);
    }
    CHECK(folder.Torv("info").status == 2);
    const std::string wave = folder.File("odd.wav", WaveWithOddChunk(true));
    const Run run = folder.Torv("info " + wave);
    CHECK((run.status == 0 && run.said.find("rate: 44100") != std::string::npos));
}

TEST_CASE("encode: an engine's file with the song's name, notes and tempos, or the old file") {
    const Folder folder;
    TrackBytes conductor, voice;
    conductor.Meta(0, 0x51, std::string("\x09\x27\xC0", 3)); // 100 beats a minute
    voice.Meta(0, 3, "Voice");
    for (int i = 0; i < 5; ++i)
        voice.Lyric(i ? 120 : 0, "la").On(0, 60 + i).Off(360, 60 + i);
    const std::string song = folder.File("song.mid", MidiFile(1, 480, {conductor, voice}));
    Run run = folder.Torv("encode " + song + " -o command_test_files/engine.mid");
    CHECK((run.status == 0 && run.said.find("5 notes") == 0));
    run = folder.Torv("info command_test_files/engine.mid --json");
    REQUIRE(run.status == 0);
    const Json about = Json::parse(run.said);
    REQUIRE(about["tracks"].size() == 2);
    CHECK(about["tracks"][0]["name"] == "Master Track");
    CHECK(about["tracks"][1]["name"] == "Voice");
    CHECK(about["tracks"][1]["engineBlocks"]["note"] == 5);
    CHECK(about["tempos"].back()["beatsPerMinute"] == 100);

    const std::string old = folder.File("old.mid", {'o', 'l', 'd'});
    run = folder.Torv("encode nowhere.mid -o " + old);
    CHECK((run.status == 1 && fs::file_size(folder.path / "old.mid") == 3));
    run = folder.Torv("encode " + song + " -o command_test_files/nowhere/engine.mid");
    CHECK((run.status == 1 && run.said.find("CFileException::badPath") != std::string::npos));
    CHECK(!fs::exists(folder.path / "nowhere"));
}
