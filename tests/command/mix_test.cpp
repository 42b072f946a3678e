// torv mix: what it makes of waves, and what it says.
#include "mix_input.h"
#include "run_command.h"
#include "wave_bytes.h"

#include <doctest/doctest.h>

#include <algorithm>

namespace {

std::vector<int> SamplesOf(const Folder& folder, const char* name) {
    std::vector<int> values;
    for (const double value : Wave(folder.path / name))
        values.push_back(static_cast<int>(value * 32768));
    return values;
}

const std::string kOut = " -o command_test_files/mix.wav";

} // namespace

TEST_CASE("mix: levels and pans, and names with colons") {
    const Folder folder;
    const std::string wave = folder.File("a.wav", {1});
    struct Row {
        std::string argument;
        std::string path;
        double level;
        double pan;
    };
    std::vector<Row> rows{{wave, wave, 0, 0},
                          {wave + ":-6", wave, -6, 0},
                          {wave + ":+1.5:-0.5", wave, 1.5, -0.5},
                          {wave + "::1", wave, 0, 1},
                          {"C:\\no.wav", "C:\\no.wav", 0, 0}, // the error names what the user wrote
                          {"C:\\no.wav:-3:0.5", "C:\\no.wav", -3, 0.5},
                          {"no.wav:loud", "no.wav:loud", 0, 0}};
#ifndef _WIN32
    const std::string part = folder.File("a:1", {1});
    folder.File("a", {1});
    const std::string take = folder.File("take:2:-1", {1});
    rows.insert(rows.end(), {{part, part, 0, 0}, {part + ":0.5", part, 0.5, 0}, {take, take, 0, 0}});
#endif
    for (const Row& row : rows) {
        CAPTURE(row.argument);
        const MixInput input = ParseMixInput(row.argument);
        CHECK(input.path == row.path);
        CHECK(input.level == row.level);
        CHECK(input.pan == row.pan);
    }
}

TEST_CASE("mix: waves of every kind, as long as the longest, beside nothing else") {
    const Folder folder;
    const std::string mono = folder.File("mono.wav", PcmWave(1, 16, 48000, {1000, -2000, 3000}));
    const std::string stereo = folder.File("stereo.wav", PcmWave(2, 16, 48000, {100, 7, -32768, 32767}));
    Run run = folder.Torv("mix " + mono + ":0:-1 " + stereo + kOut);
    CAPTURE(run.said);
    REQUIRE(run.status == 0);
    CHECK(run.said.find("2 files, 0:00.0") != std::string::npos);
    // The mono file twice on the left; the stereo file as it is.
    CHECK(SamplesOf(folder, "mix.wav") == std::vector<int>{2100, 7, -32768, 32767, 6000, 0});
    CHECK(run.said.find("1 frame passed full scale and is cut: lower every level by 1.1 dB") != std::string::npos);
    CHECK(folder.Count() == 3);

    const std::string deep =
        folder.File("deep.wav", RiffOf(FormatChunk(1, 1, 24, 48000) + WaveChunkOf("note", {'a', 'b', 'c', 0}, 3) +
                                       WaveChunkOf("data", Samples(24, {0x400000, -0x200000}))));
    const std::string old = folder.File("old.wav", PcmWave(1, 8, 48000, {192, 64}));
    run = folder.Torv("mix " + deep + ":-6.0206 " + old + ":-12.0412 --quiet" + kOut);
    CHECK((run.status == 0 && run.said.empty()));
    CHECK(SamplesOf(folder, "mix.wav") == std::vector<int>{12288, 12288, -8192, -8192}); // 8192 + 4096; -4096 - 4096

    run = folder.Torv("mix " + stereo + ":0:0.5" + kOut);
    CHECK(SamplesOf(folder, "mix.wav") == std::vector<int>{50, 11, -16384, 32767});
    CHECK(folder.Count() == 5);
    run = folder.Torv("info command_test_files/mix.wav");
    CHECK(run.said.find("rate: 48000") != std::string::npos);
}

