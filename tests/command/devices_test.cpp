// The outputs as a user names them.
#include "run_command.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

TEST_CASE("devices: every output by its name, one of them the default, and nothing else is said") {
    const Folder folder;
    const Run run = folder.Torv("devices --json"); // what it says in both ways
    REQUIRE(run.status == 0);
    const auto list = nlohmann::json::parse(run.said);
    const Run text = folder.Torv("devices");
    CHECK(text.status == 0);
    const auto& waves = list["waveOutputs"];
    const auto& midis = list["midiOutputs"];
    std::string expected = "Wave outputs\n";
    for (size_t i = 0; i < waves.size(); ++i) {
        CHECK(waves[i]["default"] == (i == 0));
        expected += "  " + waves[i]["name"].get<std::string>() + (i == 0 ? " (default)\n" : "\n");
    }
    expected += waves.empty() ? "  none\nMIDI outputs\n" : "MIDI outputs\n";
    for (const auto& midi : midis)
        expected += "  " + midi.get<std::string>() + "\n";
    CHECK(text.said == expected + (midis.empty() ? "  none\n" : ""));
#ifndef _WIN32
    CHECK(waves.back()["name"] == "Null Output"); // the one that is always there
#endif
}
