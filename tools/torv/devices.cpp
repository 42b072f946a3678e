#include "devices.h"

#include <torv/platform/platform.h>
#include <torv/songs/wave_outputs.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

Names MidiOutputs() {
    Names names;
    const UINT count = midiOutGetNumDevs();
    for (UINT number = 0; number < count; ++number) {
        MIDIOUTCAPSA capabilities{};
        if (midiOutGetDevCapsA(number, &capabilities, sizeof capabilities) == MMSYSERR_NOERROR)
            names.emplace_back(capabilities.szPname);
    }
    return names;
}

void PrintNames(const char* title, const Names& names, const char* afterFirst) {
    std::printf("%s\n", title);
    for (const std::string& name : names)
        std::printf("  %s%s\n", name.c_str(), &name == &names.front() ? afterFirst : "");
    if (names.empty())
        std::printf("  none\n");
}

} // namespace

void ListDevices(bool json) {
    const Names waves = torv::songs::WaveOutputNames(), midis = MidiOutputs();
    if (!json) {
        PrintNames("Wave outputs", waves, " (default)");
        PrintNames("MIDI outputs", midis, "");
        return;
    }
    nlohmann::ordered_json list{{"waveOutputs", nlohmann::ordered_json::array()}, {"midiOutputs", midis}};
    for (const std::string& name : waves)
        list["waveOutputs"].push_back({{"name", name}, {"default", &name == &waves.front()}});
    // The system may cut a name in the middle of a character.
    std::printf("%s\n", list.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
}