TEST_CASE("mix: a wave streamed into a pipe is read to its end; of many chunks the first ones count") {
    const Folder folder;
    const FileBytes samples = Samples(16, {1000, -2000, 3000});
    const std::vector<int> mixed{1000, 1000, -2000, -2000, 3000, 3000};
    const auto mix = [&](const FileBytes& wave) {
        const Run run = folder.Torv("mix " + folder.File("in.wav", wave) + kOut);
        CHECK_MESSAGE(run.status == 0, run.said);
        CHECK(SamplesOf(folder, "mix.wav") == mixed);
        return run.said.find("read to the file's end") != std::string::npos;
    };
    const FileBytes format = FormatChunk(1, 1, 16, 44100);
    for (const uint32_t size : {0U, 0xFFFFFFFFU, 7U, 0x7FFFF000U})
        CHECK(mix(RiffOf(format + WaveChunkOf("data", samples, size), size)));
    for (const uint32_t size : {36U, 0xFFFFFFFFU}) // the header was never completed
        CHECK(mix(RiffOf(format + WaveChunkOf("data", samples, 0), size)));

    FileBytes chunks;
    for (int i = 0; i < 5000; ++i)
        Append(chunks, WaveChunkOf("note", {}));
    CHECK_FALSE(mix(RiffOf(chunks + format + FormatChunk(1, 2, 8, 8000) + WaveChunkOf("data", samples) +
                           WaveChunkOf("data", Samples(16, {7})))));
}

TEST_CASE("mix: what cannot be mixed is told in one line, and nothing is changed") {
    const Folder folder;
    const std::string wave = folder.File("a.wav", PcmWave(1, 16, 44100, {1}));
    const std::string fast = folder.File("fast.wav", PcmWave(1, 16, 48000, {1}));
    const std::string wide = folder.File("wide.wav", PcmWave(6, 16, 44100, {1, 2, 3, 4, 5, 6}));
    const std::string still = folder.File("still.wav", PcmWave(1, 16, 0, {1}));
    const std::string bare =
        folder.File("bare.wav", RiffOf(WaveChunkOf("fmt ", {1, 0, 1, 0}) + WaveChunkOf("data", {1})));
    const std::string law = folder.File("law.wav", RiffOf(FormatChunk(0x161, 1, 8, 44100) + WaveChunkOf("data", {1})));
    const std::string tiny = folder.File("tiny.wav", {'n', 'o'});
    folder.File("mix.wav", {'o', 'l', 'd'});
    const std::pair<std::string, const char*> rows[] = {
        {wave + " " + fast, "fast.wav: has 48000 samples a second, but command_test_files/a.wav has 44100; convert it"},
        {wide, "has 6 channels"},
        {still, "its format makes no sense (1 channel of 16 bits, 0 samples a second)"},
        {bare, "has no whole format chunk"},
        {law, "is WMA, which cannot be read here; convert it with: sox"},
        {tiny, "is no sound file"},
        {"command_test_files/none.wav", "cannot be opened"},
        {"command_test_files", "is a folder"},
        {wave + ":loud", "no level and pan"},
        {wave + ":61", "from -200 to 60 dB"},
        {wave + ":0:1.5", "from -1 (left) to 1 (right)"}};
    for (const auto& [inputs, said] : rows) {
        const Run run = folder.Torv(std::string("mix ").append(inputs).append(kOut));
        CAPTURE(run.said);
        CHECK(run.status == 1);
        CHECK(run.said.find(said) != std::string::npos);
        CHECK(std::count(run.said.begin(), run.said.end(), '\n') == 1);
    }
    CHECK(folder.Torv("mix " + wave + " -o command_test_files/none/mix.wav").status == 1);
    CHECK(folder.Torv("mix " + wave).status == 2);
    CHECK(fs::file_size(folder.path / "mix.wav") == 3);
    CHECK(fs::file_size(folder.path / "tiny.wav") == 2);
    CHECK(folder.Count() == 8);
}
