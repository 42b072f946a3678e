// Kinds of sound files, their bits, their loudest sample, and what goes through pipes.
#include "coded_sound.h"
#include "run_command.h"
#include "sound_reader.h"
#include "wave_bytes.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>

namespace {

std::vector<double> SamplesOf(const std::string& path) {
    const auto sound = OpenSound(path);
    std::vector<double> samples(sound->Frames() * sound->Channels());
    CHECK(sound->Read(samples.data(), sound->Frames()) == sound->Frames());
    return samples;
}

} // namespace

TEST_CASE("sound: every kind that keeps its samples has the same, as fine as its bits") {
    const Folder folder;
    const std::string wave = folder.File("in.wav", PcmWave(2, 16, 48000, {1000, -1001, 32767, -32768, 3, 0}));
    const std::vector<double> third{1000 / 3.0, -1001 / 3.0, 32767 / 3.0, -32768 / 3.0, 1, 0}; // -9.5424 dB
    const auto mix = [&](const std::string& name, const std::string& options) {
        const Run run = folder.Torv("mix " + wave + ":-9.54242509439325 -o " + kIn + name + " --quiet " + options);
        CHECK_MESSAGE(run.status == 0, run.said);
        return SamplesOf(kIn + name);
    };
    struct Row {
        std::string ending, bits;
        double step; // of 1 / 32768
    };
    std::vector<Row> rows{{"wav", "16", 1}, {"wav", "24", 1 / 256.0}, {"wav", "32", 1 / 1000.0}};
    if (!CodedEndings().empty())
        rows.insert(rows.end(), {{"flac", "16", 1}, {"flac", "24", 1 / 256.0}, {"aif", "24", 1 / 256.0}});
    for (const auto& [ending, bits, step] : rows) {
        const std::vector<double> samples = mix("out." + ending, "--bits " + bits);
        REQUIRE(samples.size() == third.size());
        for (size_t i = 0; i < third.size(); ++i) {
            CAPTURE(ending + bits);
            CHECK(std::abs(samples[i] * 32768 - third[i]) <= step / 2 + 1e-9);
        }
    }
    const std::vector<double> loud = mix("loud.wav", "--normalize -6.0206 --format wav");
    CHECK(loud[3] == -0.5);
    CHECK(loud[0] * 32768 == 500);
    const Run run = folder.Torv("mix " + wave + " -o " + kIn + "out.xyz");
    CHECK(run.status == 2);
    CHECK(run.said.find(CodedEndings().empty() ? ".wav can" : "there are wav, ogg") != std::string::npos);
}

TEST_CASE("sound: standard input and output carry songs and sounds, and nothing else") {
    const Folder folder;
    TrackBytes voice;
    voice.On(0, 60).Off(480, 60);
    const std::string song = folder.File("song.mid", MidiFile(0, 480, {voice}));
#ifdef _WIN32
    const std::string program = "torv.exe ";
#else
    const std::string program = "./torv ";
#endif
    for (const std::string verb : {"sing ", "encode "}) {
        REQUIRE(folder.Torv(verb + song + " -o " + kIn + "file").status == 0);
        const Run run = folder.Shell(program + verb + "- -o - < " + song + " 2> " + kIn + "told | " + program +
                                     "info - --json > " + kIn + "about");
        CHECK(run.status == 0);
        CHECK(folder.Content("told").find("1 note,") != std::string::npos);
        CHECK(folder.Content("about").find("\"file\": \"standard input\"") != std::string::npos);
        REQUIRE(folder.Shell(program + verb + "- -o - --quiet < " + song + " > " + kIn + "piped 2> " + kIn + "none")
                    .status == 0);
        CHECK(folder.Content("piped") == folder.Content("file"));
    }
    CHECK(folder.Torv("mix - -o " + kIn + "mix.wav < " + song).status == 1); // a song is no sound
}
