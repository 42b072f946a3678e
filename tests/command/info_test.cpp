// What torv info tells of files.
#include "describe.h"
#include "errors.h"
#include "run_command.h"
#include "values.h"
#include "wave_bytes.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <sstream>

namespace {

Json AboutWave(const FileBytes& bytes) {
    std::istringstream file(std::string(bytes.begin(), bytes.end()));
    return DescribeWave("w", file);
}

/// A stereo wave of three frames with an odd chunk before its data, padded or not.
FileBytes WaveWithOddChunk(bool isPadded) {
    return RiffOf(FormatChunk(1, 2, 16, 44100) + WaveChunkOf("odd ", {1, 2, 3}) + FileBytes(isPadded ? 1 : 0, 0) +
                  WaveChunkOf("data", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
}

} // namespace

TEST_CASE("info: waves, with odd chunks and cut short anywhere") {
    for (const bool isPadded : {false, true}) {
        const FileBytes whole = WaveWithOddChunk(isPadded);
        const Json about = AboutWave(whole);
        CHECK(about["channels"] == 2);
        CHECK(about["bits"] == 16);
        CHECK(about["rate"] == 44100);
        CHECK(about["frames"] == 3);
        CHECK(about["chunks"].size() == 3);
        CHECK(about["chunks"][2] == Json{{"id", "data"}, {"offset", isPadded ? 56 : 55}, {"bytes", 12}});
        for (size_t size = 12; size < whole.size(); ++size) {
            try {
                const Json cut = AboutWave({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
                CHECK(cut["frames"].get<size_t>() == (size < 56 ? 0 : (size - (isPadded ? 56 : 55)) / 4));
            } catch (const InputError& error) {
                CHECK(size < 36); // before the end of the format
                CHECK(error.message.find("no format chunk") != std::string::npos);
            }
        }
    }
}

TEST_CASE("info: how long waves of every kind are") {
    const FileBytes data(1000, 'x');
    const FileBytes second = WaveChunkOf("data", FileBytes(8, 'y'));
    // IMA ADPCM: blocks of 512 bytes; 8000 Hz of 16-bit frames would be 16000 bytes a second.
    const FileBytes adpcm = FormatChunk(0x11, 1, 16, 8000);
    FileBytes extensible = FormatChunk(0xFFFE, 2, 32, 8000);
    extensible[4] = 40;
    Append(extensible, Little(22, 2) + Little(32, 2) + Little(3, 4) + Little(3, 2) + FileBytes(14, 0));
    const struct {
        FileBytes wave;
        const char* encoding;
        double seconds;
        size_t missing;
    } rows[] = {
        {RiffOf(FormatChunk(3, 1, 32, 1000) + WaveChunkOf("data", data) + second), "float", 0.25, 0},
        {RiffOf(FormatChunk(6, 1, 8, 8000) + FormatChunk(1, 1, 8, 1) + WaveChunkOf("data", data)), "A-law", 0.125, 0},
        {RiffOf(adpcm + WaveChunkOf("fact", Little(4000, 4)) + WaveChunkOf("data", data)), "IMA ADPCM", 0.5, 0},
        {RiffOf(adpcm + WaveChunkOf("data", data)), "IMA ADPCM", 0.0625, 0},
        {RiffOf(FormatChunk(0x1234, 1, 8, 1000) + WaveChunkOf("data", data)), "format 4660", 1.0, 0},
        {RiffOf(extensible + WaveChunkOf("data", data)), "float", 0.015625, 0}, // 125 frames
        {RiffOf(FormatChunk(1, 1, 8, 1000) + WaveChunkOf("data", data, 0xFFFFFFFF)), "PCM", 1.0, 0xFFFFFFFF - 1000},
        {RiffOf(FormatChunk(1, 1, 8, 1000) + WaveChunkOf("data", data, 0), 0), "PCM", 1.0, 0},
        {RiffOf(FormatChunk(1, 1, 8, 1000) + WaveChunkOf("data", {}) + second), "PCM", 0.0, 0}, // empty indeed
    };
    for (const auto& row : rows) {
        const Json about = AboutWave(row.wave);
        CAPTURE(about.dump());
        CHECK(about["encoding"] == row.encoding);
        CHECK(about["seconds"] == row.seconds);
        size_t missing = 0;
        for (const Json& chunk : about["chunks"])
            missing += chunk.value("missing", size_t{0});
        CHECK(missing == row.missing);
    }
    CHECK_FALSE(AboutWave(RiffOf(FormatChunk(1, 1, 8, 0) + second)).contains("seconds"));
    CHECK(ClockText(59.96) == "1:00.0");
    CHECK(ClockText(3599.94) == "59:59.9");
}

TEST_CASE("info: a song's tracks, tempos and lyrics; an engine's stream by its blocks") {
    TrackBytes conductor, voice;
    conductor.Meta(0, 0x51, std::string("\x07\xA1\x20", 3)).Meta(960, 0x51, std::string("\x0F\x42\x40", 3));
    voice.Meta(0, 3, "Voice").Lyric(0, "Twin-").On(0, 60).Off(480, 60).Lyric(0, "kle").On(0, 67).Off(960, 67);
    FileBytes bytes = MidiFile(1, 480, {conductor, voice});
    Json about = DescribeMidi("m", bytes);
    CHECK(about["seconds"].get<double>() == doctest::Approx(1.0 + 1.0)); // two beats at 120, one at 60
    CHECK(about["beats"] == 3);
    CHECK(about["tempos"][1] == Json{{"beat", 3.0}, {"seconds", 1.0}, {"beatsPerMinute", 60.0}}); // beats count from 1
    CHECK(about["tracks"][1]["lyrics"] == "Twinkle");
    CHECK(about["tracks"][1]["lowestKey"] == 60);
    CHECK(about["tracks"][1]["highestKey"] == 67);

    bytes = MidiFile(1, 0xE350, {voice}); // 29.97 frames of 80 ticks
    about = DescribeMidi("m", bytes);
    CHECK(about["division"] == Json{{"framesPerSecond", 29.97}, {"ticksPerFrame", 80}});
    CHECK(about["tempos"].empty());
    CHECK_FALSE(about.contains("beats"));

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
    const std::string zeros = folder.File("zeros.wav", {});
    const std::string large = folder.File("large.mid", MidiFile(1, 480, {}));
    for (const char* const name : {"zeros.wav", "large.mid"})
        fs::resize_file(folder.path / name, 1 << 28); // which must not be read
    for (const std::string& arguments : {"info " + text, "info " + zeros, "info " + large, "sing " + large + " --list",
                                         std::string("info nowhere.wav"), std::string("info .")}) {
        const Run run = folder.Torv(arguments);
        CHECK(run.status == 1);
        CHECK(std::count(run.said.begin(), run.said.end(), '\n') == 1);
    }
    CHECK(folder.Torv("info").status == 2);
    const std::string wave = folder.File("odd.wav", WaveWithOddChunk(true));
    CHECK(folder.Torv("info " + wave).said.find("rate: 44100\nbits: 16\nframes: 3\nseconds: 0\n") != std::string::npos);
    TrackBytes conductor; // 130 beats a minute are 461538.46 microseconds
    conductor.Meta(0, 0x51, "\x07\x0A\xE2");
    const std::string song = folder.File("song.mid", MidiFile(1, 480, {conductor}));
    CHECK(folder.Torv("info " + song).said.find("beat 1, seconds 0, beatsPerMinute 130\n") != std::string::npos);
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
    CHECK(Values{run.status, run.said.find("5 notes")} == "0 0");
    run = folder.Torv("info command_test_files/engine.mid --json");
    REQUIRE(run.status == 0);
    const Json about = Json::parse(run.said);
    REQUIRE(about["tracks"].size() == 2);
    CHECK(about["tracks"][0]["name"] == "Master Track");
    CHECK(about["tracks"][1]["name"] == "Voice");
    CHECK(about["tracks"][1]["engineBlocks"]["note"] == 5);
    CHECK(about["tempos"].back()["beatsPerMinute"] == 100);

    // The note block's parameter 7 is the attack's index with its depth: the index that the icon has in the databases.
    const auto attackIndex = [&](const char* name) {
        folder.Torv("encode " + song + " -o command_test_files/engine.mid --attack " + name);
        const std::string content = folder.Content("engine.mid");
        const std::string parameter("\xB0\x63\x50\0\xB0\x62\x07\0\xB0\x06", 10);
        return static_cast<int>(content.at(content.find(parameter) + parameter.size()));
    };
    CHECK(attackIndex("normal") == 1);
    CHECK(attackIndex("sharp") == 5);

    const std::string old = folder.File("old.mid", {'o', 'l', 'd'});
    run = folder.Torv("encode nowhere.mid -o " + old);
    CHECK(Values{run.status, fs::file_size(folder.path / "old.mid")} == "1 3");
    run = folder.Torv("encode " + song + " -o command_test_files/nowhere/engine.mid");
    CHECK(Values{run.status, run.said.find("cannot be written") != std::string::npos} == "1 1");
    CHECK(!fs::exists(folder.path / "nowhere"));
}

TEST_CASE("info: songs of other formats, as they are sung") {
    torv::songs::Song song;
    song.source = "s.mxl";
    song.format = "MusicXML";
    song.title = "Song";
    song.end = 960;
    song.measures = {{0, 960, 1}};
    song.remarks = {"something is left out"};
    song.parts.resize(1);
    song.parts[0].name = "Alto";
    song.parts[0].notes.resize(2);
    song.parts[0].notes[0].key = 65;
    song.parts[0].notes[0].words.resize(2);
    song.parts[0].notes[0].words[1].verse = 2;
    CHECK(DescribeSong(song) ==
          Json{{"file", "s.mxl"},
               {"kind", "MusicXML"},
               {"title", "Song"},
               {"seconds", 1.0},
               {"measures", 1},
               {"verses", 2},
               {"parts", {{{"name", "Alto"}, {"notes", 2}, {"lowest", 60}, {"highest", 65}, {"syllables", 1}}}},
               {"remarks", {"something is left out"}}});
}
