#include "view/transport.h"

#include <algorithm>
#include <cmath>
#include <imgui.h>
#include <torv/songs/wave_outputs.h>

namespace editor {

namespace {

constexpr uint32_t kSteps[] = {1920, 960, 480, 240, 160, 120, 80, 60, 30};
constexpr const char* kStepNames[] = {"1/1",  "1/2",          "1/4",  "1/8", "1/8 triplet",
                                      "1/16", "1/16 triplet", "1/32", "1/64"};
constexpr double kMinute = 60e6; // microseconds

/// The one in force at the cursor.
template <class Change>
Change& InForce(std::vector<Change>& changes, uint32_t tick) {
    return *std::prev(std::upper_bound(changes.begin(), changes.end(), tick,
                                       [](uint32_t at, const Change& change) { return at < change.tick; }));
}

void DrawTempo(Editor& editor) {
    std::vector<TempoChange> tempos = editor.Song().tempos;
    auto bpm = static_cast<float>(kMinute / InForce(tempos, editor.cursor).microseconds);
    ImGui::SetNextItemWidth(80);
    if (ImGui::DragFloat("##tempo", &bpm, 0.5F, 20, 400, "%.1f bpm", ImGuiSliderFlags_NoInput)) {
        const bool goesOn = editor.history.UndoName() == "Tempo" && !ImGui::IsItemActivated();
        Document& song = goesOn ? editor.history.Further() : editor.history.Step("Tempo");
        InForce(song.tempos, editor.cursor).microseconds =
            static_cast<uint32_t>(std::lround(kMinute / std::clamp(bpm, 20.0F, 400.0F)));
    }
}

void DrawMeter(Editor& editor) {
    std::vector<MeterChange> meters = editor.Song().meters;
    const MeterChange& meter = InForce(meters, editor.cursor);
    const auto text = [](int numerator, int exponent) {
        return std::to_string(numerator) + "/" + std::to_string(1 << exponent);
    };
    ImGui::SetNextItemWidth(70);
    if (!ImGui::BeginCombo("##meter", text(meter.numerator, meter.denominatorExponent).c_str()))
        return;
    for (const auto& [numerator, exponent] :
         {std::pair{2, 2}, {3, 2}, {4, 2}, {5, 2}, {2, 1}, {3, 3}, {6, 3}, {9, 3}, {12, 3}})
        if (ImGui::Selectable(text(numerator, exponent).c_str())) {
            MeterChange& changed = InForce(editor.history.Step("Meter").meters, editor.cursor);
            changed.numerator = numerator;
            changed.denominatorExponent = exponent;
        }
    ImGui::EndCombo();
}

} // namespace

void DrawTransport(Editor& editor) {
    const bool isPlaying = editor.player.IsPlaying();
    if (ImGui::Button(isPlaying ? "Stop" : "Play", {60, 0}))
        editor.TogglePlay();
    ImGui::SameLine();
    bool isLooped = editor.loop.has_value();
    if (ImGui::Checkbox("Loop", &isLooped))
        editor.SetLoop(isLooped ? std::optional(Loop{0, std::max(EndOf(editor.Song()), kQuarter)}) : std::nullopt);
    ImGui::SameLine(170);
    ImGui::TextUnformatted(editor.grid.PositionText(isPlaying ? editor.player.Tick() : editor.cursor).c_str());
    ImGui::SameLine(250);
    DrawTempo(editor);
    ImGui::SameLine();
    DrawMeter(editor);
    ImGui::SameLine();
    const auto step = std::find(std::begin(kSteps), std::end(kSteps), editor.grid.Step());
    ImGui::SetNextItemWidth(120);
    const char* const shown = step == std::end(kSteps) ? "another" : kStepNames[step - std::begin(kSteps)];
    if (ImGui::BeginCombo("Grid", shown)) {
        for (size_t i = 0; i < std::size(kSteps); ++i)
            if (ImGui::Selectable(kStepNames[i]))
                editor.grid.SetStep(kSteps[i]);
        ImGui::EndCombo();
    }
    ImGui::SameLine();
    ImGui::SetNextItemWidth(220);
    if (ImGui::BeginCombo("Output", editor.player.device.c_str())) {
        for (const std::string& device : torv::songs::WaveOutputNames())
            if (ImGui::Selectable(device.c_str()))
                editor.player.device = device;
        ImGui::EndCombo();
    }
}

} // namespace editor
